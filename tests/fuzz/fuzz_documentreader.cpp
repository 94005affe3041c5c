// The launcher document as it is read, without the window: what is told of it, and what is not.

#include "base/documentlimits.h"
#include "info/launcherdocumentreader.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace
{
void require(bool holds)
{
    if (!holds) {
        __builtin_trap();
    }
}

// Notes all that is said, and trips over what may not be.
class Listener : public LauncherDocumentHandler, public LauncherDocumentObserver
{
public:
    explicit Listener(const QString &code)
        : m_sum(authCodeSum(code))
    {
    }

    void elementStarted(const QString &name) override { say(name); }
    void launcherVersion(int version) override { say(QString::number(version)); }
    void client(const ClientInfo &info) override
    {
        require(info.auth.isEmpty() || info.auth.toLower() == m_sum);
        say(info.server + info.client + info.version + info.url);
    }
    void homeNews(int index, const NewsEntry &entry) override
    {
        require(index == m_slides++);
        newsElement(entry);
    }
    void news(int index, const NewsEntry &entry) override
    {
        require(index == m_tiles++);
        newsElement(entry);
    }
    void brokenClient() override { endWith(QStringLiteral("broken client")); }
    void brokenNews() override { endWith(QStringLiteral("broken news")); }

    void elementWritten(const DocumentElement &element) override
    {
        require(!m_ended && !m_broken);
        require(element.line >= 1 && element.column >= 1);
        require(element.attributes.size() <= DocumentLimits::attributes);
    }
    void hiddenClient(const ClientInfo &info) override
    {
        require(!m_ended && !m_broken && info.auth.toLower() != m_sum);
    }
    void readingEnded(const DocumentEnd &end) override
    {
        require(!m_ended);
        m_ended = true;
        require(end.line >= 1 && end.column >= 1);
        require(m_broken == (end.reason == DocumentEnd::BrokenElement) ||
                end.reason == DocumentEnd::TooManyAttributes ||
                end.reason == DocumentEnd::TooManyElements);
        require(end.reason != DocumentEnd::EnoughNews ||
                m_slides + m_tiles == DocumentLimits::newsElements);
        m_mayLose =
            end.reason == DocumentEnd::BrokenElement || end.reason == DocumentEnd::EnoughNews;
    }
    void elementLost(const DocumentElement & /*element*/) override
    {
        require(m_ended && m_mayLose && !m_restIsNotXml);
    }
    void restIsNotXml(const DocumentEnd &end) override
    {
        require(m_ended && m_mayLose && !m_restIsNotXml && !end.error.isEmpty());
        m_restIsNotXml = true;
    }

    bool hasEnded() const { return m_ended; }
    QStringList said() const { return m_said; }

private:
    void say(const QString &text)
    {
        require(!m_ended && !m_broken);
        m_said << text;
    }
    void endWith(const QString &text)
    {
        say(text);
        m_broken = true;
    }
    void newsElement(const NewsEntry &entry)
    {
        require(m_slides + m_tiles <= DocumentLimits::newsElements);
        say(entry.title + entry.description + entry.imageUrl + entry.clickUrl);
    }

    const QString m_sum;
    QStringList m_said;
    int m_slides = 0;
    int m_tiles = 0;
    bool m_broken = false;
    bool m_ended = false;
    bool m_mayLose = false;
    bool m_restIsNotXml = false;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size)
{
    const QString code = QStringLiteral("code");
    const QString text = decodeLauncherDocument(
        QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size)));
    Listener observed(code);
    readLauncherDocument(text, code, observed, &observed);
    require(observed.hasEnded());
    // A player's launcher has no observer, and hears the same.
    Listener alone(code);
    readLauncherDocument(text, code, alone);
    require(!alone.hasEnded() && alone.said() == observed.said());
    return 0;
}
