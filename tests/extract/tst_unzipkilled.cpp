#include "extract/extractor.h"
#include "extract/zipbuilder.h"
#include "support/scratchfolder.h"
#include "support/texts.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

using Texts::names;
using Texts::text;

namespace
{
constexpr int files = 1500;
const QString target = QStringLiteral("Alpha/Official/1.0");
const QString around = QStringLiteral("Alpha/Official");

QByteArray contentOf(int file)
{
    return QByteArray::number(file).repeated(500);
}

QString nameOf(int file)
{
    return text("d%1/f%2").arg(file % 30).arg(file);
}

QByteArray archive()
{
    ZipBuilder builder;
    for (int i = 0; i < files; ++i) {
        builder.add(ZipEntry::deflated(nameOf(i).toUtf8(), contentOf(i)));
    }
    builder.add(ZipEntry::deflated("large", QByteArray(60 << 20, 'x')));
    return builder.bytes();
}

QStringList entriesOf(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                  QDir::NoDotAndDotDot);
}

bool isWhole(const QString &folder)
{
    if (QFileInfo(folder + text("/large")).size() != 60 << 20) {
        return false;
    }
    for (int i = 0; i < files; ++i) {
        if (ScratchFolder::read(folder + QLatin1Char('/') + nameOf(i)) != contentOf(i)) {
            return false;
        }
    }
    return true;
}

void startInto(QProcess &process, const QString &folder)
{
    Extractor::start(process, {text("a.zip"), text("-d"), folder});
}

void end(QProcess &process)
{
    process.kill();
    (void)process.waitForFinished(-1);
}

// Waits until somebody is unpacking beside the folder; false where nobody does any more.
bool isUnpacking(QProcess &process)
{
    while (QDir(around).entryList(names(".unzip-*.part"), QDir::Dirs | QDir::Hidden).isEmpty()) {
        if (process.waitForFinished(1)) {
            return false;
        }
    }
    return true;
}
} // namespace

// Killed at any moment: the folder is absent, empty or whole.
class TestUnzipKilled : public QObject
{
    Q_OBJECT

private slots:
    void atAnyMoment();
    void noEmptyFolderIsLeft();
    void filesThatWereThere();
    void twoAtOnce();
};

void TestUnzipKilled::atAnyMoment()
{
    const ScratchFolder scratch;
    ScratchFolder::write(text("a.zip"), archive());
    QElapsedTimer clock;
    clock.start();
    {
        QProcess process;
        startInto(process, text("Alpha/first/1.0"));
        QVERIFY(process.waitForFinished(-1));
        QCOMPARE(process.exitCode(), 0);
    }
    const int whole = static_cast<int>(clock.elapsed());
    int interrupted = 0;
    constexpr int rounds = 24;
    for (int round = 0; round < rounds; ++round) {
        // As the launcher leaves it, every second time.
        if (round % 2 == 0) {
            ScratchFolder::makeFolder(target);
        }
        QProcess process;
        startInto(process, target);
        // Moments from the start to a little behind the usual end.
        (void)process.waitForFinished(whole * (round + 1) / (rounds - 4));
        end(process);
        interrupted +=
            process.exitStatus() == QProcess::CrashExit || process.exitCode() != 0 ? 1 : 0;
        const bool empty = entriesOf(target).isEmpty();
        QVERIFY2(empty || isWhole(target), QByteArray::number(round).constData());
        if (!empty) {
            QVERIFY(QDir(target).removeRecursively());
        }
    }
    QVERIFY2(interrupted > 0, "none was ever killed in time");
    // The next one clears what all these have left.
    QProcess last;
    startInto(last, target);
    QVERIFY(last.waitForFinished(-1));
    QCOMPARE(last.exitCode(), 0);
    QCOMPARE(entriesOf(around), names("1.0"));
    QVERIFY(isWhole(target));
}

// The launcher takes an empty folder for an installed version.
void TestUnzipKilled::noEmptyFolderIsLeft()
{
    const ScratchFolder scratch;
    ScratchFolder::write(text("a.zip"), archive());
    ScratchFolder::makeFolder(target);
    QProcess process;
    startInto(process, target);
    QVERIFY(isUnpacking(process));
    while (QFileInfo::exists(target) && !process.waitForFinished(1)) {
    }
    end(process);
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QVERIFY(!QFileInfo::exists(target));
}

// While members are being unpacked, what was there is as it was.
void TestUnzipKilled::filesThatWereThere()
{
    const ScratchFolder scratch;
    ScratchFolder::write(text("a.zip"), archive());
    ScratchFolder::write(target + text("/large"), "old");
    ScratchFolder::write(target + text("/saves/1.sav"), "own");
    QProcess process;
    startInto(process, target);
    QVERIFY(isUnpacking(process));
    end(process);
    QCOMPARE(entriesOf(target), names("large|saves"));
    QCOMPARE(ScratchFolder::read(target + text("/large")), QByteArray("old"));
    QCOMPARE(ScratchFolder::read(target + text("/saves/1.sav")), QByteArray("own"));
    QVERIFY(entriesOf(around).size() > 1);
    QProcess next;
    startInto(next, target);
    QVERIFY(next.waitForFinished(-1));
    QVERIFY(isWhole(target));
    QCOMPARE(ScratchFolder::read(target + text("/saves/1.sav")), QByteArray("own"));
    QCOMPARE(entriesOf(around), names("1.0"));
}

// What another one is still filling is no leftover.
void TestUnzipKilled::twoAtOnce()
{
    const ScratchFolder scratch;
    ScratchFolder::write(text("a.zip"), archive());
    ScratchFolder::write(text("small.zip"), ZipBuilder{{"a", "a"}}.bytes());
    QProcess first;
    startInto(first, target);
    QVERIFY(isUnpacking(first));
    const Extractor::Ended second =
        Extractor::run({text("small.zip"), text("-d"), around + text("/2.0")});
    QCOMPARE(second.error, QByteArray());
    QVERIFY(first.waitForFinished(-1));
    QCOMPARE(first.readAllStandardError(), QByteArray());
    QCOMPARE(first.exitCode(), 0);
    QVERIFY(isWhole(target));
    QCOMPARE(entriesOf(around), names("1.0|2.0"));
}

QTEST_GUILESS_MAIN(TestUnzipKilled)
#include "tst_unzipkilled.moc"
