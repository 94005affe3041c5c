#include "base/labeltext.h"

#include "base/simplemarkup.h"

#include <QLabel>
#include <QTextDocument>

void showDocumentText(QLabel &label, const QString &text)
{
    const Qt::TextFormat format = isSimpleMarkup(text) ? Qt::AutoText : Qt::PlainText;
    if (label.textFormat() != format) {
        // The text of now must not be read by the rule of the next.
        label.clear();
        label.setTextFormat(format);
    }
    label.setText(shownPartOf(text));
}

QString spokenText(const QString &text)
{
    QString shown = shownPartOf(text);
    if (!isSimpleMarkup(text) || !Qt::mightBeRichText(shown)) {
        return shown;
    }
    QTextDocument document;
    document.setHtml(shown);
    return document.toPlainText();
}
