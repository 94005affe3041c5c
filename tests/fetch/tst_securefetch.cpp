#include "fetch/filedownloader.h"
#include "support/holdings.h"
#include "support/relation.h"

#include <QSignalSpy>
#include <QSslConfiguration>
#include <QTest>

// The fetch of one small resource over an encrypted connection, which is how the document comes.
// The server and its authority come with the environment (support/with-https.sh).
class TestSecureFetch : public QObject
{
    Q_OBJECT

private slots:
    void bodyThatUnpacksHugely_data();
    void bodyThatUnpacksHugely();
};

void TestSecureFetch::bodyThatUnpacksHugely_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("with a length") << QStringLiteral("bomb.png");
    QTest::newRow("in one chunk") << QStringLiteral("chunked.png");
}

// Four megabytes for gigabytes of memory.
void TestSecureFetch::bodyThatUnpacksHugely()
{
    constexpr int largest = 32 * 1024 * 1024;
    QFETCH(QString, path);
    // The test's own authority.
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(QSslCertificate::fromData(qgetenv("EMBERWAKE_TEST_AUTHORITY")));
    QSslConfiguration::setDefaultConfiguration(configuration);

    Holdings::forgetPeakOfMemory();
    const qint64 before = Holdings::memory();
    FileDownloader downloader{QUrl(qEnvironmentVariable("EMBERWAKE_TEST_HTTPS") + path)};
    QSignalSpy spy(&downloader, &FileDownloader::downloaded);
    QVERIFY(spy.wait(60000));
    QCOMPARE(downloader.downloadedData().size(), largest);
    QCOMPARE(downloader.downloadedData().count('\0'), largest);
    if (before >= 0) {
        // The body, and a copy of it.
        VERIFY_RELATION(Holdings::peakOfMemory() - before, <, 4 * qint64(largest));
    }
}

QTEST_GUILESS_MAIN(TestSecureFetch)
#include "tst_securefetch.moc"
