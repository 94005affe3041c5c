#include "fetch/filedownloader.h"
#include "support/holdings.h"
#include "support/httpserver.h"
#include "support/packedbytes.h"
#include "support/relation.h"

#include <QSignalSpy>
#include <QTest>

namespace
{
constexpr int limit = 10000;
constexpr int mebibyte = 1024 * 1024;
constexpr int largest = 32 * mebibyte;
} // namespace

// What a small resource may take of memory, however much a host sends.
class TestBoundedFetch : public QObject
{
    Q_OBJECT

private slots:
    void bodyIsBounded_data();
    void bodyIsBounded();
    void unpackedBodyIsBounded();
    void endlessBodyFillsNoMemory();
    void packedBodyFillsNoMemory();
    void bodyWithMuchBehindItEnds();
};

void TestBoundedFetch::bodyIsBounded_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("arrives");
    QTest::newRow("the largest one that arrives whole") << largest << largest;
    QTest::newRow("a byte more") << largest + 1 << largest;
    QTest::newRow("much more") << 3 * largest << largest;
}

void TestBoundedFetch::bodyIsBounded()
{
    QFETCH(int, size);
    QFETCH(int, arrives);
    HttpServer server;
    server.serveLarge(QStringLiteral("large"), size);
    FileDownloader downloader(QUrl(server.url(QStringLiteral("large"))));
    QSignalSpy spy(&downloader, &FileDownloader::downloaded);
    QVERIFY(spy.wait(limit));
    QCOMPARE(downloader.downloadedData().size(), arrives);
    QCOMPARE(downloader.downloadedData().count('e'), arrives);
}

// What counts is what it unpacks to.
void TestBoundedFetch::unpackedBodyIsBounded()
{
    HttpServer server;
    server.serveEncoded(QStringLiteral("packed"),
                        PackedBytes::pack(QByteArray(2 * largest, 'e'), PackedBytes::Deflate),
                        "deflate");
    FileDownloader downloader(QUrl(server.url(QStringLiteral("packed"))));
    QSignalSpy spy(&downloader, &FileDownloader::downloaded);
    QVERIFY(spy.wait(limit));
    QCOMPARE(downloader.downloadedData().size(), largest);
    QCOMPARE(downloader.downloadedData().count('e'), largest);
}

void TestBoundedFetch::endlessBodyFillsNoMemory()
{
    if (Holdings::memory() < 0) {
        QSKIP("memory cannot be measured here");
    }
    HttpServer server;
    server.serveLarge(QStringLiteral("endless"), 1024LL * 1024 * 1024);
    Holdings::forgetPeakOfMemory();
    const qint64 before = Holdings::memory();
    FileDownloader downloader(QUrl(server.url(QStringLiteral("endless"))));
    QSignalSpy spy(&downloader, &FileDownloader::downloaded);
    QVERIFY(spy.wait(limit));
    QCOMPARE(downloader.downloadedData().size(), largest);
    // What came, and a copy of it.
    VERIFY_RELATION(Holdings::peakOfMemory() - before, <, 4 * qint64(largest));
}

// Four megabytes for four gigabytes, over a way on which all of them are here before anybody looks.
void TestBoundedFetch::packedBodyFillsNoMemory()
{
    constexpr int packed = 4 * 1024 * 1024;
    if (Holdings::memory() < 0) {
        QSKIP("memory cannot be measured here");
    }
    HttpServer server;
    server.serveEncoded(QStringLiteral("bomb"), PackedBytes::zeros(packed), "gzip");
    Holdings::forgetPeakOfMemory();
    const qint64 before = Holdings::memory();
    FileDownloader downloader(QUrl(server.url(QStringLiteral("bomb"))));
    QSignalSpy spy(&downloader, &FileDownloader::downloaded);
    QVERIFY(spy.wait(limit));
    QCOMPARE(downloader.downloadedData().size(), largest);
    QCOMPARE(downloader.downloadedData().count('\0'), largest);
    VERIFY_RELATION(Holdings::peakOfMemory() - before, <, 4 * qint64(largest));
}

// Bytes behind what was packed, more than may wait until somebody takes them.
void TestBoundedFetch::bodyWithMuchBehindItEnds()
{
    HttpServer server;
    server.serveEncoded(QStringLiteral("packed"),
                        PackedBytes::pack("<launcher/>", PackedBytes::Gzip) +
                            QByteArray(4 * mebibyte, 'x'),
                        "gzip");
    FileDownloader downloader(QUrl(server.url(QStringLiteral("packed"))));
    QSignalSpy spy(&downloader, &FileDownloader::downloaded);
    QVERIFY(spy.wait(limit));
    QCOMPARE(downloader.downloadedData(), QByteArray("<launcher/>"));
}

QTEST_GUILESS_MAIN(TestBoundedFetch)
#include "tst_boundedfetch.moc"
