#include "base/plainname.h"
#include "downloads.h"
#include "install/downloadmanager.h"
#include "support/archives.h"
#include "support/consolecapture.h"
#include "support/httpserver.h"
#include "support/scratchfolder.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#ifndef Q_OS_WIN
#include <sys/stat.h>
#endif

namespace
{
// One redraw of the moving bar.
const char moving[] = "\\r\\[ *### +\\]      [0-9a-z.]+ (bytes/sec|kB/s|MB/s)      ";
} // namespace

// Downloads that the network, the server or the address spoils.
class TestDownloadFaults : public QObject
{
    Q_OBJECT

private slots:
    void failedDownload_data();
    void failedDownload();
    void reasonOfTheHostIsNoCommand();
    void refusedConnection();
    void brokenAddress_data();
    void brokenAddress();
    void addressThatIsNotFetched_data();
    void addressThatIsNotFetched();
    void redirectIsNotFollowed();
};

void TestDownloadFaults::failedDownload_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("partial"); // what is left of the archive
    QTest::addColumn<QString>("reason");     // %1: the address
    QTest::newRow("not found") << text("missing.zip") << QByteArray()
                               << text("Error transferring %1 - server replied: Not Found");
    QTest::newRow("not found, with a page that says so")
        << text("page.zip") << QByteArray("<html>gone</html>")
        << text("Error transferring %1 - server replied: Not Found");
    QTest::newRow("the server fails")
        << text("failing.zip") << QByteArray("oops")
        << text("Error transferring %1 - server replied: Internal Server Error");
    QTest::newRow("the connection is cut")
        << text("cut.zip") << QByteArray(3000, 'c') << text("Connection closed");
}

void TestDownloadFaults::failedDownload()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, partial);
    QFETCH(QString, reason);
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("page.zip"), "<html>gone</html>", 404);
    server.serve(text("failing.zip"), "oops", 500);
    server.serveCut(text("cut.zip"), QByteArray(9000, 'c'), 3000);
    Archives::provideExtractorScript(recordingExtractor);
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
    const QString failed = text("Failed: ") + reason + text("\n");
    QCOMPARE(QString::fromUtf8(err),
             reason.contains(QLatin1Char('%')) ? failed.arg(server.url(path)) : failed);
    const QRegularExpression expected(
        text("^Downloading ") + QRegularExpression::escape(server.url(path)) +
        text("\\.\\.\\.\n((") + text(redraw) + text(")|(") + text(moving) +
        text("))*\n0/1 files downloaded successfully\n\\z"));
    QVERIFY2(expected.match(QString::fromUtf8(out)).hasMatch(), out.constData());
    QCOMPARE(finished.count(), 1);
    QCOMPARE(ended.count(), 1);
    QCOMPARE(manager.downloadedCount, 0);
    QCOMPARE(manager.totalCount, 1);
    // No folder of the version, and the extractor did not run.
    QCOMPARE(ScratchFolder::tree(), (QStringList{path, text("unzip.exe")}));
    QCOMPARE(ScratchFolder::read(path), partial);
}

// What a host calls its failure reaches the operator's terminal, which obeys control characters.
void TestDownloadFaults::reasonOfTheHostIsNoCommand()
{
    const ScratchFolder folder;
    QTcpServer host;
    connect(&host, &QTcpServer::newConnection, &host, [&host] {
        QTcpSocket *socket = host.nextPendingConnection();
        socket->write("HTTP/1.1 404 \x1B]0;pwned\x07\x1B[31mr\xC3\xA9\xC2\x9B"
                      "d\r\n"
                      "Content-Length: 0\r\nConnection: close\r\n\r\n");
        socket->disconnectFromHost();
    });
    QVERIFY(host.listen(QHostAddress::LocalHost));
    const QString url = text("http://127.0.0.1:%1/client.zip").arg(host.serverPort());
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QByteArray err;
    {
        ConsoleCapture console;
        manager.append(QUrl(url));
        runToTheEnd(manager);
        err = console.err();
    }
    QVERIFY2(err.startsWith("Failed: Error transferring "), err.constData());
    QVERIFY2(err.contains("?]0;pwned??[31mr"), err.constData());
    QVERIFY2(err.endsWith("d\n"), err.constData());
    const QString line = QString::fromUtf8(err.chopped(1));
    QVERIFY2(!holdsControlCharacter(line), err.constData());
}

void TestDownloadFaults::refusedConnection()
{
    const ScratchFolder folder;
    QString url;
    {
        const HttpServer gone;
        url = gone.url(text("client.zip"));
    }
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QByteArray out;
    QByteArray err;
    {
        ConsoleCapture console;
        manager.append(QUrl(url));
        runToTheEnd(manager);
        out = console.out();
        err = console.err();
    }
    QCOMPARE(err, QByteArray("Failed: Connection refused\n"));
    QVERIFY2(out.endsWith("\n0/1 files downloaded successfully\n"), out.constData());
    QCOMPARE(ended.count(), 1);
    QCOMPARE(ScratchFolder::tree(), QStringList{text("client.zip")});
}

void TestDownloadFaults::brokenAddress_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<QString>("name");
    QTest::newRow("no address at all")
        << QString() << text("Protocol \"\" is unknown") << text("download");
    QTest::newRow("a protocol nobody speaks")
        << text("emberwake://host/client.zip") << text("Protocol \"emberwake\" is unknown")
        << text("client.zip");
}

void TestDownloadFaults::brokenAddress()
{
    QFETCH(QString, url);
    QFETCH(QString, reason);
    QFETCH(QString, name);
    const ScratchFolder folder;
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QByteArray out;
    QByteArray err;
    {
        ConsoleCapture console;
        manager.append(QUrl(url));
        runToTheEnd(manager);
        out = console.out();
        err = console.err();
    }
    QCOMPARE(QString::fromUtf8(err), text("Failed: ") + reason + text("\n"));
    QVERIFY2(out.startsWith("Downloading " + url.toUtf8() + "...\n"), out.constData());
    QVERIFY2(out.endsWith("\n0/1 files downloaded successfully\n"), out.constData());
    QCOMPARE(ended.count(), 1);
    QCOMPARE(ScratchFolder::tree(), QStringList{name});
}

void TestDownloadFaults::addressThatIsNotFetched_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("name");
    QTest::newRow("a share") << text("file://127.0.0.1/share/client.zip") << text("client.zip");
#ifndef Q_OS_WIN
    QTest::newRow("a pipe that nobody writes to") << text("file://%1/pipe") << text("pipe.0.zip");
    QTest::newRow("a device that never ends") << text("file:///dev/zero") << text("zero");
#endif
}

void TestDownloadFaults::addressThatIsNotFetched()
{
    QFETCH(QString, url);
    QFETCH(QString, name);
    const ScratchFolder folder;
#ifndef Q_OS_WIN
    QCOMPARE(mkfifo("pipe", 0600), 0);
#endif
    if (url.contains(QLatin1Char('%'))) {
        url = url.arg(folder.path());
    }
    const QUrl address(url);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QSignalSpy finished(&manager, &DownloadManager::finished);
    QByteArray out;
    QByteArray err;
    {
        ConsoleCapture console;
        manager.append(address);
        QCOMPARE(ended.count(), 0);
        finished.wait(30000);
        out = console.out();
        err = console.err();
    }
    QCOMPARE(QString::fromUtf8(err), text("Failed: Error opening %1: not a file of this computer\n")
                                         .arg(QString::fromLatin1(address.toEncoded())));
    QCOMPARE(out,
             "Downloading " + address.toEncoded() + "...\n0/1 files downloaded successfully\n");
    QCOMPARE(ended.count(), 1);
    QCOMPARE(finished.count(), 1);
    // What a failed transfer leaves: no folder, and the empty file.
    QCOMPARE(ScratchFolder::read(name), QByteArray());
    QVERIFY2(ScratchFolder::tree().contains(name), qPrintable(ScratchFolder::tree().join(u',')));
    QVERIFY(!QFileInfo::exists(text("Alpha")));
}

void TestDownloadFaults::redirectIsNotFollowed()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("target.zip"), "the client");
    server.redirect(text("client.zip"), server.url(text("target.zip")), "moved");
    Archives::provideExtractorScript(recordingExtractor);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QByteArray out;
    QByteArray err;
    {
        ConsoleCapture console;
        manager.append(QUrl(server.url(text("client.zip"))));
        runToTheEnd(manager);
        out = console.out();
        err = console.err();
    }
    QVERIFY2(out.endsWith("\nSucceeded.\n\n1/1 files downloaded successfully\n"), out.constData());
    QCOMPARE(err, QByteArray());
    QCOMPARE(server.log(), QStringList{text("/client.zip")});
    QCOMPARE(ScratchFolder::read(text("archive.seen")), QByteArray("moved"));
    QCOMPARE(ended.count(), 1);
    QVERIFY(QFileInfo(text("Alpha/Official/1.0")).isDir());
}

QTEST_MAIN(TestDownloadFaults)
#include "tst_downloadfaults.moc"
