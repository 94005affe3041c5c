#include "downloads.h"
#include "install/downloadmanager.h"
#include "support/archives.h"
#include "support/consolecapture.h"
#include "support/httpserver.h"
#include "support/links.h"
#include "support/scratchfolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

namespace
{
// The paths of these arguments as the system writes them.
QString inSystemsOwnWay(const QString &arguments)
{
    return QDir::toNativeSeparators(arguments);
}
} // namespace

// What becomes of an archive that has arrived: where it is unpacked, and by which call.
class TestDownloadUnpacking : public QObject
{
    Q_OBJECT

private slots:
    void archiveIsUnpackedIntoTheVersionFolderAndRemoved();
    void withoutParentFolderTheVersionFolderLiesInTheWorkingDirectory();
    void folderOfNoPlainNameIsNotUnpackedInto_data();
    void folderOfNoPlainNameIsNotUnpackedInto();

    void movedClientIsUnpackedInto_data();
    void movedClientIsUnpackedInto();
    void linkedVersionIsNotUnpackedThrough_data();
    void linkedVersionIsNotUnpackedThrough();

    void extractorArguments_data();
    void extractorArguments();
    void extractorRunsBeforeTheEndIsReported();
    void otherDownloadOutlastsTheUnpacking();
    void noArchiveIsSilent();
    void missingExtractorLeavesTheEmptyFolder();
};

void TestDownloadUnpacking::archiveIsUnpackedIntoTheVersionFolderAndRemoved()
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

void TestDownloadUnpacking::withoutParentFolderTheVersionFolderLiesInTheWorkingDirectory()
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

void TestDownloadUnpacking::folderOfNoPlainNameIsNotUnpackedInto_data()
{
    QTest::addColumn<QString>("parent"); // %1: the folder around the installation folder
    QTest::addColumn<QString>("version");
    QTest::newRow("a version that climbs out")
        << text("Alpha/Official") << text("../../../Elsewhere");
    QTest::newRow("a parent that climbs out") << text("../Elsewhere") << text("1.0");
    QTest::newRow("an absolute parent") << text("%1/Elsewhere") << text("1.0");
    QTest::newRow("the installation folder itself") << text("Alpha") << text("..");
    QTest::newRow("neither parent nor version") << QString() << QString();
    // A folder of such a name beside the launcher would be searched for plug-ins.
    QTest::newRow("a version that is the server's folder")
        << text("imageformats/Official") << text("..");
    QTest::newRow("a version that is the client's folder") << text("Alpha/Official") << text(".");
    QTest::newRow("a version of two folders") << text("Alpha/Official") << text("1/0");
    QTest::newRow("a version with a line end") << text("Alpha/Official") << text("1.0\n");
    QTest::newRow("a version with a zero byte")
        << text("Alpha/Official") << text("1.0") + QChar(0) + text("x");
    QTest::newRow("a server of two folders") << text("A/B/Official") << text("1.0");
    QTest::newRow("a client of no name") << text("Alpha/") << text("1.0");
    QTest::newRow("a server of no name") << text("/Official") << text("1.0");
    QTest::newRow("a client that is the server's folder") << text("Alpha/.") << text("1.0");
    QTest::newRow("a server that is the installation folder") << text("./Official") << text("1.0");
#ifdef Q_OS_WIN
    QTest::newRow("a version of two folders by the system's separators")
        << text("Alpha/Official") << text("1\\0");
    QTest::newRow("a version that is a device") << text("Alpha/Official") << text("con.1");
    QTest::newRow("a version that loses its dots") << text("imageformats/Official") << text("...");
#endif
}

void TestDownloadUnpacking::folderOfNoPlainNameIsNotUnpackedInto()
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

void TestDownloadUnpacking::movedClientIsUnpackedInto_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("target");
    QTest::newRow("the server's folder") << text("Alpha") << text("../Drive/Alpha");
    QTest::newRow("the client's folder")
        << text("Alpha/Official") << text("../../Drive/Alpha/Official");
}

void TestDownloadUnpacking::movedClientIsUnpackedInto()
{
    QFETCH(QString, link);
    QFETCH(QString, target);
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("client.zip"), Archives::zip({{text("game.exe"), "game"}}));
    Archives::provideExtractor();
    ScratchFolder::makeFolder(text("../Drive/Alpha/Official"));
    ScratchFolder::makeFolder(QFileInfo(link).path());
    MAKE_LINK(target, link);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    manager.append(QUrl(server.url(text("client.zip"))));
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(ScratchFolder::read(text("../Drive/Alpha/Official/1.0/game.exe")), QByteArray("game"));
    QVERIFY(QFileInfo(link).isSymLink());
}

void TestDownloadUnpacking::linkedVersionIsNotUnpackedThrough_data()
{
    QTest::addColumn<QString>("parent");
    QTest::addColumn<QString>("target"); // %1: the folder around the installation folder
    QTest::newRow("out of the installation folder")
        << text("Alpha/Official") << text("%1/Elsewhere");
    QTest::newRow("to the folder beside the launcher's plug-ins")
        << text("Alpha/Official") << text("../../imageformats");
    QTest::newRow("to another version") << text("Alpha/Official") << text("0.9");
    QTest::newRow("to nowhere yet") << text("Alpha/Official") << text("%1/Elsewhere/new");
    QTest::newRow("to a file") << text("Alpha/Official") << text("%1/Elsewhere/letter.txt");
    QTest::newRow("of a client that was moved") << text("moved/Official") << text("%1/Elsewhere");
}

// The link goes, and the version has a folder of its own.
void TestDownloadUnpacking::linkedVersionIsNotUnpackedThrough()
{
    QFETCH(QString, parent);
    QFETCH(QString, target);
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("client.zip"), Archives::zip({{text("game.exe"), "game"}}));
    Archives::provideExtractor();
    ScratchFolder::write(text("../Elsewhere/letter.txt"), "mine");
    ScratchFolder::makeFolder(text("../Drive/Official"));
    ScratchFolder::makeFolder(text("Alpha/Official/0.9"));
    ScratchFolder::makeFolder(text("imageformats"));
    MAKE_LINK(text("../Drive"), text("moved"));
    const QString version = parent + text("/1.0");
    MAKE_LINK(target.replace(text("%1"), folder.outside()), version);
    DownloadManager manager(nullptr, text("1.0"), parent);
    manager.append(QUrl(server.url(text("client.zip"))));
    QVERIFY(runToTheEnd(manager));
    QVERIFY(!QFileInfo(version).isSymLink());
    QCOMPARE(ScratchFolder::read(version + text("/game.exe")), QByteArray("game"));
    QCOMPARE(QDir(text("../Elsewhere")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList{text("letter.txt")});
    QCOMPARE(ScratchFolder::read(text("../Elsewhere/letter.txt")), QByteArray("mine"));
    QVERIFY(QDir(text("imageformats")).isEmpty());
    QVERIFY(QDir(text("Alpha/Official/0.9")).isEmpty());
}

void TestDownloadUnpacking::extractorArguments_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("arguments"); // %1: the installation folder
    QTest::newRow("without a password")
        << QString() << text("3\n%1/a b.zip\n-d\n%1/Al pha/B/1.0\n");
    QTest::newRow("with a password")
        << text("sesame open") << text("5\n-P\nsesame open\n%1/a b.zip\n-d\n%1/Al pha/B/1.0\n");
}

void TestDownloadUnpacking::extractorArguments()
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

void TestDownloadUnpacking::extractorRunsBeforeTheEndIsReported()
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

// While one archive is unpacked nobody reads the other: its server waits, as long as it likes to.
void TestDownloadUnpacking::otherDownloadOutlastsTheUnpacking()
{
    constexpr qint64 size = 200LL * 1000 * 1000;
    const ScratchFolder folder;
    HttpServer server;
    server.serve(text("short.zip"), "short");
    server.serveLarge(text("long.zip"), size);
    Archives::provideExtractorScript("sleep 2000\nkeep kept.zip");
    DownloadManager first(nullptr, text("1"), text("Alpha/Official"));
    DownloadManager second(nullptr, text("1"), text("Beta/Official"));
    bool isUnderWay = false;
    connect(&first, &DownloadManager::updateFinished, this,
            [&] { isUnderWay = second.currentDownload != nullptr; });
    second.append(QUrl(server.url(text("long.zip"))));
    first.append(QUrl(server.url(text("short.zip"))));
    QVERIFY(runToTheEnd(second));
    QVERIFY(isUnderWay);
    QCOMPARE(second.downloadedCount, 1);
    QCOMPARE(QFileInfo(text("kept.zip")).size(), size);
}

void TestDownloadUnpacking::noArchiveIsSilent()
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
    QCOMPARE(ScratchFolder::tree(),
             (QStringList{text("Alpha/"), text("Alpha/Official/"), text("unzip.exe")}));
}

void TestDownloadUnpacking::missingExtractorLeavesTheEmptyFolder()
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

QTEST_MAIN(TestDownloadUnpacking)
#include "tst_downloadunpacking.moc"
