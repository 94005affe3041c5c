#include "downloads.h"
#include "install/downloadmanager.h"
#include "progressdue.h"
#include "support/archives.h"
#include "support/consolecapture.h"
#include "support/httpserver.h"
#include "support/links.h"
#include "support/scratchfolder.h"

#include <QFile>
#include <QSignalSpy>
#include <QTest>

#ifdef Q_OS_LINUX
#include <csignal>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace
{
#ifdef Q_OS_LINUX
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

// How an archive reaches the disk: whole, under which name, and what happens on a disk that does
// not take it.
class TestDownloadToDisk : public QObject
{
    Q_OBJECT

private slots:
    void archiveArrivesComplete_data();
    void archiveArrivesComplete();
    void existingFileIsNotOverwritten();
    void saveFileThatCannotBeOpened_data();
    void saveFileThatCannotBeOpened();
    void nameThatNothingIsSavedUnder_data();
    void nameThatNothingIsSavedUnder();
    void programThatIsThereStays();

    void fullDisk_data();
    void fullDisk();
    void diskThatFillsUp_data();
    void diskThatFillsUp();
    void unwritableArchiveDoesNotSpoilTheNext();
};

void TestDownloadToDisk::archiveArrivesComplete_data()
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

void TestDownloadToDisk::archiveArrivesComplete()
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
    QCOMPARE(seen, body);
}

void TestDownloadToDisk::existingFileIsNotOverwritten()
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

void TestDownloadToDisk::saveFileThatCannotBeOpened_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");
    QTest::newRow("a name longer than the disk allows")
        << QString(300, QLatin1Char('n')) + text(".zip") << text("File name too long");
    QTest::newRow("a link into a folder that does not exist")
        << text("to nowhere.zip") << text("The name is that of a link");
    QTest::newRow("a link to itself") << text("round.zip") << text("The name is that of a link");
    // The archive would be written where it leads.
    QTest::newRow("a link out that leads to no file")
        << text("out.zip") << text("The name is that of a link");
}

void TestDownloadToDisk::saveFileThatCannotBeOpened()
{
    QFETCH(QString, name);
    QFETCH(QString, reason);
    const ScratchFolder folder;
    if (QByteArray(QTest::currentDataTag()).contains("link")) {
        MAKE_LINK(text("missing/x.zip"), text("to nowhere.zip"));
        MAKE_LINK(text("round.zip"), text("round.zip"));
        MAKE_LINK(folder.outside() + text("/new.zip"), text("out.zip"));
    }
    const QStringList outside = folder.treeOutside();
#ifdef Q_OS_WIN
    // Each Windows says it in its own language.
    if (reason.startsWith(text("File"))) {
        QFile probe(name);
        QVERIFY(!probe.open(QIODevice::WriteOnly));
        reason = probe.errorString();
    }
#endif
    const QStringList before = ScratchFolder::tree();
    HttpServer server;
    server.serve(name, "archive");
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
    QCOMPARE(folder.treeOutside(), outside);
}

void TestDownloadToDisk::nameThatNothingIsSavedUnder_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");
    const QString control = text("Control character in the file name");
    const QString program = text("Name of a program or of a program's settings");
    // The disk knows no more of it than "unzip.exe".
    QTest::newRow("a zero byte behind a program's name")
        << text("unzip.exe%00.zip") << text("unzip.exe") + QChar(QChar::Null) + text(".zip")
        << control;
    QTest::newRow("a line end") << text("a%0Ab.zip") << text("a\nb.zip") << control;
    QTest::newRow("a library") << text("version.dll") << text("version.dll") << program;
    QTest::newRow("a program in capitals") << text("SETUP.EXE") << text("SETUP.EXE") << program;
    QTest::newRow("the toolkit's settings") << text("qt.conf") << text("qt.conf") << program;
#ifdef Q_OS_WIN
    const QString none = text("Not a file name on Windows");
    QTest::newRow("another drive") << text("D%3Ax.zip") << text("D:x.zip") << none;
    QTest::newRow("a stream") << text("unzip.exe%3Ax.zip") << text("unzip.exe:x.zip") << none;
    QTest::newRow("a device") << text("nul.zip") << text("nul.zip") << none;
#endif
}

void TestDownloadToDisk::nameThatNothingIsSavedUnder()
{
    QFETCH(QString, path);
    QFETCH(QString, name);
    QFETCH(QString, reason);
    const ScratchFolder folder;
    Archives::provideExtractorScript(recordingExtractor);
    const QByteArray extractor = ScratchFolder::read(text("unzip.exe"));
    const QStringList before = ScratchFolder::tree();
    HttpServer server;
    server.serve(text("good.zip"), "good");
    const QUrl url(server.url(path));
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QByteArray err;
    QStringList after;
    {
        ConsoleCapture console;
        manager.append(url);
        runToTheEnd(manager);
        after = ScratchFolder::tree();
        manager.append(QStringList{url.toString(QUrl::FullyEncoded), server.url(text("good.zip"))});
        runToTheEnd(manager);
        err = console.err();
    }
    const QString line = text("Problem opening save file '") + name + text("' for download '") +
                         QString::fromLatin1(url.toEncoded()) + text("': ") + reason + text("\n");
    QCOMPARE(err, (line + line).toUtf8());
    QCOMPARE(after, before);
    QCOMPARE(ScratchFolder::read(text("unzip.exe")), extractor);
    // The next address has its turn.
    QCOMPARE(server.log(), QStringList{text("/good.zip")});
    QCOMPARE(ended.count(), 1);
    QCOMPARE(ScratchFolder::read(text("archive.seen")), QByteArray("good"));
}

// The archive has a number and ".zip" behind its name then, and goes.
void TestDownloadToDisk::programThatIsThereStays()
{
    const ScratchFolder folder;
    Archives::provideExtractorScript(recordingExtractor);
    const QByteArray extractor = ScratchFolder::read(text("unzip.exe"));
    HttpServer server;
    server.serve(text("unzip.exe"), "archive");
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    manager.append(QUrl(server.url(text("unzip.exe"))));
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(manager.filename, text("unzip.exe.0.zip"));
    QCOMPARE(manager.downloadedCount, 1);
    QCOMPARE(ScratchFolder::read(text("archive.seen")), QByteArray("archive"));
    QCOMPARE(ScratchFolder::read(text("unzip.exe")), extractor);
}

void TestDownloadToDisk::fullDisk_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("progressIsDue");
    QTest::newRow("met while a long archive arrives") << 4 * 1024 * 1024 << false;
    QTest::newRow("met when progress is just to be reported") << 4 * 1024 * 1024 << true;
    QTest::newRow("met when the last bytes leave the file's own buffer") << 2000 << false;
}

void TestDownloadToDisk::fullDisk()
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

void TestDownloadToDisk::diskThatFillsUp_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("limit");
    QTest::newRow("in the middle of a long archive") << 4 * 1024 * 1024 << 500 * 1000;
    QTest::newRow("when the last bytes leave the file's own buffer") << 12000 << 9000;
}

void TestDownloadToDisk::diskThatFillsUp()
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

void TestDownloadToDisk::unwritableArchiveDoesNotSpoilTheNext()
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

QTEST_MAIN(TestDownloadToDisk)
#include "tst_downloadtodisk.moc"
