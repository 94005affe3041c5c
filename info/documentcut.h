#pragma once

#include <QString>

// Where a document's text must end before the toolkit may read it: what stands there would cost it
// seconds or all memory.
struct DocumentCut {
    int place = -1;      // of a "<", or -1 when the toolkit may read everything
    bool isType = false; // a document type that declares anything; else an element's attributes
};

// Finds the first document type with declarations (entities multiply what follows without end, and
// attributes are declared as slowly as they are compared), or element with more attributes than
// DocumentLimits allows. Where it is not sure, the text is no XML, and the toolkit ends there by
// itself.
DocumentCut findDocumentCut(const QString &text);
