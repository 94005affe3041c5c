#include "check/programs.h"
#include "info/world.h"
#include "stage.h"
#include "support/relation.h"
#include "support/urlcatcher.h"

#include <QFileInfo>

namespace
{
const QString official = QStringLiteral("Official");
const QString beta = QStringLiteral("Beta");

// The beginning of a program for Windows.
QByteArray program(const QByteArray &machine, const QByteArray &flags)
{
    QByteArray bytes = "MZ" + QByteArray(0x3A, '\0') + QByteArray("\x40\0\0\0", 4);
    bytes += QByteArray("PE\0\0", 4) + machine + QByteArray(16, '\0') + flags;
    return bytes + QByteArray(200, '\0');
}
const QByteArray x64("\x64\x86", 2);
const QByteArray x86("\x4C\x01", 2);
const QByteArray arm("\x64\xAA", 2);
const QByteArray executable("\x22\x00", 2);
const QByteArray library("\x22\x20", 2);
} // namespace

// What Play makes of an archive, in the real window, beside what the checker says of it.
class TestArchiveWarnings : public QObject
{
    Q_OBJECT

private slots:
    void whatPlayStarts_data();
    void whatPlayStarts();
    void programThatIsNone_data();
    void programThatIsNone();
    void pointerInsteadOfAFile();
    void savesThatAnUpdateRemoves();
    void strayFiles();
    void longWay();
};

void TestArchiveWarnings::whatPlayStarts_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("started");
    QTest::addColumn<QByteArray>("id");
    const auto row = [](const char *name, const QString &kind, const char *files,
                        const char *started, const char *id) {
        QTest::newRow(name) << kind << QString::fromLatin1(files).split(QLatin1Char(' '))
                            << QString::fromLatin1(started) << QByteArray(id);
    };
    row("the game alone", official, "Game.exe data/x.exe", "Game.exe", "");
    row("a crash reporter behind it", official, "Game.exe UnityCrashHandler64.exe", "Game.exe", "");
    row("a crash reporter before it", official, "CrashSender1403.exe Game.exe",
        "CrashSender1403.exe", "helper-starts");
    row("small letters", official, "bugsplat.exe Game.exe", "bugsplat.exe", "helper-starts");
    row("an uninstaller before it", official, "unins000.exe zGame.exe", "unins000.exe",
        "helper-starts");
    row("an installer alone", official, "Setup.exe", "Setup.exe", "helper-starts");
    row("a copy before it", official, "Game-Copy.exe Game.exe", "Game-Copy.exe", "helper-starts");
    row("a second copy before it", official, "Game(1).exe Game.exe", "Game(1).exe",
        "helper-starts");
    row("the build before it", official, "Game.bak.exe Game.exe", "Game.bak.exe", "helper-starts");
    row("a copy alone", official, "Game(1).exe", "Game(1).exe", "");
    row("a copy behind it", official, "Game.exe Game_old.exe", "Game.exe", "");
    row("a word within its name", official, "OldWorld.exe", "OldWorld.exe", "");
    row("the launcher before it", official, "emberwake-launcher.exe Emberwake.exe",
        "emberwake-launcher.exe", "helper-starts");
    row("two that may be the game", official, "Alpha.exe Game.exe", "Alpha.exe",
        "several-programs");
    // Only Beta asks for the engine.
    row("both engines for Official", official, "Game_dx.exe Game_gl.exe", "Game_dx.exe",
        "several-programs");
    row("both engines for Beta", beta, "Game_dx.exe Game_gl.exe", "Game_gl.exe", "");
    row("two of one engine", beta, "Editor_gl.exe Game_dx.exe Game_gl.exe", "Editor_gl.exe",
        "helper-starts");
}

void TestArchiveWarnings::whatPlayStarts()
{
    QFETCH(QString, kind);
    QFETCH(QStringList, files);
    QFETCH(QString, started);
    QFETCH(QByteArray, id);
    Stage stage;
    QMap<QString, QByteArray> content;
    for (const QString &file : files) {
        content.insert(file, Stage::script);
    }
    stage.server.serve(QStringLiteral("files/client.zip"), Archives::zip(content));
    stage.server.serve(QStringLiteral("S.png"), Documents::png(4, 4, 0));
    Stage::Client entry;
    entry.kind = kind;
    QVERIFY(stage.load({stage.element(entry)}));
    QCOMPARE(stage.deepIds(), id.isEmpty() ? QStringList() : QStringList{QString::fromLatin1(id)});
    QCOMPARE(stage.started.constFirst().programs.constLast(), started);

    QCOMPARE(stage.download(), QStringLiteral("Download finished: version 1.0"));
    const UrlCatcher catcher;
    const DialogGuard closesTheQuestion;
    stage.window->on_btnPlay_clicked();
    QCOMPARE(catcher.opened.value(0).fileName(), started);
}

void TestArchiveWarnings::programThatIsNone_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("why");
    const auto row = [](const char *name, const QByteArray &content, const char *why) {
        QTest::newRow(name) << content << QString::fromLatin1(why);
    };
    row("64 bits", program(x64, executable), "");
    row("32 bits", program(x86, executable), "");
    row("a script", "#!/bin/sh\n", "");
    row("nothing", "", "is empty");
    row("a text", "the game", "is no program");
    row("a page", "\n<!DOCTYPE html>", "is a web page");
    row("of Linux",
        "\x7F"
        "ELF\x02",
        "is a program of Linux");
    row("of macOS", "\xCF\xFA\xED\xFE\x07", "is a program of macOS");
    row("a zip archive", "PK\x03\x04...", "is a zip archive");
    row("a library", program(x64, library), "is a library");
    row("another processor", program(arm, executable),
        "is for another processor (0xaa64) than players have");
    row("an object", program(x64, QByteArray(2, '\0')), "is not linked whole");
    row("of DOS", program(x64, executable).replace("PE", "NE"), "is a program of DOS");
    row("cut off", program(x64, executable).left(50), "is cut off");
}

void TestArchiveWarnings::programThatIsNone()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, why);
    Stage stage;
    stage.server.serve(QStringLiteral("files/client.zip"),
                       Archives::zip({{QStringLiteral("game.exe"), content}}));
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("S"))}));
    QCOMPARE(stage.deeplyWarnedOf("not-a-program"), !why.isEmpty());
    QCOMPARE(stage.download(), QStringLiteral("Download finished: version 1.0"));
    const UrlCatcher catcher;
    stage.window->on_btnPlay_clicked();
    const QByteArray opened = ScratchFolder::read(catcher.opened.value(0).toLocalFile());
    QCOMPARE(opened, content);
    QCOMPARE(whyNotStarted(opened), why);
}

void TestArchiveWarnings::pointerInsteadOfAFile()
{
    const QByteArray pointer = "version https://git-lfs.example/spec/v1\noid sha256:00\nsize 9\n";
    Stage stage;
    stage.server.serve(QStringLiteral("files/client.zip"),
                       Archives::zip({{QStringLiteral("game.exe"), Stage::script},
                                      {QStringLiteral("data/map.pak"), pointer}}));
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("S"))}));
    QVERIFY(stage.deeplyWarnedOf("pointer-in-archive"));
    QCOMPARE(stage.download(), QStringLiteral("Download finished: version 1.0"));
    QCOMPARE(ScratchFolder::read(QStringLiteral("S/Official/1.0/data/map.pak")), pointer);
}

void TestArchiveWarnings::savesThatAnUpdateRemoves()
{
    Stage stage;
    stage.server.serve(QStringLiteral("files/client.zip"),
                       Archives::zip({{QStringLiteral("game.exe"), Stage::script},
                                      {QStringLiteral("Saves/readme.txt"), "here"}}));
    QVERIFY(stage.load({stage.ofVersion(QStringLiteral("1.1"))}));
    QVERIFY(stage.deeplyWarnedOf("saves-in-archive"));
    Stage::install(QStringLiteral("1.0"));
    ScratchFolder::write(QStringLiteral("S/Official/1.0/Saves/hero.dat"), "a year of playing");
    QCOMPARE(stage.download(), QStringLiteral("Download finished: version 1.1"));
    QCOMPARE(ScratchFolder::tree().filter(QStringLiteral("hero.dat")), QStringList());
}

void TestArchiveWarnings::strayFiles()
{
    Stage stage;
    stage.server.serve(QStringLiteral("files/client.zip"),
                       Archives::zip({{QStringLiteral("game.exe"), Stage::script},
                                      {QStringLiteral("game.pdb"), "of the studio"}}));
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("S"))}));
    QVERIFY(stage.deeplyWarnedOf("stray-files"));
    QCOMPARE(stage.download(), QStringLiteral("Download finished: version 1.0"));
    QVERIFY(QFile::exists(QStringLiteral("S/Official/1.0/game.pdb")));
}

// What the game's folder of a player has behind it in all.
void TestArchiveWarnings::longWay()
{
#ifdef Q_OS_WIN
    QSKIP("the tool that packs it opens no such path either");
#endif
    Stage stage;
    const QString member = QStringLiteral("data/") + QString(100, QLatin1Char('d')) +
                           QLatin1Char('/') + QString(100, QLatin1Char('m'));
    stage.server.serve(
        QStringLiteral("files/client.zip"),
        Archives::zip({{QStringLiteral("game.exe"), Stage::script}, {member, "far away"}}));
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("S"))}));
    QVERIFY(stage.deeplyWarnedOf("long-path"));
    QVERIFY(!stage.warnedOf("long-path"));
    const QString usual = QStringLiteral("C:/Users/somebody/AppData/Local/Programs/"
                                         "Emberwake Online Launcher/S/Official/1.0/");
    constexpr int longestOnWindows = 259;
    VERIFY_RELATION((usual + member).size(), >, longestOnWindows);
}

QTEST_MAIN(TestArchiveWarnings)
#include "tst_archivewarnings.moc"
