#include "info/launcherdocumentreader.h"

#include "base/documentlimits.h"
#include "info/documentcut.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <algorithm>
#include <optional>
#include <utility>

namespace
{
QString attribute(const QXmlStreamAttributes &attributes, const char *name)
{
    return attributes.value(QLatin1String(name)).toString();
}

// Empty when it is longer than any address that is meant.
QString address(const QXmlStreamAttributes &attributes, const char *name)
{
    const QString written = attribute(attributes, name);
    return written.size() > DocumentLimits::addressLength ? QString() : written;
}

// Tells lines and columns of a text whose places are asked for from its beginning to its end.
class LineCounter
{
public:
    explicit LineCounter(QString text)
        : m_text(std::move(text))
    {
    }

    void countTo(int offset)
    {
        for (; m_counted < offset; ++m_counted) {
            if (m_text.at(m_counted) == QLatin1Char('\n')) {
                ++m_line;
                m_lineBegin = m_counted + 1;
            }
        }
    }
    int line() const { return m_line; }
    int columnOf(int offset) const { return offset - m_lineBegin + 1; }

private:
    const QString m_text;
    int m_counted = 0;
    int m_line = 1;
    int m_lineBegin = 0;
};

// Adds up what a document makes the toolkit keep and compare.
class Bounds
{
public:
    // Takes the token that was read; whether the document asks for too much with it.
    bool areExceededBy(const QXmlStreamReader &xml)
    {
        if (xml.isEndElement()) {
            --m_depth;
        } else if (xml.isStartElement()) {
            const int namespaces = xml.namespaceDeclarations().size();
            ++m_elements;
            ++m_depth;
            m_namespaces += namespaces;
            m_attributes += xml.attributes().size() + namespaces;
        }
        return m_elements > DocumentLimits::elements || m_depth > DocumentLimits::depth ||
               m_namespaces > DocumentLimits::namespaces ||
               m_attributes > DocumentLimits::allAttributes;
    }

private:
    int m_elements = 0;
    int m_depth = 0;
    int m_namespaces = 0;
    int m_attributes = 0;
};

class Reader
{
public:
    Reader(const QString &text, const QString &authCode, LauncherDocumentHandler &handler,
           LauncherDocumentObserver *observer)
        : m_text(text)
        , m_cut(findDocumentCut(text))
        // The toolkit may not see what would cost it seconds.
        , m_xml(m_cut.place < 0 ? text : text.left(m_cut.place))
        , m_codeSum(authCodeSum(authCode))
        , m_handler(handler)
        , m_observer(observer)
        , m_lines(text)
    {
    }

    void read()
    {
        const DocumentEnd end = readUpToTheEnd();
        if (m_observer != nullptr) {
            m_observer->readingEnded(end);
            tellTheRest(end.reason);
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
            if (m_bounds.areExceededBy(m_xml)) {
                return endBeforeTooMany();
            }
            if (token == QXmlStreamReader::StartElement && !readElement()) {
                return endHere(DocumentEnd::BrokenElement);
            }
        }
        if (isBeforeTheCut()) {
            return endBeforeTheCut();
        }
        return endHere(m_xml.hasError() ? DocumentEnd::NotXml : DocumentEnd::EndOfDocument);
    }

    bool isBeforeTheCut() const
    {
        return m_cut.place >= 0 && (!m_xml.hasError() ||
                                    m_xml.error() == QXmlStreamReader::PrematureEndOfDocumentError);
    }

    DocumentEnd endBeforeTheCut()
    {
        static const QRegularExpression nameHere(QStringLiteral("<(?:[^\\s/>:]*:)?([^\\s/>:]*)"));
        m_lines.countTo(m_cut.place);
        tellUnread(nameHere.match(m_text, m_cut.place).captured(1));
        return {reasonOfTheCut(), QString(), m_lines.line(), m_lines.columnOf(m_cut.place)};
    }

    DocumentEnd::Reason reasonOfTheCut() const
    {
        switch (m_cut.reason) {
        case DocumentCut::DeclaringType:
            return DocumentEnd::DeclaringType;
        case DocumentCut::Attributes:
            return DocumentEnd::TooManyAttributes;
        default:
            return DocumentEnd::TooManyElements;
        }
    }

    DocumentEnd endBeforeTooMany()
    {
        const DocumentElement element = elementHere();
        tellUnread(element.name);
        return {DocumentEnd::TooManyElements, QString(), element.line, element.column};
    }

    // The lines for broken elements fit clients, slides and tiles; any other ends the reading
    // without a word.
    void tellUnread(const QString &name)
    {
        if (name == QLatin1String("client")) {
            m_handler.elementStarted(name);
            m_handler.brokenClient();
        } else if (name == QLatin1String("homenews") || name == QLatin1String("news")) {
            m_handler.elementStarted(name);
            m_handler.brokenNews();
        }
    }

    // Behind any other end there is nothing that could be lost.
    void tellTheRest(DocumentEnd::Reason reason)
    {
        if (reason != DocumentEnd::EnoughNews && reason != DocumentEnd::BrokenElement) {
            return;
        }
        if (reason == DocumentEnd::BrokenElement) {
            // The broken element itself was told already.
            (void)m_xml.readNext();
        }
        for (; !m_xml.atEnd(); (void)m_xml.readNext()) {
            if (m_bounds.areExceededBy(m_xml)) {
                return;
            }
            if (m_xml.isStartElement()) {
                m_observer->elementLost(elementHere());
            }
        }
        if (m_xml.hasError() && !isBeforeTheCut()) {
            m_observer->restIsNotXml(endHere(DocumentEnd::NotXml));
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
        m_lines.countTo(begin);
        return {m_xml.name().toString(), m_xml.attributes(), m_lines.line(),
                m_lines.columnOf(begin)};
    }

    // Returns false when a broken element ends the reading.
    bool readElement()
    {
        const QString name = m_xml.name().toString();
        m_handler.elementStarted(name);
        if (m_observer != nullptr) {
            m_observer->elementWritten(elementHere());
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
        const ClientInfo info(attribute(attributes, "version"), address(attributes, "url"),
                              attribute(attributes, "name"), attribute(attributes, "server"), auth);
        if (!attributes.hasAttribute(QLatin1String("auth")) || auth.toLower() == m_codeSum) {
            m_handler.client(info);
        } else if (m_observer != nullptr) {
            m_observer->hiddenClient(info);
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
                         address(attributes, "imageUrl"), address(attributes, "clickUrl")};
    }

    const QString m_text;
    const DocumentCut m_cut;
    QXmlStreamReader m_xml;
    const QString m_codeSum;
    LauncherDocumentHandler &m_handler;
    LauncherDocumentObserver *const m_observer; // of who called, or null
    LineCounter m_lines;
    Bounds m_bounds;
    int m_newsElements = 0;
    int m_homeNews = 0;
    int m_news = 0;
};
} // namespace

void readLauncherDocument(const QString &text, const QString &authCode,
                          LauncherDocumentHandler &handler, LauncherDocumentObserver *observer)
{
    Reader(text, authCode, handler, observer).read();
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
