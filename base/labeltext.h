#pragma once

class QLabel;
class QString;

// Shows a text that comes from the document, or holds a part of it, on a label: as rich text when
// its markup is simple (base/simplemarkup), else letter by letter. No text loads anything, and of
// an endless one the beginning is shown.
void showDocumentText(QLabel &label, const QString &text);

// What a reader says of such a text: the letters that the label shows, without their markup.
QString spokenText(const QString &text);
