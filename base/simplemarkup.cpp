#include "base/simplemarkup.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace
{
// No "&" and no "\", which can spell other letters, no "/" and no ":", which every address needs,
// and no brackets.
bool isHarmlessValue(const QString &value)
{
    static const QRegularExpression harmless(QStringLiteral("\\A[^&\\\\/:()<>]{0,100}\\z"),
                                             QRegularExpression::DotMatchesEverythingOption);
    return harmless.match(value).hasMatch();
}

// Signed or not, below 100: the longest text of such letters, each on a line of its own, still fits
// into the toolkit's greatest height. Beyond that, which 7,500 letters of 999 pixels are, it lays
// out for ever.
bool isHarmlessSize(const QString &value)
{
    static const QRegularExpression size(
        QStringLiteral("\\A[+-]?[0-9]{1,2}(\\.[0-9]{1,3})?(px|pt|em|%)?\\z"));
    return size.match(value).hasMatch();
}

bool isHarmlessColour(const QString &value)
{
    static const QRegularExpression colour(
        QStringLiteral("\\A(#[0-9a-f]{3,9}|[a-z]{1,30}|rgba?\\([0-9., %]{1,30}\\))\\z"));
    return colour.match(value).hasMatch();
}

bool isWordOf(const QString &value)
{
    static const QRegularExpression words(QStringLiteral("\\A[a-z0-9 -]{1,30}\\z"));
    return words.match(value).hasMatch();
}

bool isHarmlessProperty(const QString &name, const QString &value)
{
    if (name == QLatin1String("color") || name == QLatin1String("background-color")) {
        return isHarmlessColour(value);
    }
    if (name == QLatin1String("font-size")) {
        static const QRegularExpression word(QStringLiteral("\\A[a-z-]{1,30}\\z"));
        return isHarmlessSize(value) || word.match(value).hasMatch();
    }
    if (name == QLatin1String("font-family")) {
        return isHarmlessValue(value);
    }
    static const QStringList words{
        QStringLiteral("font-style"),     QStringLiteral("font-weight"),
        QStringLiteral("text-align"),     QStringLiteral("text-decoration"),
        QStringLiteral("text-transform"), QStringLiteral("vertical-align")};
    static const QStringList sizes{QStringLiteral("margin-bottom"), QStringLiteral("margin-left"),
                                   QStringLiteral("margin-right"), QStringLiteral("margin-top")};
    return (words.contains(name) && isWordOf(value)) ||
           (sizes.contains(name) && isHarmlessSize(value));
}

bool isHarmlessStyle(const QString &style)
{
    const QStringList properties = style.split(QLatin1Char(';'));
    return std::all_of(properties.begin(), properties.end(), [](const QString &property) {
        if (property.trimmed().isEmpty()) {
            return true;
        }
        const int colon = property.indexOf(QLatin1Char(':'));
        return colon > 0 && isHarmlessProperty(property.left(colon).trimmed(),
                                               property.mid(colon + 1).trimmed());
    });
}

// Name and value in lower case.
bool isHarmlessAttribute(const QString &name, const QString &value)
{
    if (name == QLatin1String("style")) {
        return isHarmlessStyle(value);
    }
    if (name == QLatin1String("color")) {
        return isHarmlessColour(value);
    }
    if (name == QLatin1String("size")) {
        static const QRegularExpression step(QStringLiteral("\\A[+-]?[0-9]\\z"));
        return step.match(value).hasMatch();
    }
    if (name == QLatin1String("face")) {
        return isHarmlessValue(value);
    }
    return (name == QLatin1String("align") || name == QLatin1String("dir") ||
            name == QLatin1String("type")) &&
           isWordOf(value);
}

bool hasImpliedEnd(const QString &element)
{
    return element == QLatin1String("p") || element == QLatin1String("li");
}

class MarkupReader
{
public:
    explicit MarkupReader(QString text)
        : m_text(std::move(text))
    {
    }

    bool isSimple()
    {
        // Reads no further than the tag that it stands on.
        static const QRegularExpression tag(
            QStringLiteral("\\G<(/?)(b|i|u|s|em|strong|br|p|span|font|ul|ol|li)"
                           "((?:[ \\t\\r\\n]+[a-z]{1,10}[ \\t\\r\\n]*=[ \\t\\r\\n]*"
                           "(?:\"[^\"<>]*\"|'[^'<>]*'|[a-z0-9#+-]+))*)[ \\t\\r\\n]*(/?)>"));
        for (int at = m_text.indexOf(QLatin1Char('<')); at >= 0;
             at = m_text.indexOf(QLatin1Char('<'), at + 1)) {
            const QRegularExpressionMatch found = tag.match(m_text, at);
            if (!found.hasMatch()) {
                return false;
            }
            const bool closes = !found.captured(1).isEmpty();
            const bool isEmpty = !found.captured(4).isEmpty();
            if (closes ? !found.captured(3).isEmpty() || isEmpty || !close(found.captured(2))
                       : !areHarmless(found.captured(3)) || !open(found.captured(2), isEmpty)) {
                return false;
            }
        }
        return true;
    }

private:
    static bool areHarmless(const QString &attributes)
    {
        static const QRegularExpression attribute(
            QStringLiteral("([a-z]+)[ \\t\\r\\n]*=[ \\t\\r\\n]*(?:\"([^\"]*)\"|'([^']*)'|([^ "
                           "\\t\\r\\n\"']+))"));
        auto found = attribute.globalMatch(attributes);
        while (found.hasNext()) {
            const QRegularExpressionMatch one = found.next();
            if (!isHarmlessAttribute(one.captured(1),
                                     one.captured(2) + one.captured(3) + one.captured(4))) {
                return false;
            }
        }
        return true;
    }

    bool open(const QString &element, bool isEmpty)
    {
        if (element == QLatin1String("br")) {
            return true;
        }
        if (hasImpliedEnd(element) && !m_open.isEmpty() && m_open.constLast() == element) {
            m_open.removeLast();
        }
        m_open << element;
        const bool deep = m_open.size() > deepestMarkup;
        if (isEmpty) {
            m_open.removeLast();
        }
        return !deep;
    }

    bool close(const QString &element)
    {
        while (!m_open.isEmpty() && m_open.constLast() != element &&
               hasImpliedEnd(m_open.constLast())) {
            m_open.removeLast();
        }
        if (m_open.isEmpty() || m_open.constLast() != element) {
            return false;
        }
        m_open.removeLast();
        return true;
    }

    const QString m_text; // in lower case
    QStringList m_open;
};
} // namespace

bool isSimpleMarkup(const QString &text)
{
    return text.size() <= longestShownText && MarkupReader(text.toLower()).isSimple();
}

QString shownPartOf(const QString &text)
{
    if (text.size() <= longestShownText) {
        return text;
    }
    const bool cutsThrough = text.at(longestShownText - 1).isHighSurrogate();
    return text.left(cutsThrough ? longestShownText - 1 : longestShownText);
}
