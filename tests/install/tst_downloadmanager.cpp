#include "downloads.h"
#include "install/downloadmanager.h"
#include "support/archives.h"
#include "support/consolecapture.h"
#include "support/holdings.h"
#include "support/httpserver.h"
#include "support/links.h"
#include "support/scratchfolder.h"

#include <QFile>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <memory>
#include <vector>

// The queue of downloads: what is fetched when, and what is said about it.
class TestDownloadManager : public QObject
{
    Q_OBJECT

private slots:
    void appendOnlyQueues();
    void successToTheLetter();
    void requestHasNothingOfItsOwn();

    void oneAfterTheOther();
    void appendWhileDownloadingWaitsItsTurn();
    void failureDoesNotStopTheQueue();
    void skippedAddressDoesNotStopTheQueue();
    void emptyListFinishesLater();
    void listOfEncodedAddresses();

    void idleManagerCanBeUsedAgain();
    void idleManagerHoldsNoThread();
    void destroyedWhileDownloading_data();
    void destroyedWhileDownloading();
};

void TestDownloadManager::appendOnlyQueues()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("client.zip"), "x");
    Archives::provideExtractorScript("exit 0");
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QCOMPARE(manager.totalCount, 0);
    QCOMPARE(manager.downloadedCount, 0);
    QSignalSpy finished(&manager, &DownloadManager::finished);

    manager.append(QUrl(server.url(text("client.zip"))));
    manager.append(QUrl(server.url(text("missing.zip"))));
    QCOMPARE(manager.totalCount, 2);
    QCOMPARE(manager.downloadedCount, 0);
    QCOMPARE(manager.downloadQueue.size(), 2);
    QCOMPARE(manager.currentDownload, nullptr);
    QVERIFY(!QFile::exists(text("client.zip")));
    QCOMPARE(finished.count(), 0);

    QVERIFY(finished.wait(30000));
    QCOMPARE(manager.totalCount, 2);
    QCOMPARE(manager.downloadedCount, 1);
    QVERIFY(manager.downloadQueue.isEmpty());
    QCOMPARE(manager.currentDownload, nullptr);
}

void TestDownloadManager::successToTheLetter()
{
    const ScratchFolder folder;
    HttpServer server;
    const QString path = text("my%20client.zip");
    server.serve(text("my client.zip"), Archives::zip({{text("game.exe"), "game"}}));
    Archives::provideExtractor();
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy finished(&manager, &DownloadManager::finished);
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QByteArray out;
    QByteArray err;
    {
        ConsoleCapture console;
        manager.append(QUrl(server.url(path)));
        finished.wait(30000);
        out = console.out();
        err = console.err();
    }
    const QRegularExpression expected(text("^Downloading ") +
                                      QRegularExpression::escape(server.url(path)) +
                                      text("\\.\\.\\.\n(") + text(redraw) +
                                      text(")+\nSucceeded\\.\n\n"
                                           "1/1 files downloaded successfully\n\\z"));
    QVERIFY2(expected.match(QString::fromUtf8(out)).hasMatch(), out.constData());
    QCOMPARE(err, QByteArray());
    QCOMPARE(finished.count(), 1);
    QCOMPARE(ended.count(), 1);
    QCOMPARE(server.log(), QStringList{text("/my client.zip")});
}

void TestDownloadManager::requestHasNothingOfItsOwn()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serveHeld(text("client.zip"), "body");
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    const QUrl url(server.url(text("client.zip?for=me#there")));
    manager.append(url);
    QTRY_VERIFY(manager.currentDownload != nullptr);
    const QNetworkRequest request = manager.currentDownload->request();
    QCOMPARE(request.url(), url);
    // What the toolkit sends by itself as well: see tst_networkaccess for the whole request.
    QCOMPARE(request.rawHeaderList(), QList<QByteArray>{"Accept-Encoding"});
    QVERIFY(!request.attribute(QNetworkRequest::RedirectPolicyAttribute).isValid());
    QCOMPARE(manager.currentDownload->operation(), QNetworkAccessManager::GetOperation);
}

void TestDownloadManager::oneAfterTheOther()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serveHeld(text("b.zip"), "first", 2);
    server.serve(text("a.zip"), "second");
    Archives::provideExtractorScript("append order.txt\nnote order.txt");
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy finished(&manager, &DownloadManager::finished);
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QByteArray out;
    {
        ConsoleCapture console;
        manager.append(QUrl(server.url(text("b.zip"))));
        manager.append(QUrl(server.url(text("a.zip"))));
        QTRY_COMPARE(server.requests(text("b.zip")), 1);
        server.release(text("b.zip"));
        finished.wait(30000);
        out = console.out();
    }
    QCOMPARE(server.log(), (QStringList{text("/b.zip"), text("/a.zip")}));
    QCOMPARE(ScratchFolder::read(text("order.txt")), QByteArray("first\nsecond\n"));
    QCOMPARE(finished.count(), 1);
    QCOMPARE(ended.count(), 2);
    QVERIFY2(out.endsWith("\nSucceeded.\n\n2/2 files downloaded successfully\n"), out.constData());
    QCOMPARE(out.count("files downloaded successfully"), 1);
}

void TestDownloadManager::appendWhileDownloadingWaitsItsTurn()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serveHeld(text("a.zip"), "first", 2);
    server.serve(text("b.zip"), "second");
    Archives::provideExtractorScript("append order.txt\nnote order.txt");
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy finished(&manager, &DownloadManager::finished);
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    manager.append(QUrl(server.url(text("a.zip"))));
    QTRY_COMPARE(server.requests(text("a.zip")), 1);
    const QNetworkReply *first = manager.currentDownload;

    manager.append(QUrl(server.url(text("b.zip"))));
    // Behind whatever the call has scheduled.
    bool turnIsOver = false;
    QTimer::singleShot(0, this, [&] { turnIsOver = true; });
    QTRY_VERIFY(turnIsOver);
    QCOMPARE(static_cast<const QNetworkReply *>(manager.currentDownload), first);
    QCOMPARE(manager.downloadQueue.size(), 1);
    QCOMPARE(finished.count(), 0);

    server.release(text("a.zip"));
    QVERIFY(finished.wait(30000));
    QCOMPARE(server.log(), (QStringList{text("/a.zip"), text("/b.zip")}));
    QCOMPARE(ScratchFolder::read(text("order.txt")), QByteArray("first\nsecond\n"));
    QCOMPARE(ended.count(), 2);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(manager.downloadedCount, 2);
    QCOMPARE(manager.totalCount, 2);
}

void TestDownloadManager::failureDoesNotStopTheQueue()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("good.zip"), "good");
    Archives::provideExtractorScript(recordingExtractor);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QByteArray out;
    {
        ConsoleCapture console;
        manager.append(QUrl(server.url(text("missing.zip"))));
        manager.append(QUrl(server.url(text("good.zip"))));
        runToTheEnd(manager);
        out = console.out();
    }
    QCOMPARE(ended.count(), 2);
    QVERIFY2(out.endsWith("\nSucceeded.\n\n1/2 files downloaded successfully\n"), out.constData());
    QCOMPARE(ScratchFolder::read(text("archive.seen")), QByteArray("good"));
}

void TestDownloadManager::skippedAddressDoesNotStopTheQueue()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("a.zip"), "a");
    server.serve(text("b.zip"), "b");
    MAKE_LINK(text("round.zip"), text("round.zip"));
    Archives::provideExtractorScript("append order.txt");
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QByteArray out;
    {
        ConsoleCapture console;
        manager.append(QStringList{server.url(text("a.zip")), server.url(text("round.zip")),
                                   server.url(text("b.zip"))});
        runToTheEnd(manager);
        out = console.out();
    }
    QCOMPARE(ended.count(), 2);
    QCOMPARE(server.log(), (QStringList{text("/a.zip"), text("/b.zip")}));
    QCOMPARE(ScratchFolder::read(text("order.txt")), QByteArray("ab"));
    QVERIFY2(out.endsWith("2/3 files downloaded successfully\n"), out.constData());
}

void TestDownloadManager::emptyListFinishesLater()
{
    const ScratchFolder folder;
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy finished(&manager, &DownloadManager::finished);
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QByteArray out;
    int finishedAtOnce = 0;
    {
        ConsoleCapture console;
        manager.append(QStringList());
        finishedAtOnce = finished.count();
        finished.wait(30000);
        bool turnIsOver = false;
        QTimer::singleShot(0, this, [&] { turnIsOver = true; });
        QTRY_VERIFY(turnIsOver);
        out = console.out();
    }
    QCOMPARE(finishedAtOnce, 0);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(ended.count(), 0);
    QCOMPARE(out, QByteArray());
    QCOMPARE(manager.totalCount, 0);
}

void TestDownloadManager::listOfEncodedAddresses()
{
    const ScratchFolder folder;
    HttpServer server;
    const QString beyond = QString::fromUtf8("\xD0\xB8\xD0\xB3\xD1\x80\xD0\xB0.zip");
    server.serve(text("my client.zip"), "blank");
    server.serve(beyond, "letters");
    Archives::provideExtractorScript("note order.txt {archive}");
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy finished(&manager, &DownloadManager::finished);
    QByteArray out;
    {
        ConsoleCapture console;
#ifdef Q_OS_WIN
        // The code page, which an address passes through, has no room for the letters themselves.
        const QString second = QString::fromLatin1(QUrl(server.url(beyond)).toEncoded());
#else
        const QString second = server.url(beyond);
#endif
        manager.append(QStringList{server.url(text("my%20client.zip")), second});
        QCOMPARE(manager.totalCount, 2);
        finished.wait(30000);
        out = console.out();
    }
    QCOMPARE(finished.count(), 1);
    QVERIFY2(out.contains("Downloading " + server.url().toUtf8() + "my%20client.zip...\n"),
             out.constData());
    QVERIFY2(
        out.contains("Downloading " + server.url().toUtf8() + "%D0%B8%D0%B3%D1%80%D0%B0.zip...\n"),
        out.constData());
    QCOMPARE(QString::fromUtf8(ScratchFolder::read(text("order.txt"))),
             text("my client.zip\n") + beyond + text("\n"));
}

void TestDownloadManager::idleManagerCanBeUsedAgain()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("a.zip"), "a");
    Archives::provideExtractorScript("exit 0");
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    manager.append(QUrl(server.url(text("a.zip"))));
    QVERIFY(runToTheEnd(manager));
    manager.append(QUrl(server.url(text("a.zip"))));
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(server.requests(text("a.zip")), 2);
    QCOMPARE(manager.downloadedCount, 2);
    QCOMPARE(manager.totalCount, 2);
}

void TestDownloadManager::idleManagerHoldsNoThread()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("client.zip"), "first");
    Archives::provideExtractorScript("exit 0");
    const auto download = [&server](DownloadManager &manager, const char *path) {
        manager.append(QUrl(server.url(text(path))));
        return runToTheEnd(manager);
    };
    DownloadManager first(nullptr, text("1.0"), text("Alpha/Official"));
    QVERIFY(download(first, "client.zip"));
    const int threads = Holdings::threads();
    const int descriptors = Holdings::descriptors();
    std::vector<std::unique_ptr<DownloadManager>> managers;
    for (const char *path : {"client.zip", "missing.zip", "client.zip", "missing.zip"}) {
        managers.push_back(
            std::make_unique<DownloadManager>(nullptr, text("1.0"), text("Alpha/Official")));
        QVERIFY(download(*managers.back(), path));
    }
    QTRY_VERIFY(Holdings::threads() <= threads);
    QTRY_VERIFY(Holdings::descriptors() <= descriptors);
}

void TestDownloadManager::destroyedWhileDownloading_data()
{
    QTest::addColumn<int>("sent");
    QTest::newRow("before the answer") << 0;
    QTest::newRow("in the middle of the archive") << 5000;
}

void TestDownloadManager::destroyedWhileDownloading()
{
    QFETCH(int, sent);
    const ScratchFolder folder;
    HttpServer server;
    const QByteArray body(20000, 'x');
    server.serveHeld(text("client.zip"), body, sent);
    Archives::provideExtractorScript(recordingExtractor);
    QByteArray out;
    {
        ConsoleCapture console;
        auto manager = std::make_unique<DownloadManager>(nullptr, text("1.0"), text("Alpha/Beta"));
        QSignalSpy ended(manager.get(), &DownloadManager::updateFinished);
        manager->append(QUrl(server.url(text("client.zip"))));
        manager->append(QUrl(server.url(text("second.zip"))));
        QTRY_COMPARE(server.requests(text("client.zip")), 1);
        QTRY_VERIFY(sent == 0 || (manager->output.flush() && manager->output.size() == sent));
        manager.reset();
        QCOMPARE(ended.count(), 0);
        server.release(text("client.zip"));
        bool turnIsOver = false;
        QTimer::singleShot(0, this, [&] { turnIsOver = true; });
        QTRY_VERIFY(turnIsOver);
        out = console.out();
    }
    QVERIFY2(!out.contains("files downloaded"), out.constData());
    QCOMPARE(server.requests(text("second.zip")), 0);
    // What has arrived stays; the next clean-up of archives takes it.
    QCOMPARE(ScratchFolder::tree(), (QStringList{text("client.zip"), text("unzip.exe")}));
    QCOMPARE(ScratchFolder::read(text("client.zip")), body.left(sent));
}

QTEST_MAIN(TestDownloadManager)
#include "tst_downloadmanager.moc"
