#include "info/launcherdocumentreader.h"

#include "base/documentlimits.h"

#include <QCryptographicHash>
#include <QXmlStreamReader>

#include <algorithm>
#include <optional>

namespace
{
QString attribute(const QXmlStreamAttributes &attributes, const char *name)
{
    return attributes.value(QLatin1String(name)).toString();
}

class Reader
{
public:
    Reader(const QString &text, const QString &authCode, LauncherDocumentHandler &handler)
        : m_text(text)
        , m_xml(text)
        , m_codeSum(authCodeSum(authCode))
        , m_handler(handler)
    {
    }

    void read()
    {
        const DocumentEnd end = readUpToTheEnd();
        m_handler.readingEnded(end);
        const bool more = end.reason == DocumentEnd::EnoughNews;
        if ((more || end.reason == DocumentEnd::BrokenElement) && m_handler.wantsTheRest()) {
            if (!more) {
                // The broken element itself was told already.
                (void)m_xml.readNext();
            }
            readTheRest();
        }
    }

private:
    DocumentEnd readUpToTheEnd()
    {
        // A reader error ends the loop like the end of the document: the token stays invalid from
        // then on, and waiting for the end would never come to one.
        for (QXmlStreamReader::TokenType token = m_xml.readNext();
             token != QXmlStreamReader::EndDocument && token != QXmlStreamReader::Invalid;
             token = m_xml.readNext()) {
            if (m_newsElements >= DocumentLimits::newsElements) {
                return endHere(DocumentEnd::EnoughNews);
            }
            if (token == QXmlStreamReader::StartElement && !readElement()) {
                return endHere(DocumentEnd::BrokenElement);
            }
        }
        return endHere(m_xml.hasError() ? DocumentEnd::NotXml : DocumentEnd::EndOfDocument);
    }

    void readTheRest()
    {
        for (; !m_xml.atEnd(); (void)m_xml.readNext()) {
            if (m_xml.isStartElement()) {
                m_handler.elementLost(elementHere());
            }
        }
        if (m_xml.hasError()) {
            m_handler.restIsNotXml(endHere(DocumentEnd::NotXml));
        }
    }

    // The toolkit counts columns from 0 and stands behind the letter that it did not like.
    DocumentEnd endHere(DocumentEnd::Reason reason) const
    {
        return {reason, m_xml.hasError() ? m_xml.errorString() : QString(),
                static_cast<int>(m_xml.lineNumber()),
                static_cast<int>(std::max<qint64>(m_xml.columnNumber(), 1))};
    }

    // The toolkit tells the place behind a start element. An operator looks for its beginning,
    // which is the last "<" before that: inside the element there is none.
    DocumentElement elementHere()
    {
        const int begin =
            m_text.lastIndexOf(QLatin1Char('<'), static_cast<int>(m_xml.characterOffset()) - 1);
        for (; m_counted < begin; ++m_counted) {
            if (m_text.at(m_counted) == QLatin1Char('\n')) {
                ++m_line;
                m_lineBegin = m_counted + 1;
            }
        }
        return {m_xml.name().toString(), m_xml.attributes(), m_line, begin - m_lineBegin + 1};
    }

    // Returns false when a broken element ends the reading.
    bool readElement()
    {
        const QString name = m_xml.name().toString();
        m_handler.elementStarted(name);
        if (m_handler.wantsElements()) {
            m_handler.elementWritten(elementHere());
        }
        if (name == QLatin1String("launcher")) {
            m_handler.launcherVersion(attribute(m_xml.attributes(), "version").toInt());
            return true;
        }
        if (name == QLatin1String("client")) {
            return readClient();
        }
        if (name == QLatin1String("homenews")) {
            return readHomeNews();
        }
        if (name == QLatin1String("news")) {
            return readNews();
        }
        return true;
    }

    bool readClient()
    {
        const QXmlStreamAttributes attributes = m_xml.attributes();
        if (!missingAttributes(QStringLiteral("client"), attributes).isEmpty()) {
            m_handler.brokenClient();
            return false;
        }
        const QString auth = attribute(attributes, "auth");
        const ClientInfo info(attribute(attributes, "version"), attribute(attributes, "url"),
                              attribute(attributes, "name"), attribute(attributes, "server"), auth);
        if (!attributes.hasAttribute(QLatin1String("auth")) || auth.toLower() == m_codeSum) {
            m_handler.client(info);
        } else {
            m_handler.hiddenClient(info);
        }
        return true;
    }

    bool readHomeNews()
    {
        std::optional<NewsEntry> entry = readNewsEntry();
        if (!entry) {
            return false;
        }
        // kept: only slides take the detour through Latin-1, which turns an accented letter into a
        // replacement mark. Operators write slide titles in plain ASCII because of it.
        entry->title = withoutLeadingQuestionMark(throughLatin1(entry->title));
        entry->description = withoutLeadingQuestionMark(throughLatin1(entry->description));
        m_handler.homeNews(m_homeNews++, *entry);
        return true;
    }

    bool readNews()
    {
        std::optional<NewsEntry> entry = readNewsEntry();
        if (!entry) {
            return false;
        }
        entry->title = withoutLeadingQuestionMark(entry->title);
        entry->description = withoutLeadingQuestionMark(entry->description);
        m_handler.news(m_news++, *entry);
        return true;
    }

    // The texts as published; nothing when an attribute is missing.
    std::optional<NewsEntry> readNewsEntry()
    {
        ++m_newsElements;
        const QXmlStreamAttributes attributes = m_xml.attributes();
        if (!missingAttributes(QStringLiteral("news"), attributes).isEmpty()) {
            m_handler.brokenNews();
            return std::nullopt;
        }
        return NewsEntry{attribute(attributes, "title"), attribute(attributes, "description"),
                         attribute(attributes, "imageUrl"), attribute(attributes, "clickUrl")};
    }

    const QString m_text;
    QXmlStreamReader m_xml;
    const QString m_codeSum;
    LauncherDocumentHandler &m_handler;
    int m_newsElements = 0;
    int m_homeNews = 0;
    int m_news = 0;
    // How far the lines are counted, which one that is, and where it begins.
    int m_counted = 0;
    int m_line = 1;
    int m_lineBegin = 0;
};
} // namespace

void readLauncherDocument(const QString &text, const QString &authCode,
                          LauncherDocumentHandler &handler)
{
    Reader(text, authCode, handler).read();
}

QStringList missingAttributes(const QString &element, const QXmlStreamAttributes &attributes)
{
    static const QStringList ofClient{QStringLiteral("version"), QStringLiteral("url")};
    static const QStringList ofNews{QStringLiteral("id"), QStringLiteral("title"),
                                    QStringLiteral("description"), QStringLiteral("imageUrl"),
                                    QStringLiteral("clickUrl")};
    QStringList missing;
    for (const QString &name : element == QLatin1String("client") ? ofClient : ofNews) {
        if (!attributes.hasAttribute(name)) {
            missing << name;
        }
    }
    return missing;
}

QString decodeLauncherDocument(const QByteArray &body)
{
    // constData() ends at the first NUL byte, and so does the text.
    return QString::fromUtf8(body.constData());
}

QString withoutLeadingQuestionMark(const QString &text)
{
    return text.startsWith(QLatin1Char('?')) ? text.mid(1) : text;
}

QString throughLatin1(const QString &text)
{
    return QString::fromUtf8(text.toLatin1().constData());
}

QString authCodeSum(const QString &authCode)
{
    const QByteArray sum = QCryptographicHash::hash(authCode.toUtf8(), QCryptographicHash::Sha1);
    return QString::fromLatin1(sum.toHex());
}
