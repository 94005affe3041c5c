#include "extract/extractor.h"
#include "extract/zipbuilder.h"
#include "support/scratchfolder.h"
#include "support/texts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

using Extractor::beside;
using Extractor::Ended;
using Extractor::gameArchive;
using Extractor::run;
using Extractor::target;
using Extractor::unpack;
using Texts::names;
using Texts::text;

namespace
{
// What the folder held before, and what it holds when unpacking into it has failed.
struct Before {
    const char *what;
    const char *files;  // made before, by "|"
    bool folder;        // whether the folder itself is made
    const char *beside; // names beside it afterwards
};
} // namespace

// The program itself, as the launcher calls it.
class TestUnzip : public QObject
{
    Q_OBJECT

private slots:
    void usage_data();
    void usage();
    void optionsOfTheEnvironment();
    void unpacks_data();
    void unpacks();
    void failureLeavesNothing_data();
    void failureLeavesNothing();
    void failureIsOneLine();
#ifndef Q_OS_WIN
    void notAsked();
#endif
};

void TestUnzip::usage_data()
{
    QTest::addColumn<QStringList>("arguments");
    const auto row = [](const char *list) { QTest::newRow(list) << names(list); };
    row("");
    row("a.zip");
    row("a.zip|-d");
    row("-d|out");
    row("a.zip|out");
    row("-d|out|a.zip");
    row("a.zip|-d|out|more");
    row("-o|a.zip|-d|out");
    row("-P|sesame|a.zip");
    row("-P|a.zip|-d|out");
    row("a.zip|-d|out|-P|sesame");
    row("-p|sesame|a.zip|-d|out");
    row("--help");
    QTest::newRow("no archive") << QStringList{text(""), text("-d"), text("out")};
    QTest::newRow("no folder") << QStringList{text("a.zip"), text("-d"), text("")};
}

void TestUnzip::usage()
{
    QFETCH(QStringList, arguments);
    const ScratchFolder scratch;
    ScratchFolder::write(text("a.zip"), gameArchive());
    const Ended ended = run(arguments);
    QCOMPARE(ended.code, 64);
    QCOMPARE(ended.error, QByteArray("usage: unzip.exe [-P PASSWORD] ARCHIVE -d FOLDER\n"));
    QCOMPARE(ScratchFolder::tree(), names("a.zip"));
}

void TestUnzip::optionsOfTheEnvironment()
{
    const ScratchFolder scratch;
    for (const char *name : {"UNZIP", "UNZIPOPT", "UNZIP_OPTS"}) {
        qputenv(name, "-l");
    }
    QCOMPARE(unpack(gameArchive(), target).code, 0);
    for (const char *name : {"UNZIP", "UNZIPOPT", "UNZIP_OPTS"}) {
        qunsetenv(name);
    }
    // A name is a name, whatever another program would take it for.
    ScratchFolder::write(text("[a]-x.zip"), gameArchive());
    QCOMPARE(run({text("[a]-x.zip"), text("-d"), text("[b]")}).code, 0);
    QVERIFY(QFile::exists(text("[b]/game.exe")));
    QCOMPARE(run({text("*.zip"), text("-d"), text("c")}).code, 1);
}

void TestUnzip::unpacks_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("made");
    QTest::newRow("nothing is there") << target << false;
    QTest::newRow("the folder is there") << target << true;
    QTest::newRow("one level") << text("out") << false;
    QTest::newRow("with a slash behind it") << text("out/") << true;
    QTest::newRow("from the folder itself") << text("./out") << false;
    QTest::newRow("by a way around") << text("a/../out") << false;
    QTest::newRow("letters beyond Latin-1") << text("A \xD0\x91/\xF0\x9F\x94\xA5") << false;
    QTest::newRow("an absolute way") << QDir::tempPath() + text("/emberwake-tst-%1/out") << true;
}

void TestUnzip::unpacks()
{
    QFETCH(QString, folder);
    QFETCH(bool, made);
    const ScratchFolder scratch;
    if (folder.contains(QLatin1String("%1"))) {
        folder = scratch.path() + text("/out");
    }
    if (folder.startsWith(QLatin1String("a/"))) {
        ScratchFolder::makeFolder(text("a"));
    }
    if (made) {
        ScratchFolder::makeFolder(folder);
    }
    const Ended ended = unpack(gameArchive(), QDir::toNativeSeparators(folder));
    QCOMPARE(ended.error, QByteArray());
    QCOMPARE(ended.code, 0);
    QCOMPARE(ended.out, QByteArray());
    QCOMPARE(ScratchFolder::read(folder + text("/game.exe")), QByteArray(3000, 'g'));
    QCOMPARE(ScratchFolder::read(folder + text("/data/map.bin")), QByteArray("map"));
    QVERIFY(QFileInfo(folder + text("/empty")).isDir());
    QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             names("data|empty|game.exe"));
    QCOMPARE(scratch.treeOutside(), QStringList());
    QVERIFY(ScratchFolder::tree().filter(text(".unzip")).isEmpty());
}

void TestUnzip::failureLeavesNothing_data()
{
    QTest::addColumn<QByteArray>("archive");
    QTest::addColumn<QString>("password");
    ZipEntry wrong("b", "content");
    wrong.crc = 1;
    ZipEntry locked("b", QByteArray(50, 'l'));
    locked.flags = 1;
    const ZipEntry good("a", "good");
    QTest::newRow("no archive at all") << QByteArray() << QString();
    QTest::newRow("a web page") << QByteArray("<html>not found</html>") << QString();
    QTest::newRow("no members") << ZipBuilder{}.bytes() << QString();
    QTest::newRow("cut short") << gameArchive().chopped(5) << QString();
    QTest::newRow("a refused name") << ZipBuilder{good, {"../b", ""}}.bytes() << QString();
    QTest::newRow("a wrong sum") << ZipBuilder{good, wrong}.bytes() << QString();
    QTest::newRow("no password") << ZipBuilder{good, locked}.bytes() << QString();
    QTest::newRow("a wrong password") << ZipBuilder{good, locked}.bytes() << text("barley");
}

void TestUnzip::failureLeavesNothing()
{
    QFETCH(QByteArray, archive);
    QFETCH(QString, password);
    for (const Before &before :
         {Before{"absent", "Alpha/Official/note.txt", false, "note.txt"},
          Before{"empty", "Alpha/Official/note.txt", true, "note.txt"},
          Before{"with files", "Alpha/Official/1.0/a|Alpha/Official/1.0/old", true, "1.0"}}) {
        const ScratchFolder scratch;
        for (const QString &file : names(before.files)) {
            ScratchFolder::write(file, "old");
        }
        if (before.folder) {
            ScratchFolder::makeFolder(target);
        }
        const Ended ended = unpack(archive, target, password);
        QCOMPARE(ended.code, 1);
        QVERIFY(ended.error.startsWith("unzip.exe: a.zip: "));
        QCOMPARE(ended.error.count('\n'), 1);
        QCOMPARE(beside(target), names(before.beside));
        for (const QString &file : names(before.files)) {
            QCOMPARE(ScratchFolder::read(file), QByteArray("old"));
        }
    }
    // What had to be made around it is gone as well.
    const ScratchFolder scratch;
    QCOMPARE(unpack(archive, target, password).code, 1);
    QCOMPARE(ScratchFolder::tree(), names("a.zip"));
}

void TestUnzip::failureIsOneLine()
{
    const ScratchFolder scratch;
    QCOMPARE(unpack(ZipBuilder{{"x\ny", ""}}.bytes(), target).error,
             QByteArray("unzip.exe: a.zip: x?y: its name holds a control character\n"));
    QCOMPARE(run({text("none.zip"), text("-d"), target}).code, 1);
    const Ended folder = run({text("."), text("-d"), target});
    QCOMPARE(folder.code, 1);
    QCOMPARE(folder.error.count('\n'), 1);
}

#ifndef Q_OS_WIN
// Neither its input nor a terminal is asked: with an input that never ends it ends.
void TestUnzip::notAsked()
{
    const ScratchFolder scratch;
    ScratchFolder::write(text("a.zip"), ScratchFolder::read(text(":/archives/zipcrypto.zip")));
    ScratchFolder::write(target + text("/small.txt"), "old");
    QProcess process;
    process.start(Extractor::program(), {text("a.zip"), text("-d"), target});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 1);
    QVERIFY(process.readAllStandardOutput().isEmpty());
}
#endif

QTEST_GUILESS_MAIN(TestUnzip)
#include "tst_unzip.moc"
