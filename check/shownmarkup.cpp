#include "check/shownmarkup.h"

#include "base/luminance.h"
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

// Of a name or number of a colour.
bool isDark(const QString &colour)
{
    static const QStringList dark{QStringLiteral("black"), QStringLiteral("navy"),
                                  QStringLiteral("darkblue"), QStringLiteral("midnightblue"),
                                  QStringLiteral("transparent")};
    if (!colour.startsWith(QLatin1Char('#'))) {
        return dark.contains(colour, Qt::CaseInsensitive);
    }
    const int digits = colour.size() / 3; // of each part
    const auto part = [&colour, digits](int index) {
        const QString number = colour.mid(1 + index * digits, digits);
        return (digits == 1 ? number + number : number).toInt(nullptr, 16);
    };
    // Below that the contrast to black is less than 1.7 to 1, where readers need 3 or more.
    constexpr double darkest = 0.035;
    return luminance(part(0), part(1), part(2)) < darkest;
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

QString darkColour(const QString &text)
{
    static const QRegularExpression colours(
        QStringLiteral("(?<![-A-Za-z])color\\s*[=:]\\s*[\"']?\\s*"
                       "(#[0-9a-f]{6}|#[0-9a-f]{3}|[a-z]+)(?![0-9a-z])"),
        QRegularExpression::CaseInsensitiveOption);
    if (text.contains(QLatin1String("background"), Qt::CaseInsensitive)) {
        return {};
    }
    for (auto tag = anyTag().globalMatch(text); tag.hasNext();) {
        for (auto found = colours.globalMatch(tag.next().captured()); found.hasNext();) {
            QString colour = found.next().captured(1);
            if (isDark(colour)) {
                return colour;
            }
        }
    }
    return {};
}
