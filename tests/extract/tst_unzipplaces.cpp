#include "extract/extractor.h"
#include "extract/zipbuilder.h"
#include "support/scratchfolder.h"
#include "support/texts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStorageInfo>
#include <QTest>

#ifdef Q_OS_LINUX
#include <sys/prctl.h>
#endif
#ifndef Q_OS_WIN
#include <sys/resource.h>
#endif

using Extractor::beside;
using Extractor::Ended;
using Extractor::gameArchive;
using Extractor::run;
using Extractor::target;
using Extractor::unpack;
using Texts::names;
using Texts::text;
using ZipBytes::field;
using ZipBytes::number;

namespace
{
// Keeps a file of a folder from being replaced as long as it lives.
class InTheWay
{
public:
    InTheWay(const QString &folder, const QString &name)
        : m_folder(folder)
        , m_file(folder + QLatin1Char('/') + name)
    {
#ifdef Q_OS_WIN
        // As a game does that runs.
        (void)m_file.open(QIODevice::ReadOnly);
#else
        (void)QFile::setPermissions(m_folder, QFile::ReadOwner | QFile::ExeOwner);
#ifdef Q_OS_LINUX
        // Who may do everything is not kept from it else; programs that are started inherit this.
        constexpr int passOverPermissions = 1;
        (void)prctl(PR_CAPBSET_DROP, passOverPermissions, 0, 0, 0);
#endif
#endif
    }
    ~InTheWay()
    {
#ifndef Q_OS_WIN
        (void)QFile::setPermissions(m_folder,
                                    QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
#endif
    }
    InTheWay(const InTheWay &) = delete;
    InTheWay &operator=(const InTheWay &) = delete;

private:
    const QString m_folder;
    QFile m_file;
};

// What a killed run has left beside the target.
void leaveHalf()
{
    ScratchFolder::write(text("Alpha/Official/.unzip-0123456789abcdef.part/data/half"), "half");
    ScratchFolder::write(text("Alpha/Official/.unzip-0123456789abcdef.lock"));
}
} // namespace

// Where unpacking writes, and where it does not.
class TestUnzipPlaces : public QObject
{
    Q_OBJECT

private slots:
    void existingFiles();
    void existingInTheWay_data();
    void existingInTheWay();
    void failureHalfwayThroughExistingFiles();
    void leftoversAreCleared();
    void leftoversGoWhateverTheArchive();
    void onlyItsOwnAreCleared();
    void folderThatIsAFile();
    void longPaths();
    void roomOnTheDisk();
#ifndef Q_OS_WIN
    void limitOfFiles();
    void throughLinks();
    void linkInItsPlace();
    void linkBelow();
#endif
};

void TestUnzipPlaces::existingFiles()
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

void TestUnzipPlaces::existingInTheWay_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("folder");
    QTest::newRow("a file where a folder is needed") << text("data") << text("saves");
    QTest::newRow("a folder where a file is needed") << text("old") << text("data/map.bin/x");
}

void TestUnzipPlaces::existingInTheWay()
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

void TestUnzipPlaces::failureHalfwayThroughExistingFiles()
{
    const ScratchFolder scratch;
    ZipBuilder archive;
    for (int i = 10; i < 30; ++i) {
        const QByteArray folder = "data/" + QByteArray::number(i);
        archive.add({folder + "/map.bin", "new"});
        archive.add({folder + "/further/map.bin", "new"});
        archive.add({folder + "/other/map.bin", "new"});
        ScratchFolder::write(
            target + QLatin1Char('/') + QString::fromLatin1(folder) + text("/map.bin"), "old");
        ScratchFolder::write(target + QLatin1Char('/') + QString::fromLatin1(folder) +
                                 text("/other/own.cfg"),
                             "own");
    }
    const QStringList before = ScratchFolder::tree();
    Ended ended;
    {
        const InTheWay locked(target + text("/data/20"), text("map.bin"));
        ended = unpack(archive.bytes(), target);
    }
    QCOMPARE(ended.code, 1);
    QVERIFY2(ended.error.contains("data/20/"), ended.error.constData());
    QCOMPARE(ScratchFolder::tree(), QStringList(before) << text("a.zip"));
    for (int i = 10; i < 30; ++i) {
        QCOMPARE(ScratchFolder::read(target + text("/data/%1/map.bin").arg(i)), QByteArray("old"));
        QCOMPARE(ScratchFolder::read(target + text("/data/%1/other/own.cfg").arg(i)),
                 QByteArray("own"));
    }
    QCOMPARE(unpack(archive.bytes(), target).error, QByteArray());
    QCOMPARE(ScratchFolder::read(target + text("/data/20/map.bin")), QByteArray("new"));
    QCOMPARE(beside(target), names("1.0"));
}

void TestUnzipPlaces::leftoversAreCleared()
{
    const ScratchFolder scratch;
    leaveHalf();
    ScratchFolder::write(text("Alpha/Official/.unzip-fedcba9876543210.part/half"), "half");
    ScratchFolder::write(text("Alpha/Official/.unzip-00000000000000aa.lock"));
    QCOMPARE(unpack(gameArchive(), target).code, 0);
    QCOMPARE(beside(target), names("1.0"));
}

void TestUnzipPlaces::leftoversGoWhateverTheArchive()
{
    const ScratchFolder scratch;
    leaveHalf();
    QCOMPARE(unpack("no archive", target).code, 1);
    QCOMPARE(beside(target), QStringList());
    leaveHalf();
    QCOMPARE(run({text("missing.zip"), text("-d"), target}).code, 1);
    QCOMPARE(beside(target), QStringList());
}

void TestUnzipPlaces::onlyItsOwnAreCleared()
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

void TestUnzipPlaces::folderThatIsAFile()
{
    const ScratchFolder scratch;
    ScratchFolder::write(target, "a file");
    QCOMPARE(unpack(gameArchive(), target).code, 1);
    QCOMPARE(ScratchFolder::read(target), QByteArray("a file"));
    QCOMPARE(unpack(gameArchive(), target + text("/further")).code, 1);
    QCOMPARE(ScratchFolder::read(target), QByteArray("a file"));
    QCOMPARE(beside(target), names("1.0"));
}

void TestUnzipPlaces::longPaths()
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
void TestUnzipPlaces::roomOnTheDisk()
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
    // Nothing stands where the member is said to be, lest a disk is filled where this is not
    // noticed.
    file.write(QByteArray(header, '\0'));
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
    // What takes the room may well be what a killed run has left.
    leaveHalf();
    QVERIFY(run({text("a.zip"), text("-d"), target}).error.contains("MiB left"));
    QCOMPARE(beside(target), QStringList());
}

#ifndef Q_OS_WIN
// A system that allows no larger files says so by a signal, which would kill the program.
void TestUnzipPlaces::limitOfFiles()
{
    class Limited : public QProcess
    {
    protected:
        void setupChildProcess() override
        {
            const rlimit limit{100000, 100000};
            (void)setrlimit(RLIMIT_FSIZE, &limit);
        }
    };
    const ScratchFolder scratch;
    ScratchFolder::write(text("a.zip"),
                         ZipBuilder{ZipEntry::deflated("large", QByteArray(200000, 'l'))}.bytes());
    Limited process;
    Extractor::start(process, {text("a.zip"), text("-d"), target});
    QVERIFY(process.waitForFinished(-1));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 1);
    QVERIFY(process.readAllStandardError().contains("large: it cannot be written"));
    QCOMPARE(ScratchFolder::tree(), names("a.zip"));
}

// A player has moved games to another drive.
void TestUnzipPlaces::throughLinks()
{
    const ScratchFolder scratch;
    ScratchFolder::makeFolder(text("drive/games"));
    QVERIFY(QFile::link(scratch.path() + text("/drive"), text("Alpha")));
    QVERIFY(QFile::link(scratch.path() + text("/drive/games"), text("drive/Official")));
    QCOMPARE(unpack(gameArchive(), target).error, QByteArray());
    QCOMPARE(ScratchFolder::read(text("drive/games/1.0/data/map.bin")), QByteArray("map"));
}

void TestUnzipPlaces::linkInItsPlace()
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

void TestUnzipPlaces::linkBelow()
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
#endif

QTEST_GUILESS_MAIN(TestUnzipPlaces)
#include "tst_unzipplaces.moc"
