#include "install/downloadmanager.h"
#include "progressdue.h"
#include "support/archives.h"
#include "support/consolecapture.h"
#include "support/holdings.h"
#include "support/httpserver.h"
#include "support/links.h"
#include "support/scratchfolder.h"

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QNetworkReply>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <memory>
#include <vector>

#ifdef Q_OS_LINUX
#include <csignal>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace
{
// One redraw of a bar whose size is known, and of the moving bar.
const char redraw[] = "\\r\\[[#> ]{50}\\] [ 0-9]{3}% [0-9a-z.]+ (bytes/sec|kB/s|MB/s)     ";
const char moving[] = "\\r\\[ *### +\\]      [0-9a-z.]+ (bytes/sec|kB/s|MB/s)      ";

QString text(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

[[maybe_unused]] QByteArray randomBytes(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator generator(20240229);
    for (char &byte : bytes) {
        byte = static_cast<char>(generator.generate() & 0xFFU);
    }
    return bytes;
}

// Notes how it is called and keeps what the archive was.
const char recordingExtractor[] = "record arguments.txt\nkeep archive.seen";

// The paths of these arguments as the system writes them.
QString inSystemsOwnWay(const QString &arguments)
{
    return QDir::toNativeSeparators(arguments);
}

// Runs the queue until it is empty; false when that takes too long.
bool runToTheEnd(DownloadManager &manager)
{
    QSignalSpy finished(&manager, &DownloadManager::finished);
    return finished.wait(30000);
}

#ifdef Q_OS_LINUX
// A value of this process's status in bytes, for example the memory it holds now (VmRSS).
qint64 processStatus(const char *name)
{
    QFile status(text("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return -1;
    }
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(name)) {
            return line.mid(line.indexOf(':') + 1).simplified().split(' ').value(0).toLongLong() *
                   1024;
        }
    }
    return -1;
}

void forgetPeakOfMemory()
{
    QFile file(text("/proc/self/clear_refs"));
    if (file.open(QIODevice::WriteOnly)) {
        file.write("5");
    }
}

// A disk that takes no more than so many bytes of one file, as long as the object lives.
class SmallDisk
{
public:
    explicit SmallDisk(rlim_t bytes)
    {
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_previous);
        rlimit limit = m_previous;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_previous);
        std::signal(SIGXFSZ, m_handler);
    }
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

private:
    rlimit m_previous{};
    void (*m_handler)(int) = nullptr;
};
#endif
} // namespace

// The queue of downloads: what is fetched when, what reaches the disk, the console and the window.
class TestDownloadManager : public QObject
{
    Q_OBJECT

private slots:
    void appendOnlyQueues();
    void successToTheLetter();
    void requestHasNothingOfItsOwn();
    void archiveIsUnpackedIntoTheVersionFolderAndRemoved();
    void withoutParentFolderTheVersionFolderLiesInTheWorkingDirectory();
    void folderThatLeadsOutIsNotUnpackedInto_data();
    void folderThatLeadsOutIsNotUnpackedInto();
    void extractorArguments_data();
    void extractorArguments();
    void extractorRunsBeforeTheEndIsReported();
    void noArchiveIsSilent();
    void missingExtractorLeavesTheEmptyFolder();
    void archiveArrivesComplete_data();
    void archiveArrivesComplete();
    void existingFileIsNotOverwritten();

    void progressSignal_data();
    void progressSignal();
    void progressOfTheFirstMillisecond();
    void percentageWhileTheAnswerIsHeld();
    void withoutLengthTheBarMoves();

    void failedDownload_data();
    void failedDownload();
    void refusedConnection();
    void brokenAddress_data();
    void brokenAddress();
    void redirectIsNotFollowed();

    void oneAfterTheOther();
    void appendWhileDownloadingWaitsItsTurn();
    void failureDoesNotStopTheQueue();
    void saveFileThatCannotBeOpened_data();
    void saveFileThatCannotBeOpened();
    void skippedAddressDoesNotStopTheQueue();
    void emptyListFinishesLater();
    void listOfEncodedAddresses();
    void idleManagerCanBeUsedAgain();
    void idleManagerHoldsNoThread();

    void aTurnTakesBytesForALimitedTime();
    void bytesThatWaitForTheirTurnAtTheEnd();
    void fullDisk_data();
    void fullDisk();
    void diskThatFillsUp_data();
    void diskThatFillsUp();
    void unwritableArchiveDoesNotSpoilTheNext();
    void memoryStaysBounded();
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
    QVERIFY(manager.currentDownload == nullptr);
    QVERIFY(!QFile::exists(text("client.zip")));
    QCOMPARE(finished.count(), 0);

    QVERIFY(finished.wait(30000));
    QCOMPARE(manager.totalCount, 2);
    QCOMPARE(manager.downloadedCount, 1);
    QVERIFY(manager.downloadQueue.isEmpty());
    QVERIFY(manager.currentDownload == nullptr);
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
    QCOMPARE(request.rawHeaderList(), QList<QByteArray>());
    QVERIFY(!request.attribute(QNetworkRequest::RedirectPolicyAttribute).isValid());
    QCOMPARE(manager.currentDownload->operation(), QNetworkAccessManager::GetOperation);
}

void TestDownloadManager::archiveIsUnpackedIntoTheVersionFolderAndRemoved()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("files/client.zip"),
                 Archives::zip({{text("game.exe"), "game"}, {text("data/map.bin"), "map"}}));
    Archives::provideExtractor();
    DownloadManager manager(nullptr, text("2.1.4"), text("Alpha/Official"));
    manager.append(QUrl(server.url(text("files/client.zip"))));
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(
        ScratchFolder::tree(),
        (QStringList{text("Alpha/"), text("Alpha/Official/"), text("Alpha/Official/2.1.4/"),
                     text("Alpha/Official/2.1.4/data/"), text("Alpha/Official/2.1.4/data/map.bin"),
                     text("Alpha/Official/2.1.4/game.exe"), text("unzip.exe")}));
    QCOMPARE(ScratchFolder::read(text("Alpha/Official/2.1.4/game.exe")), QByteArray("game"));
    QCOMPARE(manager.filename, text("client.zip"));
}

void TestDownloadManager::withoutParentFolderTheVersionFolderLiesInTheWorkingDirectory()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("client.zip"), Archives::zip({{text("game.exe"), "game"}}));
    Archives::provideExtractor();
    DownloadManager manager(nullptr, text("1.0"), QString());
    manager.append(QUrl(server.url(text("client.zip"))));
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(ScratchFolder::tree(),
             (QStringList{text("1.0/"), text("1.0/game.exe"), text("unzip.exe")}));
    QCOMPARE(folder.treeOutside(), QStringList());
}

void TestDownloadManager::folderThatLeadsOutIsNotUnpackedInto_data()
{
    QTest::addColumn<QString>("parent"); // %1: the folder around the installation folder
    QTest::addColumn<QString>("version");
    QTest::newRow("a version that climbs out")
        << text("Alpha/Official") << text("../../../Elsewhere");
    QTest::newRow("a parent that climbs out") << text("../Elsewhere") << text("1.0");
    QTest::newRow("an absolute parent") << text("%1/Elsewhere") << text("1.0");
    QTest::newRow("the installation folder itself") << text("Alpha") << text("..");
    QTest::newRow("neither parent nor version") << QString() << QString();
}

void TestDownloadManager::folderThatLeadsOutIsNotUnpackedInto()
{
    QFETCH(QString, parent);
    QFETCH(QString, version);
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("client.zip"), "archive");
    Archives::provideExtractorScript(recordingExtractor);
    DownloadManager manager(nullptr, version, parent.replace(text("%1"), folder.outside()));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    manager.append(QUrl(server.url(text("client.zip"))));
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(ended.count(), 1);
    QCOMPARE(manager.findChildren<QProcess *>().size(), 0);
    QCOMPARE(ScratchFolder::tree(), QStringList{text("unzip.exe")});
    QCOMPARE(folder.treeOutside(), QStringList());
}

void TestDownloadManager::extractorArguments_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("arguments"); // %1: the installation folder
    QTest::newRow("without a password")
        << QString() << text("3\n%1/a b.zip\n-d\n%1/Al pha/B/1.0\n");
    QTest::newRow("with a password")
        << text("sesame open") << text("5\n-P\nsesame open\n%1/a b.zip\n-d\n%1/Al pha/B/1.0\n");
}

void TestDownloadManager::extractorArguments()
{
    QFETCH(QString, password);
    QFETCH(QString, arguments);
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("a b.zip"), "archive");
    Archives::provideExtractorScript(recordingExtractor);
    DownloadManager manager(nullptr, text("1.0"), text("Al pha/B"), password);
    manager.append(QUrl(server.url(text("a%20b.zip"))));
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(QString::fromUtf8(ScratchFolder::read(text("arguments.txt"))),
             inSystemsOwnWay(arguments.arg(folder.path())));
    const QList<QProcess *> extractors = manager.findChildren<QProcess *>();
    QCOMPARE(extractors.size(), 1);
    QCOMPARE(extractors.constFirst()->parent(), static_cast<QObject *>(&manager));
    QVERIFY(!QFile::exists(text("a b.zip")));
    QVERIFY(QFileInfo(text("Al pha/B/1.0")).isDir());
}

void TestDownloadManager::extractorRunsBeforeTheEndIsReported()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("client.zip"), Archives::zip({{text("game.exe"), "game"}}));
    Archives::provideExtractor();
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QStringList seen;
    connect(&manager, &DownloadManager::updateFinished, this, [&] {
        seen << text("end") << (QFile::exists(text("client.zip")) ? text("archive") : text("none"))
             << (QFile::exists(text("Alpha/Official/1.0/game.exe")) ? text("game") : text("none"));
    });
    connect(&manager, &DownloadManager::finished, this, [&] { seen << text("empty"); });
    manager.append(QUrl(server.url(text("client.zip"))));
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(seen, (QStringList{text("end"), text("none"), text("game"), text("empty")}));
}

void TestDownloadManager::noArchiveIsSilent()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("client.zip"), "<html>no archive</html>");
    Archives::provideExtractor();
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
    QVERIFY(out.endsWith("\nSucceeded.\n\n1/1 files downloaded successfully\n"));
    QCOMPARE(err, QByteArray());
    QCOMPARE(ended.count(), 1);
    QCOMPARE(ScratchFolder::tree(), (QStringList{text("Alpha/"), text("Alpha/Official/"),
                                                 text("Alpha/Official/1.0/"), text("unzip.exe")}));
}

void TestDownloadManager::missingExtractorLeavesTheEmptyFolder()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("client.zip"), Archives::zip({{text("game.exe"), "game"}}));
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    manager.append(QUrl(server.url(text("client.zip"))));
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(manager.downloadedCount, 1);
    QCOMPARE(ScratchFolder::tree(),
             (QStringList{text("Alpha/"), text("Alpha/Official/"), text("Alpha/Official/1.0/")}));
}

void TestDownloadManager::archiveArrivesComplete_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("an empty body") << 0;
    QTest::newRow("a single byte") << 1;
    QTest::newRow("what fits into one block") << 64 * 1024;
    QTest::newRow("one byte more than a block") << 64 * 1024 + 1;
    QTest::newRow("what fits into the network's buffer") << 1024 * 1024;
    QTest::newRow("one byte more than the buffer") << 1024 * 1024 + 1;
    QTest::newRow("many times the buffer") << 23 * 1000 * 1000 + 7;
}

void TestDownloadManager::archiveArrivesComplete()
{
    QFETCH(int, size);
    const ScratchFolder folder;
    HttpServer server;
    const QByteArray body = randomBytes(size);
    server.serve(text("client.zip"), body);
    Archives::provideExtractorScript(recordingExtractor);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    manager.append(QUrl(server.url(text("client.zip"))));
    QVERIFY(runToTheEnd(manager));
    QVERIFY(QFile::exists(text("archive.seen")));
    const QByteArray seen = ScratchFolder::read(text("archive.seen"));
    QCOMPARE(seen.size(), body.size());
    QVERIFY(seen == body);
}

void TestDownloadManager::existingFileIsNotOverwritten()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("client.zip"), "new");
    ScratchFolder::write(text("client.zip"), "old");
    Archives::provideExtractorScript(recordingExtractor);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QCOMPARE(manager.saveFileName(QUrl(server.url(text("client.zip")))), text("client.zip.0.zip"));
    QCOMPARE(manager.saveFileName(QUrl(server.url(text("files/")))), text("download"));
    manager.append(QUrl(server.url(text("client.zip"))));
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(manager.filename, text("client.zip.0.zip"));
    QCOMPARE(ScratchFolder::read(text("archive.seen")), QByteArray("new"));
    QCOMPARE(ScratchFolder::read(text("client.zip")), QByteArray("old"));
    QVERIFY(!QFile::exists(text("client.zip.0.zip")));
}

void TestDownloadManager::progressSignal_data()
{
    QTest::addColumn<qint64>("received");
    QTest::addColumn<qint64>("total");
    QTest::addColumn<int>("percentage");
    QTest::addColumn<QString>("message"); // a regular expression
    QTest::addColumn<QString>("line");
    const QString speed = text("[0-9.]+ (bytes/sec|kB/s|MB/s)");
    QTest::newRow("a known size") << qint64(42) << qint64(100) << 42
                                  << text(" 42% ") + speed + text(" {5}")
                                  << text("\r\\[#{21} {29}\\]  42% ") + speed + text(" {5}");
    QTest::newRow("99 % ends in an arrow")
        << qint64(99) << qint64(100) << 99 << text(" 99% ") + speed + text(" {5}")
        << text("\r\\[#{49}>\\]  99% ") + speed + text(" {5}");
    QTest::newRow("100 % is a full bar")
        << qint64(100) << qint64(100) << 100 << text("100% ") + speed + text(" {5}")
        << text("\r\\[#{50}\\] 100% ") + speed + text(" {5}");
    QTest::newRow("an unknown size sends the moving bar")
        << qint64(5000) << qint64(-1) << 0 << text("\r\\[### {4}\\] {6}") + speed + text(" {6}")
        << text("\r\\[### {4}\\] {6}") + speed + text(" {6}");
}

void TestDownloadManager::progressSignal()
{
    QFETCH(qint64, received);
    QFETCH(qint64, total);
    QFETCH(int, percentage);
    QFETCH(QString, message);
    QFETCH(QString, line);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy progress(&manager, &DownloadManager::updateProgress);
    manager.downloadTime.start();
    QTRY_VERIFY(manager.downloadTime.elapsed() > 0);
    QByteArray out;
    {
        ConsoleCapture console;
        manager.downloadProgress(received, total);
        out = console.out();
    }
    QCOMPARE(progress.count(), 1);
    const QString sent = progress.at(0).at(0).toString();
    const auto whole = [](const QString &pattern) {
        return QRegularExpression(text("\\A") + pattern + text("\\z"));
    };
    QVERIFY2(whole(message).match(sent).hasMatch(), qPrintable(sent));
    QVERIFY2(whole(line).match(QString::fromUtf8(out)).hasMatch(), out.constData());
    QCOMPARE(progress.at(0).at(1).toInt(), percentage);
}

// As often as it takes until the signal comes before the clock has moved on.
void TestDownloadManager::progressOfTheFirstMillisecond()
{
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy progress(&manager, &DownloadManager::updateProgress);
    const auto seen = [&] {
        progress.clear();
        ConsoleCapture console;
        manager.downloadTime.start();
        manager.downloadProgress(7, 100);
        return progress.value(0).value(0).toString();
    };
    QTRY_COMPARE(seen(), text("  7% inf MB/s     "));
}

void TestDownloadManager::percentageWhileTheAnswerIsHeld()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serveHeld(text("client.zip"), QByteArray(1000, 'x'), 420);
    Archives::provideExtractorScript(recordingExtractor);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy progress(&manager, &DownloadManager::updateProgress);
    manager.append(QUrl(server.url(text("client.zip"))));
    QVERIFY(takeTimeUntilProgressIsDue(manager));
    QTRY_VERIFY(!progress.isEmpty());
    QCOMPARE(progress.last().at(1).toInt(), 42);
    QVERIFY(progress.last().at(0).toString().startsWith(text(" 42% ")));
    QVERIFY(!QFile::exists(text("Alpha")));

    server.release(text("client.zip"));
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(progress.last().at(1).toInt(), 100);
    QVERIFY(progress.last().at(0).toString().startsWith(text("100% ")));
}

void TestDownloadManager::withoutLengthTheBarMoves()
{
    const ScratchFolder folder;
    HttpServer server;
    const QByteArray body = randomBytes(8 * 1024 * 1024);
    server.serveWithoutLength(text("client.zip"), body);
    Archives::provideExtractorScript(recordingExtractor);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QStringList messages;
    QList<int> percentages;
    connect(&manager, &DownloadManager::updateProgress, this, [&](const QString &msg, int prog) {
        messages << msg;
        percentages << prog;
    });
    QByteArray out;
    {
        ConsoleCapture console;
        manager.append(QUrl(server.url(text("client.zip"))));
        // The body is larger than what is taken in unread, so it is still on its way then.
        QVERIFY(takeTimeUntilProgressIsDue(manager));
        runToTheEnd(manager);
        out = console.out();
    }
    QVERIFY(messages.size() >= 1);
    const QRegularExpression leftmost(
        text("\\A\r\\[### {4}\\] {6}[0-9.]+ (bytes/sec|kB/s|MB/s) {6}\\z"));
    QVERIFY2(leftmost.match(messages.constFirst()).hasMatch(), qPrintable(messages.constFirst()));
    QCOMPARE(percentages.constFirst(), 0);
    QVERIFY2(out.contains("...\n" + messages.constFirst().toUtf8()), out.constData());
    QVERIFY(ScratchFolder::read(text("archive.seen")) == body);
    QCOMPARE(manager.downloadedCount, 1);
}

void TestDownloadManager::failedDownload_data()
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

void TestDownloadManager::failedDownload()
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

void TestDownloadManager::refusedConnection()
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

void TestDownloadManager::brokenAddress_data()
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

void TestDownloadManager::brokenAddress()
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

void TestDownloadManager::redirectIsNotFollowed()
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

void TestDownloadManager::saveFileThatCannotBeOpened_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");
    QTest::newRow("a name longer than the disk allows")
        << QString(300, QLatin1Char('n')) + text(".zip") << text("File name too long");
    QTest::newRow("a link into a folder that does not exist")
        << text("to nowhere.zip") << text("No such file or directory");
    QTest::newRow("a link to itself")
        << text("round.zip") << text("Too many levels of symbolic links");
}

void TestDownloadManager::saveFileThatCannotBeOpened()
{
    QFETCH(QString, name);
    QFETCH(QString, reason);
    const ScratchFolder folder;
    if (QByteArray(QTest::currentDataTag()).contains("link")) {
        MAKE_LINK(text("missing/x.zip"), text("to nowhere.zip"));
        MAKE_LINK(text("round.zip"), text("round.zip"));
    }
#ifdef Q_OS_WIN
    // Each Windows says it in its own language.
    QFile probe(name);
    QVERIFY(!probe.open(QIODevice::WriteOnly));
    reason = probe.errorString();
#endif
    const QStringList before = ScratchFolder::tree();
    HttpServer server;
    const QUrl url(server.url(name));
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy finished(&manager, &DownloadManager::finished);
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QSignalSpy progress(&manager, &DownloadManager::updateProgress);
    QByteArray out;
    QByteArray err;
    {
        ConsoleCapture console;
        manager.append(url);
        finished.wait(30000);
        out = console.out();
        err = console.err();
    }
    QCOMPARE(QString::fromUtf8(err),
             text("Problem opening save file '") + name + text("' for download '") +
                 QString::fromLatin1(url.toEncoded()) + text("': ") + reason + text("\n"));
    QCOMPARE(out, QByteArray("0/1 files downloaded successfully\n"));
    QCOMPARE(finished.count(), 1);
    QCOMPARE(ended.count(), 0);
    QCOMPARE(progress.count(), 0);
    QCOMPARE(server.log(), QStringList());
    QCOMPARE(ScratchFolder::tree(), before);
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

// A fast server or a slow disk must not keep the window from painting and answering.
void TestDownloadManager::aTurnTakesBytesForALimitedTime()
{
    constexpr int held = 200 * 1000;
    const ScratchFolder folder;
    const QByteArray archive = randomBytes(held + 1);
    HttpServer server;
    server.serveHeld(text("client.zip"), archive, held);
    DownloadManager manager(nullptr, text("1.0.0"), text("Alpha/Official"));
    manager.append(QUrl(server.url(text("client.zip"))));
    QTRY_VERIFY_WITH_TIMEOUT(manager.currentDownload != nullptr, 10000);
    disconnect(manager.currentDownload, &QNetworkReply::readyRead, &manager, nullptr);
    QTRY_COMPARE_WITH_TIMEOUT(manager.currentDownload->bytesAvailable(), qint64(held), 10000);

    // This turn has lasted long enough.
    manager.m_turnTime.start();
    manager.m_turnEnd.start(0, &manager);
    while (!manager.m_turnTime.hasExpired(50)) {
        QThread::yieldCurrentThread();
    }
    manager.downloadReadyRead();
    QCOMPARE(manager.output.size(), qint64(0));
    // The next one goes on by itself.
    QTRY_COMPARE_WITH_TIMEOUT(manager.output.size(), qint64(held), 10000);
    // And nothing turns while nothing comes.
    QTRY_VERIFY_WITH_TIMEOUT(!manager.m_turnEnd.isActive(), 10000);

    server.release(text("client.zip"));
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(manager.downloadedCount, 1);
}

void TestDownloadManager::bytesThatWaitForTheirTurnAtTheEnd()
{
    const ScratchFolder folder;
    const QByteArray archive = randomBytes(300 * 1000);
    Archives::provideExtractorScript(recordingExtractor);
    HttpServer server;
    server.serve(text("client.zip"), archive);
    DownloadManager manager(nullptr, text("1.0.0"), text("Alpha/Official"));
    manager.append(QUrl(server.url(text("client.zip"))));
    QTRY_VERIFY_WITH_TIMEOUT(manager.currentDownload != nullptr, 10000);
    // Everything has come when the first bytes would be taken.
    disconnect(manager.currentDownload, &QNetworkReply::readyRead, &manager, nullptr);
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(ScratchFolder::read(text("archive.seen")), archive);
}

void TestDownloadManager::fullDisk_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("progressIsDue");
    QTest::newRow("met while a long archive arrives") << 4 * 1024 * 1024 << false;
    QTest::newRow("met when progress is just to be reported") << 4 * 1024 * 1024 << true;
    QTest::newRow("met when the last bytes leave the file's own buffer") << 2000 << false;
}

void TestDownloadManager::fullDisk()
{
#ifdef Q_OS_LINUX
    QFETCH(int, size);
    QFETCH(bool, progressIsDue);
    const ScratchFolder folder;
    HttpServer server;
    server.serveHeld(text("client.zip"), QByteArray(size, 'x'));
    Archives::provideExtractorScript(recordingExtractor);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy finished(&manager, &DownloadManager::finished);
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QByteArray out;
    QByteArray err;
    {
        ConsoleCapture console;
        manager.append(QUrl(server.url(text("client.zip"))));
        QTRY_COMPARE(server.requests(text("client.zip")), 1);
        // From now on the archive lies on the device that is always full.
        QFile full(text("/dev/full"));
        QVERIFY(full.open(QIODevice::WriteOnly));
        QVERIFY(dup2(full.handle(), manager.output.handle()) >= 0);
        if (progressIsDue) {
            QVERIFY(takeTimeUntilProgressIsDue(manager));
        }
        server.release(text("client.zip"));
        finished.wait(30000);
        out = console.out();
        err = console.err();
    }
    QCOMPARE(err, QByteArray("Failed: No space left on device\n"));
    QVERIFY2(!out.contains("Succeeded."), out.constData());
    QVERIFY2(out.endsWith("\n0/1 files downloaded successfully\n"), out.constData());
    QCOMPARE(finished.count(), 1);
    QCOMPARE(ended.count(), 1);
    QCOMPARE(manager.downloadedCount, 0);
    // No folder of the version, and the extractor did not run.
    QCOMPARE(ScratchFolder::tree(), (QStringList{text("client.zip"), text("unzip.exe")}));
#else
    QSKIP("only Linux offers a full disk to try it on");
#endif
}

void TestDownloadManager::diskThatFillsUp_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("limit");
    QTest::newRow("in the middle of a long archive") << 4 * 1024 * 1024 << 500 * 1000;
    QTest::newRow("when the last bytes leave the file's own buffer") << 12000 << 9000;
}

void TestDownloadManager::diskThatFillsUp()
{
#ifdef Q_OS_LINUX
    QFETCH(int, size);
    QFETCH(int, limit);
    const ScratchFolder folder;
    HttpServer server;
    const QByteArray body = randomBytes(size);
    server.serve(text("client.zip"), body);
    Archives::provideExtractorScript(recordingExtractor);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QByteArray out;
    QByteArray err;
    {
        ConsoleCapture console;
        const SmallDisk disk(static_cast<rlim_t>(limit));
        manager.append(QUrl(server.url(text("client.zip"))));
        runToTheEnd(manager);
        out = console.out();
        err = console.err();
    }
    QCOMPARE(err, QByteArray("Failed: File too large\n"));
    QVERIFY2(out.endsWith("\n0/1 files downloaded successfully\n"), out.constData());
    QVERIFY2(!out.contains("Succeeded."), out.constData());
    QCOMPARE(ended.count(), 1);
    QCOMPARE(ScratchFolder::tree(), (QStringList{text("client.zip"), text("unzip.exe")}));
    QCOMPARE(ScratchFolder::read(text("client.zip")), body.left(limit));
#else
    QSKIP("only Linux offers a full disk to try it on");
#endif
}

void TestDownloadManager::unwritableArchiveDoesNotSpoilTheNext()
{
#ifdef Q_OS_LINUX
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("large.zip"), QByteArray(4 * 1024 * 1024, 'x'));
    server.serve(text("small.zip"), "small");
    Archives::provideExtractorScript(recordingExtractor);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QByteArray out;
    {
        ConsoleCapture console;
        const SmallDisk disk(500 * 1000);
        manager.append(QStringList{server.url(text("large.zip")), server.url(text("small.zip"))});
        runToTheEnd(manager);
        out = console.out();
    }
    QVERIFY2(out.endsWith("\nSucceeded.\n\n1/2 files downloaded successfully\n"), out.constData());
    QCOMPARE(ScratchFolder::read(text("archive.seen")), QByteArray("small"));
#else
    QSKIP("only Linux offers a full disk to try it on");
#endif
}

void TestDownloadManager::memoryStaysBounded()
{
#ifdef Q_OS_LINUX
#if defined(__SANITIZE_ADDRESS__)
    QSKIP("the sanitizer keeps freed memory for a while, so the peak says nothing");
#endif
    constexpr qint64 size = 300LL * 1000 * 1000;
    constexpr qint64 allowed = 64LL * 1024 * 1024;
    const ScratchFolder folder;
    HttpServer server;
    server.serveLarge(text("client.zip"), size);
    Archives::provideExtractorScript("keep kept.zip");
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    forgetPeakOfMemory();
    const qint64 before = processStatus("VmRSS");
    QVERIFY(before > 0);

    // A slow disk: the launcher comes to nothing for a while, and all the time the server sends.
    // What it sends must wait in the network, not in the launcher's memory.
    bool busy = false;
    connect(&manager, &DownloadManager::updateProgress, this, [&] {
        if (busy) {
            return;
        }
        busy = true;
        QElapsedTimer waited;
        waited.start();
        while (!waited.hasExpired(1500) && processStatus("VmRSS") - before < allowed) {
        }
    });
    manager.append(QUrl(server.url(text("client.zip"))));
    QSignalSpy finished(&manager, &DownloadManager::finished);
    QVERIFY(finished.wait(90000));
    QVERIFY(busy);
    const qint64 grown = processStatus("VmHWM") - before;
    QVERIFY2(grown < allowed, qPrintable(text("%1 bytes").arg(grown)));

    QFile kept(text("kept.zip"));
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.size(), size);
    QCryptographicHash keptSum(QCryptographicHash::Sha1);
    QVERIFY(keptSum.addData(&kept));
    QCryptographicHash sum(QCryptographicHash::Sha1);
    const QByteArray block(1000 * 1000, 'e');
    for (qint64 sent = 0; sent < size; sent += block.size()) {
        sum.addData(block);
    }
    QCOMPARE(keptSum.result(), sum.result());
#else
    QSKIP("measured on Linux, where the peak can be forgotten first");
#endif
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
