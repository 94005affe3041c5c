#include "check/shownmarkup.h"

#include "base/simplemarkup.h"

#include <QRegularExpression>

namespace
{
const QRegularExpression &anyTag()
{
    static const QRegularExpression tag(QStringLiteral("<(/?)([A-Za-z]+)[^<>]*?(/?)>"));
    return tag;
}

bool isBreak(const QString &element)
{
    return element == QLatin1String("br") || element == QLatin1String("p") ||
           element == QLatin1String("li") || element == QLatin1String("ul") ||
           element == QLatin1String("ol");
}

QString withSingleBlanks(QString text)
{
    static const QRegularExpression blanks(QStringLiteral("[ \\t\\r\\n]+"));
    return text.replace(blanks, QStringLiteral(" "));
}

bool needsEnd(const QString &element)
{
    return element != QLatin1String("br") && element != QLatin1String("p") &&
           element != QLatin1String("li");
}
} // namespace

bool isShownAsMarkup(const QString &text)
{
    if (!isSimpleMarkup(text)) {
        return false;
    }
    // The toolkit looks no further than the end of the first line.
    static const QRegularExpression sign(QStringLiteral("\\A\\s*[^<\\n]*?(&lt;|<[A-Za-z])"));
    return sign.match(text).hasMatch();
}

QString readFromMarkup(const QString &text)
{
    QString read;
    int behind = 0;
    auto tags = anyTag().globalMatch(text);
    while (tags.hasNext()) {
        const QRegularExpressionMatch tag = tags.next();
        read += withSingleBlanks(text.mid(behind, tag.capturedStart() - behind));
        if (isBreak(tag.captured(2).toLower()) && !read.isEmpty() &&
            !read.endsWith(QLatin1Char('\n'))) {
            read += QLatin1Char('\n');
        }
        behind = tag.capturedEnd();
    }
    read += withSingleBlanks(text.mid(behind));
    return read.replace(QStringLiteral("&lt;"), QStringLiteral("<"))
        .replace(QStringLiteral("&gt;"), QStringLiteral(">"))
        .replace(QStringLiteral("&quot;"), QStringLiteral("\""))
        .replace(QStringLiteral("&nbsp;"), QStringLiteral(" "))
        .replace(QStringLiteral("&amp;"), QStringLiteral("&"));
}

QStringList unclosedElements(const QString &text)
{
    QStringList open;
    auto tags = anyTag().globalMatch(text);
    while (tags.hasNext()) {
        const QRegularExpressionMatch tag = tags.next();
        const QString element = tag.captured(2).toLower();
        if (!needsEnd(element) || !tag.captured(3).isEmpty()) {
            continue;
        }
        if (tag.captured(1).isEmpty()) {
            open << element;
        } else {
            open.removeOne(element);
        }
    }
    return open;
}
