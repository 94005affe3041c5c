#include "check/documentcontent.h"

#include "base/documentlimits.h"

#include <QTextCodec>

#include <initializer_list>

namespace
{
class Collector : public LauncherDocumentHandler, public LauncherDocumentObserver
{
public:
    explicit Collector(DocumentContent &content)
        : m_content(content)
    {
    }

    void elementStarted(const QString &) override {}

    void elementWritten(const DocumentElement &element) override
    {
        m_element = element;
        m_content.elements << element;
        const QString &name = element.name;
        if (name != QLatin1String("launcher") && name != QLatin1String("client") &&
            name != QLatin1String("homenews") && name != QLatin1String("news")) {
            m_content.strangers << element;
        }
        if (name == QLatin1String("client")) {
            lookForLongAddresses({"url"});
        } else if (name == QLatin1String("homenews") || name == QLatin1String("news")) {
            lookForLongAddresses({"imageUrl", "clickUrl"});
        }
    }

    void launcherVersion(int version) override
    {
        m_content.launchers << LauncherElement{version, written("version"), has("version"),
                                               place()};
    }

    void client(const ClientInfo &info) override
    {
        m_content.clients << ClientEntry{info, has("auth"), true, place()};
    }

    void hiddenClient(const ClientInfo &info) override
    {
        m_content.clients << ClientEntry{info, true, false, place()};
    }

    void homeNews(int index, const NewsEntry &entry) override
    {
        m_content.slides << item(index, entry);
    }

    void news(int index, const NewsEntry &entry) override { m_content.tiles << item(index, entry); }

    void brokenClient() override { m_content.broken = m_element; }
    void brokenNews() override { m_content.broken = m_element; }
    void readingEnded(const DocumentEnd &end) override { m_content.end = end; }
    void elementLost(const DocumentElement &element) override { m_content.lost << element; }
    void restIsNotXml(const DocumentEnd &end) override { m_content.restIsNotXml = end; }

private:
    QString written(const char *attribute) const
    {
        return m_element.attributes.value(QLatin1String(attribute)).toString();
    }
    bool has(const char *attribute) const
    {
        return m_element.attributes.hasAttribute(QLatin1String(attribute));
    }
    void lookForLongAddresses(std::initializer_list<const char *> attributes)
    {
        for (const char *attribute : attributes) {
            const int length = written(attribute).size();
            if (length > DocumentLimits::addressLength) {
                m_content.longAddresses << LongAddress{QLatin1String(attribute), length, place()};
            }
        }
    }
    Place place() const { return {m_element.line, m_element.column}; }
    NewsItem item(int index, const NewsEntry &entry) const
    {
        return {index, entry, written("title"), written("description"), place()};
    }

    DocumentContent &m_content;
    DocumentElement m_element;
};

std::optional<Place> firstBadByte(const QByteArray &body, const QString &text)
{
    QTextCodec::ConverterState state;
    const int length = static_cast<int>(qstrlen(body.constData()));
    (void)QTextCodec::codecForName("UTF-8")->toUnicode(body.constData(), length, &state);
    if (state.invalidChars == 0 && state.remainingChars == 0) {
        return std::nullopt;
    }
    // What cannot be decoded has become a replacement mark.
    const int bad = text.indexOf(QChar(QChar::ReplacementCharacter));
    const QString before = text.left(bad);
    return Place{before.count(QLatin1Char('\n')) + 1,
                 before.size() - before.lastIndexOf(QLatin1Char('\n'))};
}
} // namespace

DocumentContent readContent(const QByteArray &body, const QString &code)
{
    DocumentContent content;
    content.code = code;
    content.text = decodeLauncherDocument(body);
    content.cutByNul = body.contains('\0');
    content.firstBadByte = firstBadByte(body, content.text);
    if (!content.text.isEmpty()) {
        Collector collector(content);
        readLauncherDocument(content.text, code, collector, &collector);
    }
    return content;
}
