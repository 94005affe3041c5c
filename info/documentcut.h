#pragma once

#include <QString>

// Where a document's text must end before the toolkit may read it: what stands there would cost it
// seconds or all memory.
struct DocumentCut {
    enum Reason {
        Nothing,
        DeclaringType, // a document type that declares anything: entities multiply what follows
                       // without end, and attributes are declared as slowly as they are compared
        Attributes,    // an element with more than DocumentLimits allows
        Markup,        // more than DocumentLimits allows up to here
    };
    Reason reason = Nothing;
    int place = -1; // of a "<"
};

// Finds the first of these. Where it is not sure, the text is no XML, and the toolkit ends there by
// itself.
DocumentCut findDocumentCut(const QString &text);
