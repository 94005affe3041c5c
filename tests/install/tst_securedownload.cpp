#include "install/downloadmanager.h"
#include "support/archives.h"
#include "support/holdings.h"
#include "support/relation.h"
#include "support/scratchfolder.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QSignalSpy>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTest>
#include <QTimer>

#ifdef Q_OS_WIN
#include <qt_windows.h>

#include <wincrypt.h>
#endif

// Downloads over an encrypted connection, which is how players get their clients: the limit on what
// may lie in memory must not make the transfer stall. The server and its authority come with the
// environment (support/with-https.sh).
class TestSecureDownload : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void encryptionIsTheSystemsOwn();
    void unknownAuthorityIsRefused();
    void largeArchiveArrivesWhole();
    void wrongNameIsRefused();
    void connectionThatEndsWithTheArchive();
    void archiveThatUnpacksHugelyOnTheWay();
};

namespace
{
constexpr int megabytes = 48;
constexpr int megabyte = 1024 * 1024;

// The archive on the server that this variable of the environment names.
QUrl archiveOn(const char *variable)
{
    return QUrl(qEnvironmentVariable(variable) + QStringLiteral("client.zip"));
}

#ifdef Q_OS_WIN
// Wine knows the system's own list of authorities only, not one that a program brings. The test has
// a Windows of its own there; a player's would ask first.
bool onWine()
{
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

void addToSystemList(const QSslCertificate &authority)
{
    const QByteArray bytes = authority.toDer();
    const auto *data = reinterpret_cast<const BYTE *>(bytes.constData());
    const DWORD encoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;
    const HCERTSTORE store = CertOpenSystemStoreW(0, L"ROOT");
    CertAddEncodedCertificateToStore(store, encoding, data, static_cast<DWORD>(bytes.size()),
                                     CERT_STORE_ADD_REPLACE_EXISTING, nullptr);
    CertCloseStore(store, 0);
}
#endif
} // namespace

// Trusts the one authority and no other.
void TestSecureDownload::initTestCase()
{
    QList<QSslCertificate> authorities =
        QSslCertificate::fromData(qgetenv("EMBERWAKE_TEST_AUTHORITY"));
    QCOMPARE(authorities.size(), 1);
#ifdef Q_OS_WIN
    if (onWine()) {
        addToSystemList(authorities.constFirst());
        authorities = QSslConfiguration::systemCaCertificates();
    }
#endif
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(authorities);
    QSslConfiguration::setDefaultConfiguration(configuration);
}

void TestSecureDownload::encryptionIsTheSystemsOwn()
{
    QVERIFY(QSslSocket::supportsSsl());
#ifdef Q_OS_WIN
    // No library of ours to keep up to date.
    QVERIFY(QSslSocket::sslLibraryVersionString().contains(QStringLiteral("Secure Channel")));
#endif
}

void TestSecureDownload::largeArchiveArrivesWhole()
{
    const ScratchFolder folder;
    // Keeps the archive, which the manager removes.
    Archives::provideExtractorScript("keep kept.zip");
    DownloadManager manager(nullptr, QStringLiteral("1.0"), QStringLiteral("a"));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    manager.append(archiveOn("EMBERWAKE_TEST_HTTPS"));
    QVERIFY(ended.wait(60000));

    const QByteArray content = ScratchFolder::read(QStringLiteral("kept.zip"));
    QCOMPARE(content.size(), megabytes * megabyte);
    for (int number = 0; number < megabytes; ++number) {
        QCOMPARE(content.at(number * megabyte + 4711), static_cast<char>('a' + number % 26));
    }
}

void TestSecureDownload::unknownAuthorityIsRefused()
{
    const ScratchFolder folder;
    DownloadManager manager(nullptr, QStringLiteral("1.0"), QStringLiteral("a"));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    manager.append(archiveOn("EMBERWAKE_TEST_STRANGER"));
    QVERIFY(ended.wait(20000));
    QVERIFY(!QFile::exists(QStringLiteral("a/1.0")));
}

// The certificate is good, but somebody else's.
void TestSecureDownload::wrongNameIsRefused()
{
    const ScratchFolder folder;
    DownloadManager manager(nullptr, QStringLiteral("1.0"), QStringLiteral("a"));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QUrl url = archiveOn("EMBERWAKE_TEST_HTTPS");
    url.setHost(QStringLiteral("localhost"));
    manager.append(url);
    QVERIFY(ended.wait(20000));
    QVERIFY(!QFile::exists(QStringLiteral("a/1.0")));
}

// What has arrived when the connection ends is still there to be read.
void TestSecureDownload::connectionThatEndsWithTheArchive()
{
    // Several times what may wait for the launcher.
    constexpr int closingMegabytes = 16;
    for (int download = 0; download < 10; ++download) {
        const ScratchFolder folder;
        Archives::provideExtractorScript("keep kept.zip");
        DownloadManager manager(nullptr, QStringLiteral("1.0"), QStringLiteral("a"));
        QSignalSpy ended(&manager, &DownloadManager::updateFinished);
        // A launcher that is busy now and then, so that bytes wait at every station of their way.
        QTimer busy;
        connect(&busy, &QTimer::timeout, this, [] { QTest::qSleep(50); });
        busy.start(0);
        manager.append(
            QUrl(qEnvironmentVariable("EMBERWAKE_TEST_HTTPS") + QStringLiteral("closing.zip")));
        QVERIFY(ended.wait(20000));
        const QByteArray content = ScratchFolder::read(QStringLiteral("kept.zip"));
        QCOMPARE(content.size(), closingMegabytes * megabyte);
        QCOMPARE(content.at(content.size() - 1), 'p');
    }
}

// A quarter of a megabyte for 258 MB of archive, to a launcher that comes to nothing for a while.
void TestSecureDownload::archiveThatUnpacksHugelyOnTheWay()
{
    constexpr qint64 allowed = 16LL * 1024 * 1024;
    if (Holdings::memory() < 0) {
        QSKIP("memory cannot be measured here");
    }
    const ScratchFolder folder;
    DownloadManager manager(nullptr, QStringLiteral("1.0"), QStringLiteral("a"));
    QSignalSpy finished(&manager, &DownloadManager::finished);
    Holdings::forgetPeakOfMemory();
    const qint64 before = Holdings::memory();
    bool busy = false;
    connect(&manager, &DownloadManager::updateProgress, this, [&] {
        QElapsedTimer waited;
        waited.start();
        while (!busy && !waited.hasExpired(1500) && Holdings::memory() - before < allowed) {
        }
        busy = true;
    });
    manager.append(
        QUrl(qEnvironmentVariable("EMBERWAKE_TEST_HTTPS") + QStringLiteral("packed.zip")));
    QVERIFY(finished.wait(60000));
    QVERIFY(busy);
    // More came than may lie in memory; its end, whose sum is not that of so many zeros, ended the
    // download.
    VERIFY_RELATION(QFileInfo(QStringLiteral("packed.zip")).size(), >, allowed);
    VERIFY_RELATION(Holdings::peakOfMemory() - before, <, allowed);
}

QTEST_GUILESS_MAIN(TestSecureDownload)
#include "tst_securedownload.moc"
