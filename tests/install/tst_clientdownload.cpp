#include "install/downloadmanager.h"
#include "installworld.h"
#include "progressdue.h"
#include "support/links.h"
#include "support/texts.h"

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QNetworkReply>
#include <QPixmap>
#include <QPointer>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <cstring>
#include <unistd.h>

namespace
{
using Texts::names;
using Texts::text;

QString sheetOf(const QString &colour)
{
    return text("color: ") + colour + text("; background-color: rgba(0,0,0,0);");
}

const char recordArguments[] = "record arguments.txt";

QByteArray gameArchive(const QString &password = {})
{
    return Archives::zip({{text("game.exe"), "game"}}, password);
}

// This program, called by an extractor script, takes a picture of the whole screen.
const char photographOption[] = "--photograph";

// The extractor script that does so.
QByteArray photographer()
{
    return "run " + QCoreApplication::applicationFilePath().toUtf8() + '\t' + photographOption +
           "\tscreen.png";
}

// The window as the photographer saw it on the screen.
QImage photograph(const QWidget &window)
{
    const QRect place(window.mapToGlobal(QPoint(0, 0)), window.size());
    const QImage screen(text("screen.png"));
    return screen.isNull() ? screen : screen.copy(place).convertToFormat(QImage::Format_RGB32);
}

// The window as it would be painted now.
QImage pictureOf(QWidget &window)
{
    return window.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

QImage partOf(const QImage &picture, const QWidget *widget)
{
    return picture.copy(QRect(widget->mapTo(widget->window(), QPoint(0, 0)), widget->size()));
}

// What the server or the extractor does, and what is seen in the end.
struct End {
    QString answer;
    QString text;
    QString colour;
    QString buttons;
    QStringList clients;
};
} // namespace

Q_DECLARE_METATYPE(End)

// Download and Update as the player sees them: texts, bar, labels, buttons and what is on the disk.
class TestClientDownload : public QObject
{
    Q_OBJECT

private slots:
    void clickStartsTheDownload_data();
    void clickStartsTheDownload();
    void progressIsShown();
    void progressOfAnUnknownSize();
    void progressSlot();
    void progressDisablesAgainWhatASelectionEnabled();
    void successfulDownload();
    void successfulUpdateLeavesOnlyTheNewVersion();
    void movedClientIsRolledBack();
    void linkedVersionDoesNotCountAsArrived();
    void howItEnds_data();
    void howItEnds();
    void refusedConnection();
    void fullDiskFails_data();
    void fullDiskFails();
    void entryOfNoPlainNameFails_data();
    void entryOfNoPlainNameFails();
    void failedUpdateRemovesTheInstalledVersion();
    void endWithoutOfferedVersion_data();
    void endWithoutOfferedVersion();
    void endUsesUpperCase();
    void skippedAddressKeepsTheDownloadingState();

    void archivesGoBeforeAndAfter();
    void folderNamedLikeTheArchive();
    void password_data();
    void password();
    void encryptedClient();

    void finalProgressIsPaintedBeforeUnpackingBlocks();
    void reportThatDoesNotMoveTheBarIsPainted();

    void managerForEveryClick();
    void earlierDownloadIsNotStopped();
    void windowThatGoesAwayMeanwhile_data();
    void windowThatGoesAwayMeanwhile();
};

void TestClientDownload::clickStartsTheDownload_data()
{
    QTest::addColumn<QString>("installed");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("buttons");
    QTest::newRow("Download, with nothing installed")
        << QString() << text("btnDownload") << text("Download-");
    QTest::newRow("Update, with another version installed")
        << text("2.0") << text("btnUpdate") << text("Update- Play_2-");
}

void TestClientDownload::clickStartsTheDownload()
{
    QFETCH(QString, installed);
    QFETCH(QString, button);
    QFETCH(QString, buttons);
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.server.serveHeld(world.archive, gameArchive());
    if (!installed.isEmpty()) {
        world.install(installed);
    }
    QVERIFY(world.start());
    QVERIFY(world.window->ui->downloadProgressBar->isHidden());
    QCOMPARE(world.window->downloadManager, nullptr);

    QCOMPARE(WindowDriver::click(*world.window, button), QString());
    QCOMPARE(world.progressText(), text("Downloading client version 2.1"));
    QVERIFY(world.window->ui->downloadProgressBar->isVisible());
    QCOMPARE(world.window->ui->downloadProgressBar->value(), 0);
    QCOMPARE(world.buttons(), buttons);
    QTRY_COMPARE(world.server.requests(world.archive), 1);
    const DownloadManager *manager = world.window->downloadManager;
    QVERIFY(manager != nullptr);
    QCOMPARE(manager->parent(), static_cast<QObject *>(world.window.get()));
    QCOMPARE(manager->clientVersion, text("2.1"));
    QCOMPARE(manager->dir, text("Alpha/Official"));
}

void TestClientDownload::progressIsShown()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.server.serveHeld(world.archive, QByteArray(1000, 'x'), 420);
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QVERIFY(takeTimeUntilProgressIsDue(*world.window->downloadManager));
    QTRY_COMPARE(world.window->ui->downloadProgressBar->value(), 42);
    QVERIFY(world.window->ui->downloadProgressBar->isVisible());
    const QRegularExpression line(
        text("\\ADownloading client version 2\\.1:  42% [0-9.]+ (bytes/sec|kB/s) {5}\\z"));
    QVERIFY2(line.match(world.progressText()).hasMatch(), qPrintable(world.progressText()));
    QCOMPARE(world.buttons(), text("Download-"));
}

void TestClientDownload::progressOfAnUnknownSize()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.server.serveWithoutLength(world.archive, QByteArray(8 * 1024 * 1024, 'x'));
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QTRY_VERIFY(world.window->downloadManager->currentDownload != nullptr);
    QStringList lines;
    QList<int> values;
    QObject::connect(world.window->downloadManager, &DownloadManager::updateProgress, this, [&] {
        lines << world.progressText();
        values << world.window->ui->downloadProgressBar->value();
    });
    QVERIFY(takeTimeUntilProgressIsDue(*world.window->downloadManager));
    QVERIFY(world.waitForTheEnd());
    QVERIFY(!lines.isEmpty());
    const QRegularExpression line(text("\\ADownloading client version 2\\.1: \r\\[### {4}\\] {6}"
                                       "[0-9.]+ (bytes/sec|kB/s|MB/s) {6}\\z"));
    QVERIFY2(line.match(lines.constFirst()).hasMatch(), qPrintable(lines.constFirst()));
    QCOMPARE(values.constFirst(), 0);
}

void TestClientDownload::progressSlot()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    QVERIFY(world.start());
    QVERIFY(world.window->ui->downloadProgressBar->isHidden());
    world.window->updateProgress(text("any message"), 77);
    QCOMPARE(world.progressText(), text("Downloading client version 2.1: any message"));
    QVERIFY(world.window->ui->downloadProgressBar->isVisible());
    QCOMPARE(world.window->ui->downloadProgressBar->value(), 77);
    QCOMPARE(world.buttons(), text("Download-"));
}

void TestClientDownload::progressDisablesAgainWhatASelectionEnabled()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.install(text("2.0"));
    world.server.serveHeld(world.archive, gameArchive());
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnUpdate")), QString());
    QCOMPARE(world.buttons(), text("Update- Play_2-"));
    world.chooseAgain();
    QCOMPARE(world.buttons(), text("Update Play_2"));
    world.window->updateProgress(QString(), 1);
    QCOMPARE(world.buttons(), text("Update- Play_2-"));
}

void TestClientDownload::successfulDownload()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.server.serveHeld(world.archive, gameArchive());
    Archives::provideExtractor();
    QVERIFY(world.start());
    QCOMPARE(world.versionText(), text("(2.1)"));
    QCOMPARE(world.versionSheet(), sheetOf(text("red")));
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QCOMPARE(world.window->installedVersion, QString());
    world.server.release(world.archive);
    QVERIFY(world.waitForTheEnd());

    QCOMPARE(world.progressText(), text("Download finished: version 2.1"));
    QCOMPARE(world.window->installedVersion, text("2.1"));
    QCOMPARE(world.window->ui->labelClient->text(), text("OFFICIAL"));
    QCOMPARE(world.versionText(), text("(2.1)"));
    QCOMPARE(world.versionSheet(), sheetOf(text("green")));
    QCOMPARE(world.buttons(), text("Play"));
    QVERIFY(!world.window->ui->btnUpdate->isEnabled());
    QVERIFY(!world.window->ui->btnDownload->isEnabled());
    QCOMPARE(InstallWorld::clients(),
             names("Alpha/Official/|Alpha/Official/2.1/|Alpha/Official/2.1/game.exe"));
    QCOMPARE(InstallWorld::archives(), QStringList());
    QCOMPARE(world.folder.treeOutside(), QStringList());
}

void TestClientDownload::successfulUpdateLeavesOnlyTheNewVersion()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.install(text("2.0"), names("game.exe|data/map.bin"));
    world.install(text("1.0"));
    ScratchFolder::write(text("Alpha/Official/notes.txt"), "mine");
    ScratchFolder::write(text("Alpha/Beta/1.0/game.exe"), "beta");
    world.server.serve(world.archive, gameArchive());
    Archives::provideExtractor();
    QVERIFY(world.start());
    QCOMPARE(world.versionText(), text("(2.0)"));
    QCOMPARE(world.versionSheet(), sheetOf(text("orange")));
    QCOMPARE(WindowDriver::click(*world.window, text("btnUpdate")), QString());
    QVERIFY(world.waitForTheEnd());

    QCOMPARE(world.progressText(), text("Download finished: version 2.1"));
    QCOMPARE(world.versionText(), text("(2.1)"));
    QCOMPARE(world.versionSheet(), sheetOf(text("green")));
    QCOMPARE(world.buttons(), text("Play"));
    QCOMPARE(InstallWorld::clients(),
             names("Alpha/Beta/|Alpha/Beta/1.0/|Alpha/Beta/1.0/game.exe|Alpha/Official/|"
                   "Alpha/Official/2.1/|Alpha/Official/2.1/game.exe|Alpha/Official/notes.txt"));
}

// The games lie on another drive, and a link stands where the server's folder was.
void TestClientDownload::movedClientIsRolledBack()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    ScratchFolder::makeFolder(text("../Drive"));
    MAKE_LINK(text("../Drive"), text("Alpha"));
    world.install(text("3.0"), names("game.exe|data/map.bin"));
    world.server.serve(world.archive, gameArchive());
    Archives::provideExtractor();
    QVERIFY(world.start());
    QCOMPARE(world.buttons(), text("Update Play_2"));
    QCOMPARE(WindowDriver::click(*world.window, text("btnUpdate")), QString());
    QVERIFY(world.waitForTheEnd());
    QCOMPARE(world.progressText(), text("Download finished: version 2.1"));
    QCOMPARE(world.buttons(), text("Play"));
    QCOMPARE(world.folder.treeOutside(), names("Drive/|Drive/Official/|Drive/Official/2.1/|"
                                               "Drive/Official/2.1/game.exe"));
}

// What lies behind the link is no version that arrived.
void TestClientDownload::linkedVersionDoesNotCountAsArrived()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    ScratchFolder::write(text("../Elsewhere/letter.txt"), "mine");
    ScratchFolder::makeFolder(text("Alpha/Official"));
    MAKE_LINK(world.folder.outside() + text("/Elsewhere"), text("Alpha/Official/2.1"));
    QVERIFY(world.start());
    world.window->on_btnDownload_clicked();
    QVERIFY(world.waitForTheEnd());
    QCOMPARE(world.progressText(), text("Download failed"));
    world.server.serve(world.archive, gameArchive());
    Archives::provideExtractor();
    world.window->on_btnDownload_clicked();
    QVERIFY(world.waitForTheEnd());
    QCOMPARE(world.progressText(), text("Download finished: version 2.1"));
    QCOMPARE(InstallWorld::clients(),
             names("Alpha/Official/|Alpha/Official/2.1/|Alpha/Official/2.1/game.exe"));
    QCOMPARE(world.folder.treeOutside(), names("Elsewhere/|Elsewhere/letter.txt"));
}

void TestClientDownload::howItEnds_data()
{
    QTest::addColumn<QString>("installed");
    QTest::addColumn<End>("end");
    const QString failed = text("Download failed");
    const QString finished = text("Download finished: version 2.1");
    const QStringList nothing = names("Alpha/Official/");
    const QStringList folder = names("Alpha/Official/|Alpha/Official/2.1/");
    const QStringList game = folder + names("Alpha/Official/2.1/game.exe");
    const auto row = [](const char *name, const char *installed, const End &end) {
        QTest::newRow(name) << text(installed) << end;
    };
    const auto failure = [&](const char *answer, const char *colour) {
        return End{text(answer), failed, text(colour), text("Download-"), nothing};
    };
    const auto success = [&](const char *answer, const char *colour, const QStringList &clients) {
        return End{text(answer), finished, text(colour), text("Play"), clients};
    };
    row("the archive is not found", "", failure("404", "red"));
    row("the server fails", "", failure("500", "red"));
    row("the connection is cut", "", failure("cut", "red"));
    // The colour tells what was there before the clean-up.
    row("an update is not found", "2.0", failure("404", "orange"));
    row("an update is cut", "2.0", failure("cut", "orange"));
    row("the offered version fails again, but its folder is there", "2.1",
        {text("404"), finished, text("green"), text("Play"), game});
    row("a client arrives", "", success("client", "green", game));
    row("an update arrives", "2.0", success("client", "green", game));
    row("a step back arrives beside the newer version", "3.0", success("client", "orange", game));
    row("a version that weighs nothing was there", "22.0", success("client", "green", game));
    // The extractor takes the folder away that was made for it.
    row("the archive is no archive", "", failure("page", "red"));
    row("the archive is empty", "", failure("nothing", "red"));
    row("the archive is cut but complete as announced", "", failure("half", "red"));
    row("a redirect is taken for the archive", "", failure("redirect", "red"));
    row("an update is no archive", "2.0", failure("page", "orange"));
    row("the offered version stays as it is when its archive is none", "2.1",
        success("page", "green", game));
    row("the extractor is missing", "", success("no extractor", "green", folder));
    row("the extractor fails", "", success("bad extractor", "green", folder));
    row("an update meets a missing extractor", "2.0", success("no extractor", "green", folder));
}

void TestClientDownload::howItEnds()
{
    QFETCH(QString, installed);
    QFETCH(End, end);
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.server.serve(text("elsewhere.zip"), gameArchive());
    const QByteArray archive =
        Archives::zip({{text("game.exe"), QByteArray(3000, 'g')}, {text("map"), "m"}});
    if (end.answer == text("500")) {
        world.server.serve(world.archive, gameArchive(), 500);
    } else if (end.answer == text("cut")) {
        world.server.serveCut(world.archive, archive, archive.size() - 1);
    } else if (end.answer == text("page")) {
        world.server.serve(world.archive, "<html>please log in</html>");
    } else if (end.answer == text("nothing")) {
        world.server.serve(world.archive, QByteArray());
    } else if (end.answer == text("half")) {
        world.server.serve(world.archive, archive.left(40));
    } else if (end.answer == text("redirect")) {
        world.server.redirect(world.archive, world.server.url(text("elsewhere.zip")), "moved");
    } else if (end.answer != text("404")) {
        world.server.serve(world.archive, gameArchive());
    }
    if (end.answer == text("bad extractor")) {
        Archives::provideExtractorScript("kill");
    } else if (end.answer != text("no extractor")) {
        Archives::provideExtractor();
    }
    if (!installed.isEmpty()) {
        world.install(installed);
    }
    QVERIFY(world.start());
    const QString before = world.buttons();
    if (before == text("Play")) {
        // Neither button is shown to a player who has the offered version; the rule holds for it.
        world.window->on_btnDownload_clicked();
    } else {
        const QString button =
            before.startsWith(text("Update")) ? text("btnUpdate") : text("btnDownload");
        QCOMPARE(WindowDriver::click(*world.window, button), QString());
    }
    QVERIFY(world.waitForTheEnd());

    QCOMPARE(world.progressText(), end.text);
    QCOMPARE(world.window->ui->labelClient->text(), text("OFFICIAL"));
    QCOMPARE(world.versionText(), text("(2.1)"));
    QCOMPARE(world.versionSheet(), sheetOf(end.colour));
    QCOMPARE(world.buttons(), end.buttons);
    QCOMPARE(InstallWorld::clients(), end.clients);
    QCOMPARE(InstallWorld::archives(), QStringList());
    QCOMPARE(world.folder.treeOutside(), QStringList());
    QCOMPARE(world.server.requests(text("elsewhere.zip")), 0);
}

void TestClientDownload::refusedConnection()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    QVERIFY(world.start());
    world.window->selectedClientInfo.url = text("http://127.0.0.1:9/client.zip");
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QVERIFY(world.waitForTheEnd());
    QCOMPARE(world.progressText(), text("Download failed"));
    QCOMPARE(world.buttons(), text("Download-"));
    QCOMPARE(InstallWorld::clients(), names("Alpha/Official/"));
    QCOMPARE(InstallWorld::archives(), QStringList());
}

void TestClientDownload::fullDiskFails_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("met when the last bytes are written") << 2000;
    QTest::newRow("met in the middle, when progress is just to be reported") << 4 * 1024 * 1024;
}

void TestClientDownload::fullDiskFails()
{
#ifdef Q_OS_LINUX
    QFETCH(int, size);
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.server.serveHeld(world.archive, QByteArray(size, 'x'));
    Archives::provideExtractor();
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QTRY_COMPARE(world.server.requests(world.archive), 1);
    DownloadManager &manager = *world.window->downloadManager;
    QFile full(text("/dev/full"));
    QVERIFY(full.open(QIODevice::WriteOnly));
    QVERIFY(dup2(full.handle(), manager.output.handle()) >= 0);
    QVERIFY(takeTimeUntilProgressIsDue(manager));
    QSignalSpy finished(&manager, &DownloadManager::finished);
    world.server.release(world.archive);
    QVERIFY(finished.wait(30000));
    QCOMPARE(world.progressText(), text("Download failed"));
    QVERIFY(world.window->ui->downloadProgressBar->isHidden());
    QCOMPARE(world.versionSheet(), sheetOf(text("red")));
    QCOMPARE(world.buttons(), text("Download-"));
    QCOMPARE(InstallWorld::clients(), names("Alpha/Official/"));
    QCOMPARE(InstallWorld::archives(), QStringList());
#else
    QSKIP("only Linux offers a full disk to try it on");
#endif
}

void TestClientDownload::entryOfNoPlainNameFails_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("version");
    const auto row = [](const char *name, const char *server, const char *kind,
                        const char *version) {
        QTest::newRow(name) << text(server) << text(kind) << text(version);
    };
    row("a version that leads out", "Alpha", "Official", "../../../evil");
    // Plug-ins in a folder of this name beside the launcher would be loaded at the next start.
    row("a version that is the server's folder", "imageformats", "Official", "..");
    row("a version that is the client's folder", "Alpha", "Official", ".");
    row("a version of two folders", "Alpha", "Official", "1/0");
    row("a kind that is the server's folder", "Alpha", ".", "2.1");
    row("a kind that is the installation folder", "Alpha", "..", "2.1");
    row("a kind of two folders", "Alpha", "a/b", "2.1");
    row("a server of two folders", "A/B", "Official", "2.1");
    row("a server that is the folder above", "..", "Official", "2.1");
    row("a server that is the installation folder", ".", "Official", "2.1");
}

// The transfer goes as any other, and is told on the console as any other.
void TestClientDownload::entryOfNoPlainNameFails()
{
    QFETCH(QString, server);
    QFETCH(QString, kind);
    QFETCH(QString, version);
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.server.serve(world.archive, gameArchive());
    Archives::provideExtractor();
    QVERIFY(world.start());
    ScratchFolder::makeFolder(text("A/B"));
    const auto folders = [] {
        return ScratchFolder::tree().filter(QRegularExpression(text("/$")));
    };
    const QStringList before = folders();
    world.window->clientInfos[server][kind] =
        ClientInfo(version, world.server.url(world.archive), kind, server);
    world.window->onServerSelect(server + QLatin1Char('|') + kind);
    QCOMPARE(folders(), before);
    QCOMPARE(world.buttons(), text("Download"));
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QVERIFY(world.waitForTheEnd());
    QCOMPARE(world.progressText(), text("Download failed"));
    QCOMPARE(folders(), before);
    QCOMPARE(ScratchFolder::tree().filter(text("game.exe")), QStringList());
    QCOMPARE(InstallWorld::archives(), QStringList());
    QCOMPARE(world.folder.treeOutside(), QStringList());
}

void TestClientDownload::failedUpdateRemovesTheInstalledVersion()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.install(text("2.0"));
    ScratchFolder::write(text("Alpha/Official/notes.txt"), "mine");
    QVERIFY(world.start());
    QCOMPARE(world.buttons(), text("Update Play_2"));
    QCOMPARE(WindowDriver::click(*world.window, text("btnUpdate")), QString());
    QVERIFY(world.waitForTheEnd());
    QCOMPARE(world.progressText(), text("Download failed"));
    QCOMPARE(InstallWorld::clients(), names("Alpha/Official/|Alpha/Official/notes.txt"));
    QCOMPARE(world.versionText(), text("(2.1)"));
    QCOMPARE(world.versionSheet(), sheetOf(text("orange")));
    QCOMPARE(world.buttons(), text("Download-"));
    QVERIFY(!WindowDriver::click(*world.window, text("btnDownload")).isEmpty());

    world.chooseAgain();
    QCOMPARE(world.buttons(), text("Download"));
    QCOMPARE(world.versionSheet(), sheetOf(text("red")));
    QCOMPARE(world.progressText(), QString());
    world.server.serve(world.archive, gameArchive());
    Archives::provideExtractor();
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QVERIFY(world.waitForTheEnd());
    QCOMPARE(world.buttons(), text("Play"));
}

void TestClientDownload::endWithoutOfferedVersion_data()
{
    QTest::addColumn<QString>("installed");
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("colour");
    QTest::newRow("with something installed") << text("2.0") << text("(2.0)") << text("orange");
    QTest::newRow("with nothing installed") << QString() << text("()") << text("red");
}

// Every folder is an older version then, and the parent folder stands for the client's.
void TestClientDownload::endWithoutOfferedVersion()
{
    QFETCH(QString, installed);
    QFETCH(QString, version);
    QFETCH(QString, colour);
    InstallWorld world;
    world.offer(text("Official"), QString());
    if (!installed.isEmpty()) {
        world.install(installed);
    }
    QVERIFY(world.start());
    world.window->updateFinished();
    QCOMPARE(world.progressText(), text("Download finished: version "));
    QCOMPARE(world.versionText(), version);
    QCOMPARE(world.versionSheet(), sheetOf(colour));
    QCOMPARE(InstallWorld::clients(), names("Alpha/Official/"));
    QCOMPARE(world.buttons(), text("Download-"));
}

void TestClientDownload::endUsesUpperCase()
{
    InstallWorld world;
    world.offer(text("Test \xC3\xA4"), text("2.1"));
    QVERIFY(world.start());
    world.window->ui->labelClient->clear();
    world.window->updateFinished();
    QCOMPARE(world.window->ui->labelClient->text(), text("TEST \xC3\x84"));
}

void TestClientDownload::skippedAddressKeepsTheDownloadingState()
{
    InstallWorld world;
    world.archive = text("files/") + QString(300, QLatin1Char('n')) + text(".zip");
    world.offer(text("Official"), text("2.1"));
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QTRY_VERIFY(world.window->downloadManager->downloadQueue.isEmpty());
    QCOMPARE(world.server.requests(world.archive), 0);
    QCOMPARE(world.progressText(), text("Downloading client version 2.1"));
    QVERIFY(world.window->ui->downloadProgressBar->isVisible());
    QCOMPARE(world.buttons(), text("Download-"));

    world.chooseAgain();
    QCOMPARE(world.buttons(), text("Download"));
    QCOMPARE(world.progressText(), QString());
}

void TestClientDownload::archivesGoBeforeAndAfter()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.server.serveHeld(world.archive, gameArchive(), 10);
    Archives::provideExtractorScript(recordArguments);
    ScratchFolder::write(text("client.zip"), "stale");
    ScratchFolder::write(text("client.zip.0.zip"), "stale");
    ScratchFolder::write(text("OTHER.ZIP"), "stale");
    ScratchFolder::write(text("x.zip/inner.zip"), "mine");
    ScratchFolder::write(text("notes.txt"), "mine");
    QVERIFY(world.start());
    QCOMPARE(InstallWorld::archives(), names("client.zip|client.zip.0.zip|x.zip/"));
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QTRY_COMPARE(world.server.requests(world.archive), 1);
    // The name is free again, and the new archive has it.
    QCOMPARE(InstallWorld::archives(), names("client.zip|x.zip/"));

    ScratchFolder::write(text("stray.zip"), "left behind by somebody");
    world.server.release(world.archive);
    QVERIFY(world.waitForTheEnd());
    QCOMPARE(InstallWorld::archives(), names("x.zip/"));
    QVERIFY(!QFile::exists(text("OTHER.ZIP")));
    QCOMPARE(ScratchFolder::read(text("x.zip/inner.zip")), QByteArray("mine"));
    QCOMPARE(ScratchFolder::read(text("notes.txt")), QByteArray("mine"));
    QCOMPARE(QString::fromUtf8(ScratchFolder::read(text("arguments.txt"))),
             QDir::toNativeSeparators(
                 text("3\n%1/client.zip\n-d\n%1/Alpha/Official/2.1\n").arg(world.folder.path())));
}

void TestClientDownload::folderNamedLikeTheArchive()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.server.serve(world.archive, gameArchive());
    Archives::provideExtractor();
    ScratchFolder::write(text("client.zip/mine.txt"), "mine");
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QVERIFY(world.waitForTheEnd());
    QCOMPARE(world.progressText(), text("Download finished: version 2.1"));
    QCOMPARE(ScratchFolder::read(text("Alpha/Official/2.1/game.exe")), QByteArray("game"));
    QCOMPARE(InstallWorld::archives(), names("client.zip/"));
    QCOMPARE(ScratchFolder::read(text("client.zip/mine.txt")), QByteArray("mine"));
}

void TestClientDownload::password_data()
{
    QTest::addColumn<QString>("lock");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("arguments"); // %1: the installation folder
    const QString open = text("3\n%1/client.zip\n-d\n%1/Alpha/Beta/2.1\n");
    QTest::newRow("a locked entry gets the code as it was typed")
        << text("open sesame") << text("open sesame")
        << text("5\n-P\nopen sesame\n") + open.section(QLatin1Char('\n'), 1);
    QTest::newRow("an open entry gets none, although a code was typed")
        << QString() << text("open sesame") << open;
    QTest::newRow("an open entry gets none") << QString() << QString() << open;
}

void TestClientDownload::password()
{
    QFETCH(QString, lock);
    QFETCH(QString, typed);
    QFETCH(QString, arguments);
    InstallWorld world;
    world.typedCode = typed;
    world.offer(text("Beta"), text("2.1"), lock);
    world.server.serve(world.archive, gameArchive());
    Archives::provideExtractorScript(recordArguments);
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QVERIFY(world.waitForTheEnd());
    QCOMPARE(QString::fromUtf8(ScratchFolder::read(text("arguments.txt"))),
             QDir::toNativeSeparators(arguments.arg(world.folder.path())));
}

void TestClientDownload::encryptedClient()
{
    InstallWorld world;
    world.typedCode = text("open sesame");
    world.offer(text("Beta"), text("2.1"), text("open sesame"));
    world.server.serve(world.archive, gameArchive(text("open sesame")));
    Archives::provideExtractor();
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QVERIFY(world.waitForTheEnd());
    QCOMPARE(ScratchFolder::read(text("Alpha/Beta/2.1/game.exe")), QByteArray("game"));
    QCOMPARE(world.buttons(), text("Play"));
}

void TestClientDownload::finalProgressIsPaintedBeforeUnpackingBlocks()
{
#ifdef Q_OS_WIN
    QSKIP("no program sees another one's windows on Wine");
#endif
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.server.serveHeld(world.archive, QByteArray(1000, 'x'), 420);
    Archives::provideExtractorScript(photographer());
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QVERIFY(takeTimeUntilProgressIsDue(*world.window->downloadManager));
    QTRY_COMPARE(world.window->ui->downloadProgressBar->value(), 42);
    const QImage before = pictureOf(*world.window);

    // How the window looks, or would when it came to painting, at the last report.
    QImage wanted;
    QString line;
    QObject::connect(world.window->downloadManager, &DownloadManager::updateProgress, this, [&] {
        line = world.progressText();
        wanted = pictureOf(*world.window);
    });
    world.server.release(world.archive);
    QVERIFY(world.waitForTheEnd());
    QVERIFY2(line.startsWith(text("Downloading client version 2.1: 100% ")), qPrintable(line));

    const QImage seen = photograph(*world.window);
    QVERIFY(!seen.isNull());
    const auto *ui = world.window->ui;
    const QWidget *const widgets[] = {ui->downloadProgressBar, ui->downloadProgressText};
    for (const QWidget *widget : widgets) {
        QVERIFY(partOf(wanted, widget) != partOf(before, widget));
        QCOMPARE(partOf(seen, widget), partOf(wanted, widget));
    }
}

// A bar that stays where it is does not come to painting by itself.
void TestClientDownload::reportThatDoesNotMoveTheBarIsPainted()
{
#ifdef Q_OS_WIN
    QSKIP("no program sees another one's windows on Wine");
#endif
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    Archives::provideExtractorScript(photographer());
    QVERIFY(world.start());
    world.window->updateProgress(text("first"), 50);
    world.chooseAgain();
    world.window->repaint();
    const QImage before = pictureOf(*world.window);

    world.window->updateProgress(text("last"), 50);
    QVERIFY(testform::unzip2Folder(text("client.zip"), text("out")));
    const QImage wanted = pictureOf(*world.window);
    const QImage seen = photograph(*world.window);
    QVERIFY(!seen.isNull());
    const auto *ui = world.window->ui;
    const QWidget *const widgets[] = {ui->downloadProgressText, ui->btnDownload};
    for (const QWidget *widget : widgets) {
        QVERIFY(partOf(wanted, widget) != partOf(before, widget));
        QCOMPARE(partOf(seen, widget), partOf(wanted, widget));
    }
    QCOMPARE(partOf(seen, ui->downloadProgressBar), partOf(before, ui->downloadProgressBar));
}

void TestClientDownload::managerForEveryClick()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    const QPointer<DownloadManager> first = world.window->downloadManager;
    QVERIFY(world.waitForTheEnd());
    QCOMPARE(world.progressText(), text("Download failed"));
    world.chooseAgain();
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    const QPointer<DownloadManager> second = world.window->downloadManager;
    QVERIFY(world.waitForTheEnd());
    QVERIFY(!first.isNull());
    QVERIFY(first != second);
    QCOMPARE(world.window->findChildren<DownloadManager *>().size(), 2);
    QCOMPARE(world.server.requests(world.archive), 2);
    QCOMPARE(second->totalCount, 1);
    world.window.reset();
    QVERIFY(first.isNull());
    QVERIFY(second.isNull());
}

void TestClientDownload::earlierDownloadIsNotStopped()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.server.serveHeld(world.archive, gameArchive(), 10);
    Archives::provideExtractor();
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    const QPointer<DownloadManager> first = world.window->downloadManager;
    QTRY_COMPARE(world.server.requests(world.archive), 1);
    world.chooseAgain();
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    const QPointer<DownloadManager> second = world.window->downloadManager;
    QTRY_COMPARE(world.server.requests(world.archive), 2);
    QVERIFY(first != second);
    QVERIFY(first->currentDownload != nullptr);
    QVERIFY(first->currentDownload->isRunning());

    QSignalSpy firstEnded(first.data(), &DownloadManager::finished);
    QSignalSpy secondEnded(second.data(), &DownloadManager::finished);
    world.server.release(world.archive);
    QTRY_COMPARE(firstEnded.count(), 1);
    QTRY_COMPARE(secondEnded.count(), 1);
    QVERIFY(!first.isNull());
    QCOMPARE(first->downloadedCount, 1);
    QCOMPARE(second->downloadedCount, 1);
    QCOMPARE(InstallWorld::archives(), QStringList());
}

void TestClientDownload::windowThatGoesAwayMeanwhile_data()
{
    QTest::addColumn<int>("sent");
    QTest::newRow("before the answer") << 0;
    QTest::newRow("in the middle of the archive") << 5000;
}

void TestClientDownload::windowThatGoesAwayMeanwhile()
{
    QFETCH(int, sent);
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    const QByteArray body(20000, 'x');
    world.server.serveHeld(world.archive, body, sent);
    Archives::provideExtractorScript(recordArguments);
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QTRY_COMPARE(world.server.requests(world.archive), 1);
    DownloadManager *manager = world.window->downloadManager;
    if (sent > 0) {
        QTRY_COMPARE(manager->output.flush() ? manager->output.size() : -1, qint64(sent));
    }
    QVERIFY(world.window->close());
    const QPointer<DownloadManager> watched = manager;
    world.window.reset();
    QVERIFY(watched.isNull());
    world.server.release(world.archive);
    bool turnIsOver = false;
    QTimer::singleShot(0, this, [&] { turnIsOver = true; });
    QTRY_VERIFY(turnIsOver);
    QVERIFY(!QFile::exists(text("arguments.txt")));
    QCOMPARE(InstallWorld::clients(), names("Alpha/Official/"));
    QCOMPARE(ScratchFolder::read(text("client.zip")), body.left(sent));
}

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    if (argc == 3 && std::strcmp(argv[1], photographOption) == 0) {
        const QPixmap screen = QGuiApplication::primaryScreen()->grabWindow(0);
        return screen.save(QFile::decodeName(argv[2])) ? 0 : 1;
    }
    TestClientDownload test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_clientdownload.moc"
