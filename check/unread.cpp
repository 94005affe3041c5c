#include "check/unread.h"

#include "info/documentcut.h"

#include <QRegularExpression>
#include <QXmlStreamReader>

#include <algorithm>

namespace
{
bool isOurs(const QString &element)
{
    return element == QLatin1String("client") || element == QLatin1String("homenews") ||
           element == QLatin1String("news");
}

// A word by which other programs switch something off.
bool soundsSwitchedOff(const QString &word)
{
    static const QRegularExpression words(
        QStringLiteral("^(disabled?|hidden|hide|invisible|inactive|off|drafts?|unpublished|"
                       "archived?|old|ignored?|commented|template|example|deleted|removed)$"),
        QRegularExpression::CaseInsensitiveOption);
    return words.match(word).hasMatch();
}

bool isSwitch(const QString &attribute)
{
    static const QRegularExpression words(
        QStringLiteral("^(enabled?|active|visible|show|shown|published|publish|public|from|until|"
                       "start|end|begin|expires|valid-?(from|until|to)|(start|end)-?(date|time))$"),
        QRegularExpression::CaseInsensitiveOption);
    return words.match(attribute).hasMatch() || soundsSwitchedOff(attribute);
}

QRegularExpressionMatch leftByATemplate(const QString &value)
{
    static const QRegularExpression left(
        QStringLiteral("\\{\\{.*?\\}\\}|\\{%.*?%\\}|<%.*?%>|\\$\\{[A-Za-z_][\\w.:-]*\\}|"
                       "\\$\\([A-Za-z_][\\w.]*\\)|%[A-Z_]{3,}%|@[A-Z_]{3,}@|__[A-Z_]{3,}__"));
    return left.match(value);
}

class Unread
{
public:
    Unread(const DocumentContent &content, Findings &findings)
        : m_content(content)
        , m_findings(findings)
        , m_xml(beginningOf(content.text))
    {
    }

    void check()
    {
        while (!m_xml.atEnd()) {
            const QXmlStreamReader::TokenType token = m_xml.readNext();
            if (isBehindTheEnd()) {
                return;
            }
            if (token == QXmlStreamReader::StartElement) {
                m_open << m_xml.name().toString();
                checkElement();
            } else if (token == QXmlStreamReader::EndElement) {
                m_open.removeLast();
            } else if (token == QXmlStreamReader::Comment) {
                checkComment();
            } else if (token == QXmlStreamReader::Characters) {
                checkCharacters();
            }
        }
    }

private:
    // What the launcher does not let the toolkit see either.
    static QString beginningOf(const QString &text)
    {
        const DocumentCut cut = findDocumentCut(text);
        return cut.place < 0 ? text : text.left(cut.place);
    }

    // What is not read at all has a finding of its own.
    bool isBehindTheEnd() const
    {
        return m_content.end.reason != DocumentEnd::EndOfDocument &&
               here().line > m_content.end.line;
    }

    Place here() const
    {
        return {static_cast<int>(m_xml.lineNumber()),
                static_cast<int>(std::max<qint64>(m_xml.columnNumber(), 1))};
    }

    // Of the "<" of the element that was just read.
    Place elementHere() const
    {
        const QString &text = m_content.text;
        const int behind = static_cast<int>(m_xml.characterOffset());
        const int begin = text.lastIndexOf(QLatin1Char('<'), behind - 1);
        const int linesWithin = text.midRef(begin, behind - begin).count(QLatin1Char('\n'));
        return {here().line - linesWithin, begin - text.lastIndexOf(QLatin1Char('\n'), begin)};
    }

    void checkElement()
    {
        const QString name = m_xml.name().toString();
        if (!isOurs(name)) {
            return;
        }
        const auto around = std::find_if(m_open.begin(), m_open.end(), soundsSwitchedOff);
        if (around != m_open.end()) {
            m_findings << warningAt(elementHere(), "not-switched-off",
                                    QStringLiteral("the element %1 around this %2 switches nothing "
                                                   "off: players see it")
                                        .arg(quoted(*around), name),
                                    QStringLiteral("put it into a comment, or take it out"));
        }
        const QXmlStreamAttributes attributes = m_xml.attributes();
        for (const QXmlStreamAttribute &attribute : attributes) {
            checkAttribute(name, attribute.name().toString(), attribute.value().toString());
        }
    }

    void checkAttribute(const QString &element, const QString &attribute, const QString &value)
    {
        if (isSwitch(attribute)) {
            m_findings << warningAt(
                elementHere(), "not-switched-off",
                QStringLiteral("nobody reads the attribute %1: players see this %2, whatever it "
                               "says")
                    .arg(attribute + QLatin1Char('=') + quoted(value), element),
                QStringLiteral("put the element into a comment, or take it out"));
        }
        const QRegularExpressionMatch left = leftByATemplate(value);
        if (left.hasMatch()) {
            m_findings << errorAt(elementHere(), "placeholder",
                                  QStringLiteral("the %1 of this %2 holds %3, which a template "
                                                 "seems to have left")
                                      .arg(attribute, element, quoted(left.captured())),
                                  QStringLiteral("see why nothing was put in its place"));
        }
    }

    void checkComment()
    {
        static const QRegularExpression element(QStringLiteral("<(client|homenews|news)\\s"));
        int count = 0;
        auto found = element.globalMatch(m_xml.text().toString());
        for (; found.hasNext(); found.next()) {
            ++count;
        }
        if (count > 0) {
            m_findings << noteAt(here(), "in-comment",
                                 QStringLiteral("the comment that ends here holds %1 of our "
                                                "elements, which players do not see")
                                     .arg(count),
                                 QStringLiteral("leave it, if that is meant"));
        }
    }

    void checkCharacters()
    {
        static const QRegularExpression element(QStringLiteral("<(client|homenews|news)\\s"));
        const QString text = m_xml.text().toString().simplified();
        if (text.isEmpty()) {
            return;
        }
        if (element.match(text).hasMatch()) {
            m_findings << warningAt(here(), "text-between-elements",
                                    m_xml.isCDATA()
                                        ? QStringLiteral("the CDATA section that ends here holds "
                                                         "elements, which are no more than text "
                                                         "in it: players do not see them")
                                        : QStringLiteral("the elements before this are escaped, "
                                                         "and no more than text: players do not "
                                                         "see them"),
                                    QStringLiteral("write them as elements"));
        } else if (m_xml.isCDATA() && (m_open.isEmpty() || !isOurs(m_open.constLast()))) {
            // Whoever writes such a section means others by it.
            m_findings << noteAt(here(), "text-between-elements",
                                 QStringLiteral("nobody reads the CDATA section that ends here"),
                                 QStringLiteral("leave it, if that is meant"));
        } else {
            constexpr int enough = 40;
            m_findings << warningAt(here(), "text-between-elements",
                                    QStringLiteral("nobody reads the text before this, %1")
                                        .arg(quoted(text.left(enough))),
                                    QStringLiteral("put texts into the attributes of elements"));
        }
    }

    const DocumentContent &m_content;
    Findings &m_findings;
    QXmlStreamReader m_xml;
    QStringList m_open; // elements, from the outermost to this one
};
} // namespace

void checkUnread(const DocumentContent &content, Findings &findings)
{
    Unread(content, findings).check();
}
