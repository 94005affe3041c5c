#include "extract/extractor.h"
#include "extract/zipbuilder.h"
#include "support/scratchfolder.h"
#include "support/texts.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStorageInfo>
#include <QTest>

using Extractor::Ended;
using Extractor::run;
using Extractor::unpack;
using Texts::names;
using Texts::text;
using ZipBytes::field;
using ZipBytes::number;

namespace
{
const QString target = QStringLiteral("Alpha/Official/1.0");

QByteArray gameArchive()
{
    return ZipBuilder{ZipEntry::deflated("game.exe", QByteArray(3000, 'g')),
                      {"empty/", ""},
                      {"data/map.bin", "map"}}
        .bytes();
}

// Names of what lies beside the folder that is unpacked into.
QStringList beside(const QString &folder)
{
    return QDir(QFileInfo(folder).path())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

QByteArray noise(int size)
{
    QByteArray bytes(size, '\0');
    quint32 state = 12345;
    for (char &byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

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
    void existingFiles();
    void existingInTheWay_data();
    void existingInTheWay();
    void leftoversAreCleared();
    void onlyItsOwnAreCleared();
    void folderThatIsAFile();
    void nothingWhereFilesAreLarge();
    void largeMembers();
    void manyMembers();
    void passwords_data();
    void passwords();
    void ofAnotherPacker_data();
    void ofAnotherPacker();
    void damagedAuthenticationCode();
    void modificationTimes_data();
    void modificationTimes();
    void timesOfFolders();
    void longPaths();
    void roomOnTheDisk();
#ifndef Q_OS_WIN
    void executeBits();
    void throughLinks();
    void linkInItsPlace();
    void linkBelow();
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

void TestUnzip::existingFiles()
{
    const ScratchFolder scratch;
    for (const char *name : {"game.exe", "data/map.bin", "data/own.cfg", "saves/1.sav"}) {
        ScratchFolder::write(target + text("/") + text(name), "old");
    }
    QCOMPARE(unpack(gameArchive(), target).error, QByteArray());
    QCOMPARE(ScratchFolder::read(target + text("/game.exe")), QByteArray(3000, 'g'));
    QCOMPARE(ScratchFolder::read(target + text("/data/map.bin")), QByteArray("map"));
    QCOMPARE(ScratchFolder::read(target + text("/data/own.cfg")), QByteArray("old"));
    QCOMPARE(ScratchFolder::read(target + text("/saves/1.sav")), QByteArray("old"));
    QVERIFY(QFileInfo(target + text("/empty")).isDir());
    QCOMPARE(beside(target), names("1.0"));
}

void TestUnzip::existingInTheWay_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("folder");
    QTest::newRow("a file where a folder is needed") << text("data") << text("saves");
    QTest::newRow("a folder where a file is needed") << text("old") << text("data/map.bin/x");
}

void TestUnzip::existingInTheWay()
{
    QFETCH(QString, file);
    QFETCH(QString, folder);
    const ScratchFolder scratch;
    ScratchFolder::write(target + QLatin1Char('/') + file, "old");
    ScratchFolder::makeFolder(target + QLatin1Char('/') + folder);
    const QStringList before = ScratchFolder::tree();
    const Ended ended = unpack(gameArchive(), target);
    QCOMPARE(ended.code, 1);
    QVERIFY(ended.error.contains("in the way"));
    QCOMPARE(ScratchFolder::tree(), QStringList(before) << text("a.zip"));
}

void TestUnzip::leftoversAreCleared()
{
    const ScratchFolder scratch;
    ScratchFolder::write(text("Alpha/Official/.unzip-0123456789abcdef.part/data/half"), "half");
    ScratchFolder::write(text("Alpha/Official/.unzip-0123456789abcdef.lock"));
    ScratchFolder::write(text("Alpha/Official/.unzip-fedcba9876543210.part/half"), "half");
    ScratchFolder::write(text("Alpha/Official/.unzip-00000000000000aa.lock"));
    QCOMPARE(unpack(gameArchive(), target).code, 0);
    QCOMPARE(beside(target), names("1.0"));
}

void TestUnzip::onlyItsOwnAreCleared()
{
    const ScratchFolder scratch;
    const QStringList others =
        names(".unzip-0123456789abcdef.parts/a|.unzip-0123456789abcde.part/"
              "a|.unzip-0123456789ABCDEF.part/a|"
              ".unzip/a|0.9/a|unzip-0123456789abcdef.part/a|.unzip-0123456789abcdefg.part/a");
    for (const QString &other : others) {
        ScratchFolder::write(text("Alpha/Official/") + other, "keep");
    }
    ScratchFolder::write(text(".unzip-0123456789abcdef.part/a"), "elsewhere");
    QCOMPARE(unpack(gameArchive(), target).code, 0);
    for (const QString &other : others) {
        QCOMPARE(ScratchFolder::read(text("Alpha/Official/") + other), QByteArray("keep"));
    }
    QVERIFY(QFile::exists(text(".unzip-0123456789abcdef.part/a")));
}

void TestUnzip::folderThatIsAFile()
{
    const ScratchFolder scratch;
    ScratchFolder::write(target, "a file");
    QCOMPARE(unpack(gameArchive(), target).code, 1);
    QCOMPARE(ScratchFolder::read(target), QByteArray("a file"));
    QCOMPARE(unpack(gameArchive(), target + text("/further")).code, 1);
    QCOMPARE(ScratchFolder::read(target), QByteArray("a file"));
    QCOMPARE(beside(target), names("1.0"));
}

// Too large to be held in memory, and wrong at the end only.
void TestUnzip::nothingWhereFilesAreLarge()
{
    const ScratchFolder scratch;
    ZipEntry stored("large", noise(30 << 20));
    stored.crc = 1;
    QCOMPARE(unpack(ZipBuilder{stored, {"a", "a"}}.bytes(), target).code, 1);
    ZipEntry packed = ZipEntry::deflated("large", QByteArray(60 << 20, 'x'));
    packed.size = *packed.size - 1;
    const Ended ended = unpack(ZipBuilder{packed, {"a", "a"}}.bytes(), target);
    QCOMPARE(ended.error, QByteArray("unzip.exe: a.zip: large: it has more data than it says\n"));
    packed.size = *packed.size + 2;
    QVERIFY(unpack(ZipBuilder{packed}.bytes(), target).error.contains("less data"));
    packed.content.chop(20);
    QVERIFY(unpack(ZipBuilder{packed}.bytes(), target).error.contains("damaged"));
    QCOMPARE(ScratchFolder::tree(), names("a.zip"));
}

void TestUnzip::largeMembers()
{
    const ScratchFolder scratch;
    const QByteArray stored = noise(20 << 20);
    const QByteArray packed = noise(1 << 20).repeated(30);
    ZipBuilder builder;
    builder.add({"small0", "0"});
    builder.add({"stored", stored});
    builder.add(ZipEntry::deflated("packed", packed));
    builder.add(ZipEntry::deflated("again", packed));
    builder.add({"small1", "1"});
    QCOMPARE(unpack(builder.bytes(), target).error, QByteArray());
    QVERIFY(ScratchFolder::read(target + text("/stored")) == stored);
    QVERIFY(ScratchFolder::read(target + text("/packed")) == packed);
    QVERIFY(ScratchFolder::read(target + text("/again")) == packed);
    QCOMPARE(ScratchFolder::read(target + text("/small1")), QByteArray("1"));
}

void TestUnzip::manyMembers()
{
    const ScratchFolder scratch;
    ZipBuilder builder;
    constexpr int count = 2000;
    for (int i = 0; i < count; ++i) {
        builder.add(
            ZipEntry::deflated("d" + QByteArray::number(i % 37) + "/f" + QByteArray::number(i),
                               QByteArray::number(i).repeated(i % 100)));
    }
    QCOMPARE(unpack(builder.wideBytes(), target).error, QByteArray());
    for (int i = 0; i < count; ++i) {
        QCOMPARE(ScratchFolder::read(target + text("/d") + QString::number(i % 37) + text("/f") +
                                     QString::number(i)),
                 QByteArray::number(i).repeated(i % 100));
    }
}

void TestUnzip::ofAnotherPacker_data()
{
    QTest::addColumn<QString>("archive");
    // AES of the newer kind, without a sum; a packed, a stored and an empty file.
    for (const char *name : {"aes128", "aes192", "aes256", "zipcrypto"}) {
        QTest::newRow(name) << text(":/archives/") + text(name) + text(".zip");
    }
}

void TestUnzip::ofAnotherPacker()
{
    QFETCH(QString, archive);
    const QByteArray bytes = ScratchFolder::read(archive);
    QVERIFY(!bytes.isEmpty());
    const ScratchFolder scratch;
    QCOMPARE(unpack(bytes, target, text("sesame")).error, QByteArray());
    QCOMPARE(ScratchFolder::read(target + text("/small.txt")), QByteArray("The embers glow.\n"));
    QCOMPARE(ScratchFolder::read(target + text("/packed.txt")),
             QByteArray("embers in the wind\n").repeated(100));
    QCOMPARE(QFileInfo(target + text("/empty.txt")).size(), qint64(0));
    QCOMPARE(beside(target), names("1.0"));
    const Ended wrong = unpack(bytes, text("wrong"), text("barley"));
    QCOMPARE(wrong.code, 1);
    QVERIFY2(wrong.error.contains("password is wrong"), wrong.error.constData());
    const Ended none = unpack(bytes, text("wrong"));
    QVERIFY2(none.error.contains("there is no password"), none.error.constData());
    QVERIFY(!QFileInfo::exists(text("wrong")));
}

void TestUnzip::damagedAuthenticationCode()
{
    const QByteArray bytes = ScratchFolder::read(text(":/archives/aes256.zip"));
    int damaged = 0;
    // In the content and the code behind it of the member that comes last: it has no sum.
    const int header = bytes.lastIndexOf("PK\3\4");
    const int begin = bytes.indexOf("small.txt", header);
    QVERIFY(begin > 0);
    const int end = bytes.indexOf("PK\1\2");
    for (int place = end - 27; place < end; ++place) {
        const ScratchFolder scratch;
        QByteArray changed = bytes;
        changed[place] = static_cast<char>(changed[place] ^ 1);
        const Ended ended = unpack(changed, target, text("sesame"));
        QCOMPARE(ended.code, 1);
        damaged += ended.error.contains("authentication code") ? 1 : 0;
    }
    QCOMPARE(damaged, 27);
}

void TestUnzip::modificationTimes_data()
{
    QTest::addColumn<QByteArray>("extra");
    QTest::addColumn<QDateTime>("time");
    const qint64 second = 1500000000;
    QTest::newRow("of the packer's clock")
        << QByteArray() << QDateTime(QDate(2020, 1, 1), QTime(12, 0));
    QTest::newRow("of Unix") << field(0x5455, number(1, 1) + number(second, 4))
                             << QDateTime::fromSecsSinceEpoch(second);
    const quint64 ticks = static_cast<quint64>(second + 11644473600) * 10000000;
    QTest::newRow("of Windows") << field(10, number(0, 4) + number(1, 2) + number(24, 2) +
                                                 number(ticks, 8) + number(0, 16))
                                << QDateTime::fromSecsSinceEpoch(second);
}

void TestUnzip::modificationTimes()
{
    QFETCH(QByteArray, extra);
    QFETCH(QDateTime, time);
    const ScratchFolder scratch;
    ZipEntry entry("a", "a");
    entry.extra = extra;
    QCOMPARE(unpack(ZipBuilder{entry}.bytes(), target).error, QByteArray());
    QCOMPARE(QFileInfo(target + text("/a")).lastModified(), time);
}

void TestUnzip::timesOfFolders()
{
    const ScratchFolder scratch;
    QCOMPARE(unpack(ZipBuilder{{"data/", ""}, {"data/a", "a"}}.bytes(), target).code, 0);
    QCOMPARE(QFileInfo(target + text("/data")).lastModified(),
             QDateTime(QDate(2020, 1, 1), QTime(12, 0)));
}

void TestUnzip::longPaths()
{
    const ScratchFolder scratch;
    const QByteArray part(60, 'p');
    QByteArray folder;
    for (int i = 0; i < 8; ++i) {
        folder += part + '/';
    }
    const QByteArray name = folder + QByteArray(200, 'n');
    QCOMPARE(unpack(ZipBuilder{{name, "far"}, {"near", "n"}}.bytes(), target).error, QByteArray());
    // Step by step: the toolkit reads such a way only in parts.
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(target));
    QCOMPARE(ScratchFolder::read(text("near")), QByteArray("n"));
#ifdef Q_OS_WIN
    const QString there = text("\\\\?\\") + QDir::toNativeSeparators(QDir::currentPath()) +
                          text("\\") + QDir::toNativeSeparators(text(name.constData()));
    QCOMPARE(QFileInfo(there).size(), qint64(3));
#else
    QCOMPARE(ScratchFolder::read(text(name.constData())), QByteArray("far"));
#endif
    QVERIFY(QDir::setCurrent(previous));
    // And again: what is there is replaced, what is left over is removed.
    QCOMPARE(unpack(ZipBuilder{{name, "far"}, {"near", "m"}}.bytes(), target).error, QByteArray());
    QCOMPARE(ScratchFolder::read(target + text("/near")), QByteArray("m"));
    ZipEntry wrong("wrong", "w");
    wrong.crc = 1;
    QCOMPARE(unpack(ZipBuilder{{name, "far"}, wrong}.bytes(), text("other")).code, 1);
    QVERIFY(ScratchFolder::tree().filter(text(".unzip")).isEmpty());
    QVERIFY(!QFileInfo::exists(text("other")));
}

// The archive's data is a hole in the file: it takes no room, and would when unpacked.
void TestUnzip::roomOnTheDisk()
{
    const ScratchFolder scratch;
    const quint64 size =
        static_cast<quint64>(QStorageInfo(scratch.path()).bytesAvailable()) + (1 << 30);
    const QByteArray sizes = field(1, number(size, 8) + number(size, 8));
    QFile file(text("a.zip"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    ZipEntry entry("large", "");
    entry.crc = 0;
    entry.sizeField = 0xFFFFFFFF;
    entry.packedField = 0xFFFFFFFF;
    entry.extra = sizes;
    entry.localExtra = sizes;
    const QByteArray small = ZipBuilder{entry}.bytes();
    const int header = small.indexOf("PK\1\2");
    const quint64 at = static_cast<quint64>(header) + size;
    const QByteArray directory = small.mid(header, small.size() - header - 22);
    file.write(small.left(header));
    if (!file.seek(static_cast<qint64>(at))) {
        QSKIP("no file can be that large here");
    }
    const auto length = static_cast<quint64>(directory.size());
    file.write(directory + "PK\6\6" + number(44, 8) + number(45, 4) + number(0, 8) + number(1, 8) +
               number(1, 8) + number(length, 8) + number(at, 8) + "PK\6\7" + number(0, 4) +
               number(at + length, 8) + number(1, 4) + "PK\5\6" + number(0, 4) +
               number(0xFFFFFFFFFFFF, 6) + number(0xFFFFFFFFFFFF, 6) + number(0, 2));
    if (!file.flush()) {
        QSKIP("no file can be that large here");
    }
    file.close();
    const Ended ended = run({text("a.zip"), text("-d"), target});
    QCOMPARE(ended.code, 1);
    QVERIFY2(ended.error.contains("MiB left"), ended.error.constData());
    QCOMPARE(ScratchFolder::tree(), names("a.zip"));
}

#ifndef Q_OS_WIN
void TestUnzip::executeBits()
{
    const ScratchFolder scratch;
    ZipEntry ofWindows("windows.exe", "w");
    ofWindows.attributes = 0100777U << 16;
    QCOMPARE(unpack(ZipBuilder{ZipEntry::onUnix("run", 0106755, "r"),
                               ZipEntry::onUnix("read", 0100444, "r"), ofWindows,
                               ZipEntry::onUnix("d/", 0042777)}
                        .bytes(),
                    target)
                 .error,
             QByteArray());
    const auto modeOf = [](const char *name) {
        QProcess stat;
        stat.start(text("stat"), {text("-c"), text("%a"), target + QLatin1Char('/') + text(name)});
        stat.waitForFinished();
        return stat.readAllStandardOutput().trimmed();
    };
    QCOMPARE(modeOf("run").size(), 3);
    QVERIFY(QFileInfo(target + text("/run")).isExecutable());
    QVERIFY(QFileInfo(target + text("/read")).permission(QFile::WriteOwner));
    QVERIFY(!QFileInfo(target + text("/read")).permission(QFile::ExeOwner));
    QVERIFY(!QFileInfo(target + text("/windows.exe")).permission(QFile::ExeOwner));
    QCOMPARE(modeOf("d").size(), 3);
}

// A player has moved games to another drive.
void TestUnzip::throughLinks()
{
    const ScratchFolder scratch;
    ScratchFolder::makeFolder(text("drive/games"));
    QVERIFY(QFile::link(scratch.path() + text("/drive"), text("Alpha")));
    QVERIFY(QFile::link(scratch.path() + text("/drive/games"), text("drive/Official")));
    QCOMPARE(unpack(gameArchive(), target).error, QByteArray());
    QCOMPARE(ScratchFolder::read(text("drive/games/1.0/data/map.bin")), QByteArray("map"));
}

void TestUnzip::linkInItsPlace()
{
    const ScratchFolder scratch;
    ScratchFolder::makeFolder(text("Alpha/Official"));
    ScratchFolder::makeFolder(text("elsewhere"));
    QVERIFY(QFile::link(scratch.path() + text("/elsewhere"), target));
    const Ended ended = unpack(gameArchive(), target);
    QCOMPARE(ended.code, 1);
    QVERIFY(ended.error.contains("is a link"));
    QVERIFY(QDir(text("elsewhere")).isEmpty());
    QVERIFY(QFileInfo(target).isSymLink());
}

void TestUnzip::linkBelow()
{
    const ScratchFolder scratch;
    ScratchFolder::write(text("elsewhere/own"), "old");
    ScratchFolder::makeFolder(target);
    QVERIFY(QFile::link(scratch.path() + text("/elsewhere"), target + text("/data")));
    QCOMPARE(unpack(gameArchive(), target).code, 1);
    QCOMPARE(QDir(text("elsewhere")).entryList(QDir::Files), names("own"));
    // A link in a file's place goes, and what it leads to stays.
    QVERIFY(QFile::remove(target + text("/data")));
    QVERIFY(QFile::link(scratch.path() + text("/elsewhere/own"), target + text("/game.exe")));
    QCOMPARE(unpack(gameArchive(), target).error, QByteArray());
    QCOMPARE(ScratchFolder::read(text("elsewhere/own")), QByteArray("old"));
    QVERIFY(!QFileInfo(target + text("/game.exe")).isSymLink());
}

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

void TestUnzip::passwords_data()
{
    QTest::addColumn<QByteArray>("encoded");
    QTest::newRow("UTF-8") << QByteArray("\xC3\xBC"
                                         "ber-\xC3\x9F");
    QTest::newRow("code page 437") << QByteArray("\x81"
                                                 "ber-\xE1");
    QTest::newRow("code page 1252") << QByteArray("\xFC"
                                                  "ber-\xDF");
}

namespace
{
// The traditional encryption, which is short enough to be written here.
class OldCipher
{
public:
    explicit OldCipher(const QByteArray &password)
    {
        for (const char byte : password) {
            update(static_cast<unsigned char>(byte));
        }
    }

    QByteArray encrypted(const QByteArray &plain)
    {
        QByteArray out;
        for (const char byte : plain) {
            const quint32 key = (m_keys[2] & 0xFFFF) | 2;
            out +=
                static_cast<char>(static_cast<unsigned char>(byte) ^ (key * (key ^ 1) >> 8 & 0xFF));
            update(static_cast<unsigned char>(byte));
        }
        return out;
    }

private:
    static quint32 step(quint32 sum, quint32 byte)
    {
        sum ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            sum = sum >> 1 ^ ((sum & 1) != 0 ? 0xEDB88320 : 0);
        }
        return sum;
    }

    void update(quint32 byte)
    {
        m_keys[0] = step(m_keys[0], byte);
        m_keys[1] = (m_keys[1] + (m_keys[0] & 0xFF)) * 134775813 + 1;
        m_keys[2] = step(m_keys[2], m_keys[1] >> 24);
    }

    quint32 m_keys[3] = {0x12345678, 0x23456789, 0x34567890};
};

ZipEntry oldLocked(const QByteArray &name, const QByteArray &content, const QByteArray &password)
{
    ZipEntry entry = ZipEntry::deflated(name, content);
    const QByteArray head = QByteArray(11, 'r') + static_cast<char>(*entry.crc >> 24);
    entry.content = OldCipher(password).encrypted(head + entry.content);
    entry.flags = 1;
    return entry;
}
} // namespace

void TestUnzip::passwords()
{
    QFETCH(QByteArray, encoded);
    const ScratchFolder scratch;
    ZipBuilder builder;
    for (int i = 0; i < 40; ++i) {
        builder.add(oldLocked("f" + QByteArray::number(i), QByteArray::number(i), encoded));
    }
    builder.add(oldLocked("large", QByteArray(80 << 20, 'x'), encoded));
    const Ended ended = unpack(builder.bytes(), target,
                               text("\xC3\xBC"
                                    "ber-\xC3\x9F"));
    QCOMPARE(ended.error, QByteArray());
    for (int i = 0; i < 40; ++i) {
        QCOMPARE(ScratchFolder::read(target + text("/f") + QString::number(i)),
                 QByteArray::number(i));
    }
    QCOMPARE(QFileInfo(target + text("/large")).size(), qint64(80 << 20));
    QCOMPARE(unpack(builder.bytes(), text("other"), text("uber-ss")).code, 1);
}

QTEST_GUILESS_MAIN(TestUnzip)
#include "tst_unzip.moc"
