#include "info/launcherdocumentreader.h"

#include <QCryptographicHash>
#include <QXmlStreamReader>

#include <algorithm>
#include <initializer_list>
#include <optional>

namespace
{
// Slides and tiles are read up to this number together; whatever follows the last of them, clients
// included, is never seen.
constexpr int maximumNewsElements = 9;

QString attribute(const QXmlStreamAttributes &attributes, const char *name)
{
    return attributes.value(QLatin1String(name)).toString();
}

bool hasAll(const QXmlStreamAttributes &attributes, std::initializer_list<const char *> names)
{
    return std::all_of(names.begin(), names.end(), [&attributes](const char *name) {
        return attributes.hasAttribute(QLatin1String(name));
    });
}

class Reader
{
public:
    Reader(const QString &text, const QString &authCode, LauncherDocumentHandler &handler)
        : m_xml(text)
        , m_codeSum(authCodeSum(authCode))
        , m_handler(handler)
    {
    }

    void read()
    {
        // A reader error ends the loop like the end of the document: the token stays invalid from
        // then on, and waiting for the end would never come to one.
        for (QXmlStreamReader::TokenType token = m_xml.readNext();
             token != QXmlStreamReader::EndDocument && token != QXmlStreamReader::Invalid &&
             m_newsElements < maximumNewsElements;
             token = m_xml.readNext()) {
            if (token == QXmlStreamReader::StartElement && !readElement()) {
                return;
            }
        }
    }

private:
    // Returns false when a broken element ends the reading.
    bool readElement()
    {
        const QString name = m_xml.name().toString();
        m_handler.elementStarted(name);
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
        if (!hasAll(attributes, {"version", "url"})) {
            m_handler.brokenClient();
            return false;
        }
        const QString auth = attribute(attributes, "auth");
        if (!attributes.hasAttribute(QLatin1String("auth")) || auth.toLower() == m_codeSum) {
            m_handler.client({attribute(attributes, "version"), attribute(attributes, "url"),
                              attribute(attributes, "name"), attribute(attributes, "server"),
                              auth});
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
        if (!hasAll(attributes, {"id", "title", "description", "imageUrl", "clickUrl"})) {
            m_handler.brokenNews();
            return std::nullopt;
        }
        return NewsEntry{attribute(attributes, "title"), attribute(attributes, "description"),
                         attribute(attributes, "imageUrl"), attribute(attributes, "clickUrl")};
    }

    QXmlStreamReader m_xml;
    const QString m_codeSum;
    LauncherDocumentHandler &m_handler;
    int m_newsElements = 0;
    int m_homeNews = 0;
    int m_news = 0;
};
} // namespace

void readLauncherDocument(const QString &text, const QString &authCode,
                          LauncherDocumentHandler &handler)
{
    Reader(text, authCode, handler).read();
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
