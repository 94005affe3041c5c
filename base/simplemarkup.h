#pragma once

#include <QString>

// What a label may do with a text of the document. The toolkit's rich text loads whatever a tag
// names, from the disk as well, and some of it takes for ever to lay out.

// The longest text that is shown, in characters: far more than the largest label has room for.
constexpr int longestShownText = 10000;

// How deep simple markup may be nested.
constexpr int deepestMarkup = 32;

// Whether all markup in the text is simple: b, i, u, s, em, strong, br, p, span, font, ul, ol and
// li, well formed, with attributes that say how letters look and load nothing; not nested deeper
// and no longer than above. Ends of p and li may be missing, and of whatever is still open at the
// end. A text without markup is simple.
bool isSimpleMarkup(const QString &text);

// The text's beginning that is shown, whole characters only.
QString shownPartOf(const QString &text);
