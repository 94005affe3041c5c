// The server library's encrypted variant must be asked for.
#ifndef CPPHTTPLIB_OPENSSL_SUPPORT
#define CPPHTTPLIB_OPENSSL_SUPPORT
#endif
#include "install/downloadmanager.h"
#include "support/archives.h"
#include "support/scratchfolder.h"

#include <QProcess>
#include <QSignalSpy>
#include <QSslConfiguration>
#include <QTest>

#include <httplib.h>
#include <thread>

// Downloads over an encrypted connection, which is how players get their clients: the limit on what
// may lie in memory must not make the transfer stall.
class TestSecureDownload : public QObject
{
    Q_OBJECT

private slots:
    void largeArchiveArrivesWhole();
    void unknownCertificateIsRefused();

private:
    static void makeCertificate();
    static void trustCertificate(bool trust);
};

namespace
{
constexpr qint64 archiveSize = 48 * 1024 * 1024;

class SecureServer
{
public:
    SecureServer()
        : m_server("cert.pem", "key.pem")
    {
        m_server.Get("/client.zip", [](const httplib::Request &, httplib::Response &response) {
            response.set_content_provider(
                archiveSize, "application/zip",
                [](std::size_t offset, std::size_t length, httplib::DataSink &sink) {
                    const std::string block(std::min<std::size_t>(length, 256 * 1024),
                                            static_cast<char>('a' + (offset >> 20) % 26));
                    return sink.write(block.data(), block.size());
                });
        });
        m_port = m_server.bind_to_any_port("127.0.0.1");
        m_thread = std::thread([this] { m_server.listen_after_bind(); });
        while (!m_server.is_running()) {
            std::this_thread::yield();
        }
    }
    ~SecureServer()
    {
        m_server.stop();
        m_thread.join();
    }
    SecureServer(const SecureServer &) = delete;
    SecureServer &operator=(const SecureServer &) = delete;

    QUrl url() const { return QUrl(QStringLiteral("https://127.0.0.1:%1/client.zip").arg(m_port)); }

private:
    httplib::SSLServer m_server;
    std::thread m_thread;
    int m_port = 0;
};
} // namespace

void TestSecureDownload::makeCertificate()
{
    const QStringList arguments =
        QStringLiteral("req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=127.0.0.1 "
                       "-addext subjectAltName=IP:127.0.0.1 -keyout key.pem -out cert.pem")
            .split(QLatin1Char(' '));
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"), arguments);
    QVERIFY(openssl.waitForFinished());
    QCOMPARE(openssl.exitCode(), 0);
}

void TestSecureDownload::trustCertificate(bool trust)
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(trust ? QSslCertificate::fromPath(QStringLiteral("cert.pem"))
                                          : QList<QSslCertificate>());
    QSslConfiguration::setDefaultConfiguration(configuration);
}

void TestSecureDownload::largeArchiveArrivesWhole()
{
    const ScratchFolder folder;
    makeCertificate();
    trustCertificate(true);
    // Keeps the archive, which the manager removes.
    Archives::provideExtractorScript("cp \"$1\" kept.zip");
    const SecureServer server;
    DownloadManager manager(nullptr, QStringLiteral("1.0"), QStringLiteral("a"));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    manager.append(server.url());
    QVERIFY(ended.wait(60000));

    const QByteArray content = ScratchFolder::read(QStringLiteral("kept.zip"));
    QCOMPARE(content.size(), archiveSize);
    for (int megabyte = 0; megabyte < 48; ++megabyte) {
        QCOMPARE(content.at(megabyte * 1024 * 1024 + 4711), static_cast<char>('a' + megabyte % 26));
    }
}

void TestSecureDownload::unknownCertificateIsRefused()
{
    const ScratchFolder folder;
    makeCertificate();
    trustCertificate(false);
    const SecureServer server;
    DownloadManager manager(nullptr, QStringLiteral("1.0"), QStringLiteral("a"));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    manager.append(server.url());
    QVERIFY(ended.wait(20000));
    QVERIFY(!QFile::exists(QStringLiteral("a/1.0")));
}

QTEST_GUILESS_MAIN(TestSecureDownload)
#include "tst_securedownload.moc"
