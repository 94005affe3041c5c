#include "fetch/filedownloader.h"
#include "fetch/oneperturn.h"
#include "support/holdings.h"
#include "support/httpserver.h"
#include "support/relation.h"
#include "support/scratchfolder.h"
#include "support/testsettings.h"

#include <QFile>
#include <QNetworkReply>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <vector>

#ifndef Q_OS_WIN
#include <sys/stat.h>
#endif

namespace
{
constexpr int limit = 10000;
constexpr int mebibyte = 1024 * 1024;
constexpr int largest = 32 * mebibyte;

// Turns the event loop through one whole fetch: enough for a second signal to show, were there one.
bool oneMoreFetch(HttpServer &server)
{
    server.serve(QStringLiteral("another"), "x");
    FileDownloader another(QUrl(server.url(QStringLiteral("another"))));
    QSignalSpy spy(&another, &FileDownloader::downloaded);
    return spy.wait(limit);
}
} // namespace

// The fetch of one small resource: one GET, one signal, whatever comes back.
class TestFileDownloader : public QObject
{
    Q_OBJECT

private slots:
    void bodyArrives_data();
    void bodyArrives();
    void unreachable_data();
    void unreachable();
    void redirectIsNotFollowed();
    void droppedConnectionKeepsWhatCame();
    void nothingIsThereBeforeTheEnd();
    void twoRunIndependentlyAndEndInTheirOwnOrder();
    void replyIsDeletedAfterTheSignal();
    void goesWithItsParentInMidFetch();
    void endedFetchHoldsNoThread();
    void addressThatIsNotFetched_data();
    void addressThatIsNotFetched();
    void localFileArrives();
    void mayBeDeletedByWhoAnswers_data();
    void mayBeDeletedByWhoAnswers();
};

void TestFileDownloader::bodyArrives_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::newRow("a text") << QByteArray("<launcher/>") << 200;
    QTest::newRow("an empty body") << QByteArray() << 200;
    QTest::newRow("bytes of every value, NUL among them")
        << QByteArray("\0\x01\xFF\r\n\0", 6) << 200;
    QTest::newRow("a megabyte") << QByteArray(1024 * 1024, 'e') << 200;
    QTest::newRow("not found, with a page") << QByteArray("<html>gone</html>") << 404;
    QTest::newRow("not found, without a page") << QByteArray() << 404;
    QTest::newRow("server error, with a page") << QByteArray("oops") << 500;
    QTest::newRow("access refused, with a page") << QByteArray("no") << 403;
}

void TestFileDownloader::bodyArrives()
{
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    HttpServer server;
    const QString path = QStringLiteral("document");
    server.serve(path, body, status);
    FileDownloader downloader(QUrl(server.url(path)));
    QSignalSpy spy(&downloader, &FileDownloader::downloaded);
    QVERIFY(spy.wait(limit));
    QCOMPARE(downloader.downloadedData(), body);

    QVERIFY(oneMoreFetch(server));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(server.requests(path), 1);
    // The body stays.
    QCOMPARE(downloader.downloadedData(), body);
}

void TestFileDownloader::unreachable_data()
{
    QTest::addColumn<QString>("url");
    QTest::newRow("a refused connection") << QString::fromLatin1(TestSettings::nobodyListens);
    QTest::newRow("an empty address") << QString();
    QTest::newRow("an unknown scheme") << QStringLiteral("emberwake://nowhere/launcher.xml");
    QTest::newRow("an address without a host") << QStringLiteral("http:///launcher.xml");
    QTest::newRow("a relative address") << QStringLiteral("launcher.xml");
}

void TestFileDownloader::unreachable()
{
    QFETCH(QString, url);
    FileDownloader downloader{QUrl(url)};
    QSignalSpy spy(&downloader, &FileDownloader::downloaded);
    QCOMPARE(spy.count(), 0);
    QVERIFY(spy.wait(limit));
    QCOMPARE(downloader.downloadedData(), QByteArray());

    HttpServer server;
    QVERIFY(oneMoreFetch(server));
    QCOMPARE(spy.count(), 1);
}

void TestFileDownloader::redirectIsNotFollowed()
{
    HttpServer server;
    server.serve(QStringLiteral("target"), "the target");
    server.redirect(QStringLiteral("moved"), server.url(QStringLiteral("target")), "moved away");
    FileDownloader downloader(QUrl(server.url(QStringLiteral("moved"))));
    QSignalSpy spy(&downloader, &FileDownloader::downloaded);
    QVERIFY(spy.wait(limit));
    QCOMPARE(downloader.downloadedData(), QByteArray("moved away"));

    QVERIFY(oneMoreFetch(server));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(server.requests(QStringLiteral("target")), 0);
}

void TestFileDownloader::droppedConnectionKeepsWhatCame()
{
    HttpServer server;
    const QByteArray body = QByteArray("0123456789").repeated(1000);
    server.serveCut(QStringLiteral("cut"), body, 4000);
    FileDownloader downloader(QUrl(server.url(QStringLiteral("cut"))));
    QSignalSpy spy(&downloader, &FileDownloader::downloaded);
    QVERIFY(spy.wait(limit));
    QCOMPARE(downloader.downloadedData(), body.left(4000));

    QVERIFY(oneMoreFetch(server));
    QCOMPARE(spy.count(), 1);
}

void TestFileDownloader::nothingIsThereBeforeTheEnd()
{
    HttpServer server;
    server.serveHeld(QStringLiteral("slow"), "first half, second half", 10);
    FileDownloader downloader(QUrl(server.url(QStringLiteral("slow"))));
    QSignalSpy spy(&downloader, &FileDownloader::downloaded);
    QCOMPARE(downloader.downloadedData(), QByteArray());

    // Half of it has arrived, and still nothing is there.
    const auto *reply = downloader.m_WebCtrl.findChild<QNetworkReply *>();
    QVERIFY(reply != nullptr);
    QTRY_COMPARE_WITH_TIMEOUT(reply->bytesAvailable(), qint64(10), limit);
    QCOMPARE(downloader.downloadedData(), QByteArray());
    QCOMPARE(spy.count(), 0);

    server.release(QStringLiteral("slow"));
    QVERIFY(spy.wait(limit));
    QCOMPARE(downloader.downloadedData(), QByteArray("first half, second half"));
}

void TestFileDownloader::twoRunIndependentlyAndEndInTheirOwnOrder()
{
    HttpServer server;
    server.serveHeld(QStringLiteral("slow"), "the first");
    server.serve(QStringLiteral("quick"), "the second");
    FileDownloader first(QUrl(server.url(QStringLiteral("slow"))));
    FileDownloader second(QUrl(server.url(QStringLiteral("quick"))));
    QStringList order;
    connect(&first, &FileDownloader::downloaded, this,
            [&order] { order << QStringLiteral("first"); });
    connect(&second, &FileDownloader::downloaded, this,
            [&order] { order << QStringLiteral("second"); });

    QTRY_COMPARE_WITH_TIMEOUT(order, QStringList{QStringLiteral("second")}, limit);
    QCOMPARE(second.downloadedData(), QByteArray("the second"));
    QCOMPARE(first.downloadedData(), QByteArray());

    server.release(QStringLiteral("slow"));
    QTRY_COMPARE_WITH_TIMEOUT(
        order, (QStringList{QStringLiteral("second"), QStringLiteral("first")}), limit);
    QCOMPARE(first.downloadedData(), QByteArray("the first"));
    QCOMPARE(second.downloadedData(), QByteArray("the second"));
}

void TestFileDownloader::replyIsDeletedAfterTheSignal()
{
    HttpServer server;
    server.serve(QStringLiteral("document"), "text");
    FileDownloader downloader(QUrl(server.url(QStringLiteral("document"))));
    const QPointer<QNetworkReply> reply = downloader.m_WebCtrl.findChild<QNetworkReply *>();
    QVERIFY(!reply.isNull());
    bool thereDuringTheSignal = false;
    connect(&downloader, &FileDownloader::downloaded, this,
            [&] { thereDuringTheSignal = !reply.isNull(); });
    QTRY_VERIFY_WITH_TIMEOUT(reply.isNull(), limit);
    QVERIFY(thereDuringTheSignal);
}

void TestFileDownloader::goesWithItsParentInMidFetch()
{
    HttpServer server;
    server.serveHeld(QStringLiteral("slow"), "late");
    int signalCount = 0;
    {
        QObject parent;
        auto *downloader = new FileDownloader(QUrl(server.url(QStringLiteral("slow"))), &parent);
        connect(downloader, &FileDownloader::downloaded, this, [&signalCount] { ++signalCount; });
        QTRY_COMPARE_WITH_TIMEOUT(server.requests(QStringLiteral("slow")), 1, limit);
    }
    server.release(QStringLiteral("slow"));
    QVERIFY(oneMoreFetch(server));
    QCOMPARE(signalCount, 0);
}

void TestFileDownloader::endedFetchHoldsNoThread()
{
    HttpServer server;
    // Whatever the toolkit starts once.
    QVERIFY(oneMoreFetch(server));
    const int threads = Holdings::threads();
    const int descriptors = Holdings::descriptors();
    server.serve(QStringLiteral("document"), "text");
    std::vector<std::unique_ptr<FileDownloader>> fetches;
    int ended = 0;
    for (int i = 0; i < 10; ++i) {
        const QString host = i % 2 == 0 ? server.url() : QLatin1String(TestSettings::nobodyListens);
        fetches.push_back(
            std::make_unique<FileDownloader>(QUrl(host + QStringLiteral("document"))));
        connect(fetches.back().get(), &FileDownloader::downloaded, this, [&ended] { ++ended; });
    }
    QTRY_COMPARE_WITH_TIMEOUT(ended, 10, limit);
    TRY_VERIFY_RELATION(Holdings::threads(), <=, threads, limit);
    TRY_VERIFY_RELATION(Holdings::descriptors(), <=, descriptors, limit);
}

void TestFileDownloader::mayBeDeletedByWhoAnswers_data()
{
    QTest::addColumn<bool>("large");
    QTest::newRow("at the end of the answer") << false;
    QTest::newRow("when it is given up") << true;
}

void TestFileDownloader::mayBeDeletedByWhoAnswers()
{
    QFETCH(bool, large);
    HttpServer server;
    server.serve(QStringLiteral("small"), "text");
    server.serveLarge(QStringLiteral("large"), 2 * largest);
    const QString path = large ? QStringLiteral("large") : QStringLiteral("small");
    auto *downloader = new FileDownloader(QUrl(server.url(path)));
    // Nothing that was to be done later may be done with what is gone: a piece of work in this turn
    // makes the next wait.
    OnePerTurn::take(downloader, [] {});
    const QPointer<FileDownloader> there = downloader;
    int size = -1;
    connect(downloader, &FileDownloader::downloaded, this, [&size, downloader] {
        size = downloader->downloadedData().size();
        delete downloader;
    });
    QTRY_VERIFY_WITH_TIMEOUT(there.isNull(), limit);
    QCOMPARE(size, large ? largest : 4);
    QVERIFY(oneMoreFetch(server));
}

void TestFileDownloader::addressThatIsNotFetched_data()
{
    QTest::addColumn<QString>("url");
    // %1: the scratch folder
    QTest::newRow("a share") << QStringLiteral("file://127.0.0.1/share/p.png");
    QTest::newRow("a folder") << QStringLiteral("file://%1");
#ifndef Q_OS_WIN
    QTest::newRow("a device that never ends") << QStringLiteral("file:///dev/zero");
    QTest::newRow("a pipe that nobody writes to") << QStringLiteral("file://%1/pipe");
    // The toolkit takes the one for a drive, the other for a folder's short name.
    QTest::newRow("a pipe like a drive's") << QStringLiteral("x:pipe");
    QTest::newRow("a pipe like a short name's") << QStringLiteral("xy:pipe");
#endif
}

void TestFileDownloader::addressThatIsNotFetched()
{
    QFETCH(QString, url);
    const ScratchFolder folder;
#ifndef Q_OS_WIN
    QCOMPARE(mkfifo("pipe", 0600), 0);
    QCOMPARE(mkfifo("x:pipe", 0600), 0);
    QCOMPARE(mkfifo("xy:pipe", 0600), 0);
#endif
    if (url.contains(QLatin1Char('%'))) {
        url = url.arg(folder.path());
    }
    FileDownloader downloader{QUrl(url)};
    QSignalSpy spy(&downloader, &FileDownloader::downloaded);
    QCOMPARE(spy.count(), 0);
    QVERIFY(spy.wait(limit));
    QCOMPARE(downloader.downloadedData(), QByteArray());

    HttpServer server;
    QVERIFY(oneMoreFetch(server));
    QCOMPARE(spy.count(), 1);
}

void TestFileDownloader::localFileArrives()
{
    const ScratchFolder folder;
    ScratchFolder::write(QStringLiteral("p.png"), "a picture");
    FileDownloader downloader{QUrl::fromLocalFile(folder.path() + QStringLiteral("/p.png"))};
    QSignalSpy spy(&downloader, &FileDownloader::downloaded);
    QVERIFY(spy.wait(limit));
    QCOMPARE(downloader.downloadedData(), QByteArray("a picture"));

    QFile large(QStringLiteral("large"));
    QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(2LL * largest));
    FileDownloader other{QUrl::fromLocalFile(folder.path() + QStringLiteral("/large"))};
    QSignalSpy end(&other, &FileDownloader::downloaded);
    QVERIFY(end.wait(limit));
    QCOMPARE(other.downloadedData().size(), largest);
    HttpServer server;
    QVERIFY(oneMoreFetch(server));
    QCOMPARE(end.count(), 1);
}

QTEST_GUILESS_MAIN(TestFileDownloader)
#include "tst_filedownloader.moc"
