#include "base/pathsafety.h"
#include "install/executables.h"
#include "install/savefilename.h"
#include "install/speedtext.h"
#include "install/textprogressbar.h"
#include "install/versionweight.h"
#include "support/links.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>
#include <QUrl>

#include <cstdio>
#include <functional>
#include <memory>
#include <unistd.h>

namespace
{
// What the function writes to standard output. The test log goes there too, so nothing is compared
// in between.
QByteArray printedBy(const std::function<void()> &function)
{
    QTemporaryFile file;
    if (!file.open()) {
        qFatal("cannot capture the console");
    }
    std::fflush(stdout);
    const int saved = dup(STDOUT_FILENO);
    dup2(file.handle(), STDOUT_FILENO);
    function();
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    QFile reader(file.fileName());
    return reader.open(QIODevice::ReadOnly) ? reader.readAll() : QByteArray();
}

void makeFile(const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly)) {
        qFatal("cannot write %s", qPrintable(name));
    }
}

// Whether the data row of now is about links.
bool needsLinks()
{
    return QByteArray(QTest::currentDataTag()).contains("link");
}

void makeFolder(const QString &name)
{
    if (!QDir::current().mkpath(name)) {
        qFatal("cannot make %s", qPrintable(name));
    }
}

// Each name a file, or a folder when it ends in "/".
void makeEntries(const QStringList &names)
{
    for (const QString &name : names) {
        if (name.endsWith(QLatin1Char('/'))) {
            makeFolder(name);
        } else {
            makeFile(name);
        }
    }
}

QString blanks(int count)
{
    return QString(count, QLatin1Char(' '));
}
} // namespace

// The rules that need no window: they compile against the toolkit's core alone.
class TestInstallRules : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void versionWeight_data();
    void versionWeight();
    void versionPartsAreReadAsTheToolkitReadsNumbers();
    void versionWeightWraps_data();
    void versionWeightWraps();
    void executables();
    void greatestVersion_data();
    void greatestVersion();
    void versionColour_data();
    void versionColour();

    void saveFileName_data();
    void saveFileName();
    void saveFileNameCreatesNothing();

    void speedText_data();
    void speedText();

    void barOfAKnownSize_data();
    void barOfAKnownSize();
    void textOfAKnownSize_data();
    void textOfAKnownSize();
    void movingBar_data();
    void movingBar();
    void movingBarBeginsAnewAfterFortyEightRedraws();
    void textDoesNotMoveTheBar();
    void freshBarKnowsNoSize();
    void clearEndsTheLineAndForgetsAllButTheMessage();

    void folderInsideWorkingDirectory_data();
    void folderInsideWorkingDirectory();
    void folderToBeMade_data();
    void folderToBeMade();
    void nothingLiesInARemovedWorkingDirectory();
    void fileOfWorkingDirectory_data();
    void fileOfWorkingDirectory();

private:
    // "<scratch>/installation" is the working directory, "<scratch>/elsewhere" lies outside it.
    std::unique_ptr<QTemporaryDir> m_scratch;
    QString m_previous;
};

void TestInstallRules::init()
{
    m_previous = QDir::currentPath();
    m_scratch = std::make_unique<QTemporaryDir>();
    QVERIFY(m_scratch->isValid());
    const QDir root(m_scratch->path());
    QVERIFY(root.mkpath(QStringLiteral("installation")));
    QVERIFY(root.mkpath(QStringLiteral("elsewhere/Alpha")));
    QVERIFY(QDir::setCurrent(root.filePath(QStringLiteral("installation"))));
}

void TestInstallRules::cleanup()
{
    QDir::setCurrent(m_previous);
    m_scratch.reset();
}

void TestInstallRules::versionWeight_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<qint32>("weight");
    const auto row = [](const char *name, const char *version, qint32 weight) {
        QTest::newRow(name) << QString::fromLatin1(version) << weight;
    };
    row("three parts", "2.1.4", 201040000);
    row("the five parts that count", "1.2.3.4.5", 102030405);
    row("a sixth part counts nothing", "2.1.4.0.0.1", 201040000);
    row("a single part", "7", 700000000);
    row("the smallest weight above nothing", "0.0.0.0.1", 1);
    row("a part of three digits reaches into the one before it", "1.100", 200000000);
    row("zeros in front are no matter", "02.0", 200000000);
    row("nothing but zeros", "0.0", 0);
    row("an empty name", "", 0);
    row("the folder itself", ".", 0);
    row("the folder above", "..", 0);
    row("a word", "backup", 0);
    row("a word in the middle counts 0", "1.x.3", 100030000);
    row("digits with a letter behind them are no number", "1a.5", 5000000);
    row("no other base than ten", "0x10.1", 1000000);
    row("an empty part keeps its place", "2..4", 200040000);
    row("an empty first part keeps its place", ".5", 5000000);
    row("a minus sign counts", "1.-5", 95000000);
    row("a plus sign counts", "+2", 200000000);
    row("a negative first part", "-1.5", -95000000);
    row("a plain file's extension counts 0", "3.zip", 300000000);
    row("the greatest weight there is", "21.47.48.36.47", 2147483647);
    row("one more wraps around", "21.47.48.36.48", -2147483647 - 1);
    row("21.99 wraps to less than nothing", "21.99", -2095967296);
    row("22.0 wraps to less than nothing", "22.0", -2094967296);
    row("43.0.0 wraps to less than 1.0", "43.0.0", 5032704);
    row("the product of one part wraps by itself", "2147483647", -100000000);
    row("a number beyond 32 bits is no number", "99999999999.1", 1000000);
}

void TestInstallRules::versionWeight()
{
    QFETCH(QString, version);
    QFETCH(qint32, weight);
    QCOMPARE(::versionWeight(version), weight);
}

void TestInstallRules::versionPartsAreReadAsTheToolkitReadsNumbers()
{
    const QStringList parts{
        {},
        QStringLiteral("0"),
        QStringLiteral("7"),
        QStringLiteral("007"),
        QStringLiteral("+7"),
        QStringLiteral("-7"),
        QStringLiteral("--7"),
        QStringLiteral(" 7"),
        QStringLiteral("7 "),
        QStringLiteral("7 7"),
        QStringLiteral("7a"),
        QStringLiteral("a7"),
        QStringLiteral("0x7"),
        QStringLiteral("7e1"),
        QStringLiteral("1,000"),
        QStringLiteral("/"),
        QStringLiteral(":"),
        QString(QChar(0x0667)), // seven, in Arabic
        QString(QChar(0xFF17)), // seven, in full width
        QStringLiteral("999999999"),
        QStringLiteral("1000000000"),
        QStringLiteral("2147483647"),
        QStringLiteral("2147483648"),
        QStringLiteral("-2147483648"),
        QStringLiteral("0000000000000007"),
        QStringLiteral("99999999999999999999"),
    };
    for (const QString &part : parts) {
        // The fifth part weighs once.
        QCOMPARE(::versionWeight(QStringLiteral("0.0.0.0.") + part), part.toInt());
    }
}

void TestInstallRules::versionWeightWraps_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("wraps");
    const auto row = [](const char *version, bool wraps) {
        QTest::newRow(version) << QString::fromLatin1(version) << wraps;
    };
    row("2.1.4", false);
    row("21.47.48.36.47", false);
    row("21.47.48.36.48", true);
    row("22.0", true);
    row("43.0.0", true);
    row("-1.5", false);
    row("-22.0", true);
    row("2147483647", true);
    row("99999999999", false);
}

void TestInstallRules::versionWeightWraps()
{
    QFETCH(QString, version);
    QFETCH(bool, wraps);
    QCOMPARE(::versionWeightWraps(version), wraps);
}

void TestInstallRules::executables()
{
    QCOMPARE(Executables::filters(QStringLiteral("Official")),
             QStringList{QStringLiteral("*.exe")});
    QCOMPARE(Executables::filters(QStringLiteral("Beta")),
             (QStringList{QStringLiteral("*_dx.exe"), QStringLiteral("*_gl.exe")}));
    QVERIFY(Executables::askForEngine(QStringLiteral("Beta")));
    QVERIFY(!Executables::askForEngine(QStringLiteral("beta")));
}

void TestInstallRules::greatestVersion_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("greatest");
    const auto row = [](const char *name, const char *names, const char *greatest) {
        QTest::newRow(name) << QString::fromLatin1(names).split(QLatin1Char(' '))
                            << QString::fromLatin1(greatest);
    };
    row("the later one is greater", ". .. 1.9.9 2.0", "2.0");
    row("the earlier one is greater", ". .. 2.0 1.9.9", "2.0");
    row("ten is more than nine", ". .. 1.10 1.9", "1.10");
    row("of equals the first wins", ". .. 02.0 2.0", "02.0");
    row("of equals the first wins, the other way round", ". .. 2.0 02.0", "2.0");
    row("only 22.0, which weighs less than nothing", ". .. 22.0", "");
    row("43.0.0 loses against 1.0", ". .. 1.0 43.0.0", "1.0");
    row("nothing but the two folders", ". ..", "");
    row("a weight of 0 is not installed", ". .. 0.0 backup", "");
    row("a negative weight is not installed", ". .. -1.0", "");
    row("a file counts like a folder", ". .. 2.0 3.zip", "3.zip");
    QTest::newRow("no names at all") << QStringList() << QString();
}

void TestInstallRules::greatestVersion()
{
    QFETCH(QStringList, names);
    QFETCH(QString, greatest);
    QCOMPARE(::greatestVersion(names), greatest);
}

void TestInstallRules::versionColour_data()
{
    QTest::addColumn<QString>("installed");
    QTest::addColumn<QString>("offered");
    QTest::addColumn<QString>("colour");
    const QString version = QStringLiteral("2.0");
    QTest::newRow("nothing installed") << QString() << version << QStringLiteral("red");
    QTest::newRow("nothing installed, nothing offered")
        << QString() << QString() << QStringLiteral("red");
    QTest::newRow("the offered version installed") << version << version << QStringLiteral("green");
    QTest::newRow("an older version installed")
        << QStringLiteral("1.0") << version << QStringLiteral("orange");
    QTest::newRow("a newer version installed")
        << QStringLiteral("3.0") << version << QStringLiteral("orange");
    QTest::newRow("an equal weight is not the same version")
        << QStringLiteral("02.0") << version << QStringLiteral("orange");
    QTest::newRow("something installed, nothing offered")
        << version << QString() << QStringLiteral("orange");
}

void TestInstallRules::versionColour()
{
    QFETCH(QString, installed);
    QFETCH(QString, offered);
    QFETCH(QString, colour);
    QCOMPARE(::versionColour(installed, offered), colour);
}

void TestInstallRules::saveFileName_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QStringList>("existing");
    QTest::addColumn<QString>("name");
    const auto row = [](const char *name, const char *url, const char *existing,
                        const char *result) {
        QTest::newRow(name) << QString::fromLatin1(url)
                            << QString::fromLatin1(existing).split(QLatin1Char('|'),
                                                                   Qt::SkipEmptyParts)
                            << QString::fromUtf8(result);
    };
    row("the last component of the path", "http://h.test/a/client.zip", "", "client.zip");
    row("an extension is not added", "http://h.test/client", "", "client");
    row("a query is not part of the name", "http://h.test/get?file=x.zip", "", "get");
    row("a fragment is not part of the name", "http://h.test/client.zip#x", "", "client.zip");
    row("a path that ends in a slash", "http://h.test/files/", "", "download");
    row("no path at all", "http://h.test", "", "download");
    row("an empty address", "", "", "download");
    row("a file named download exists", "http://h.test/files/", "download", "download.0.zip");
    row("a blank is decoded", "http://h.test/my%20client.zip", "", "my client.zip");
    row("letters beyond Latin-1 are decoded", "http://h.test/%D0%B8%D0%B3%D1%80%D0%B0.zip", "",
        "\xD0\xB8\xD0\xB3\xD1\x80\xD0\xB0.zip");
    row("a percent sign is decoded once", "http://h.test/a%2541.zip", "", "a%41.zip");
    row("an encoded slash separates once decoded", "http://h.test/a%2Fb.zip", "", "b.zip");
    row("the extension is doubled", "http://h.test/client.zip", "client.zip", "client.zip.0.zip");
    row("a name without extension gets one", "http://h.test/client", "client", "client.0.zip");
    row("the first number that is free", "http://h.test/client.zip",
        "client.zip|client.zip.0.zip|client.zip.1.zip|client.zip.3.zip", "client.zip.2.zip");
    row("numbers alone do not matter", "http://h.test/client.zip", "client.zip.0.zip",
        "client.zip");
    row("a folder of that name", "http://h.test/client.zip", "client.zip/", "client.zip.0.zip");
    row("a folder of the numbered name", "http://h.test/client.zip", "client.zip|client.zip.0.zip/",
        "client.zip.1.zip");
    row("a place holder in the name stays", "http://h.test/a%252.zip", "a%2.zip", "a%2.zip.0.zip");
    row("the folder above is no name to write to", "http://h.test/a/..", "", "...0.zip");
    row("a file elsewhere does not matter", "http://h.test/client.zip", "sub/|sub/client.zip",
        "client.zip");
}

void TestInstallRules::saveFileName()
{
    QFETCH(QString, url);
    QFETCH(QStringList, existing);
    QFETCH(QString, name);
    makeEntries(existing);
    QCOMPARE(freeSaveFileName(QUrl(url)), name);
}

void TestInstallRules::saveFileNameCreatesNothing()
{
    (void)freeSaveFileName(QUrl(QStringLiteral("http://h.test/client.zip")));
    QCOMPARE(QDir::current().entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
}

void TestInstallRules::speedText_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<qint64>("milliseconds");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, qint64 bytes, qint64 milliseconds, const char *text) {
        QTest::newRow(name) << bytes << milliseconds << QString::fromLatin1(text);
    };
    row("nothing received yet", 0, 100, "0.0 bytes/sec");
    row("a few bytes", 5, 1000, "5.0 bytes/sec");
    row("a fraction of a byte", 1, 3000, "0.3 bytes/sec");
    row("just below a kilobyte", 10239, 10000, "1023.9 bytes/sec");
    row("rounding does not change the unit", 102396, 100000, "1024.0 bytes/sec");
    row("exactly a kilobyte", 1024, 1000, "1.0 kB/s");
    row("some kilobytes", 12800, 1000, "12.5 kB/s");
    row("just below a megabyte", 1048575, 1000, "1024.0 kB/s");
    row("exactly a megabyte", 1048576, 1000, "1.0 MB/s");
    row("some megabytes in a fraction of a second", 786432, 500, "1.5 MB/s");
    row("no unit above megabytes", 3221225472LL, 1000, "3072.0 MB/s");
    row("more bytes than 32 bits hold", 42949672960LL, 4096000, "10.0 MB/s");
    row("no time passed", 1, 0, "inf MB/s");
    row("nothing received in no time", 0, 0, "0.0 bytes/sec");
}

void TestInstallRules::speedText()
{
    QFETCH(qint64, bytes);
    QFETCH(qint64, milliseconds);
    QFETCH(QString, text);
    QCOMPARE(::speedText(bytes, milliseconds), text);
}

void TestInstallRules::barOfAKnownSize_data()
{
    QTest::addColumn<qint64>("value");
    QTest::addColumn<qint64>("maximum");
    QTest::addColumn<int>("hashes");
    QTest::addColumn<bool>("half"); // a ">" follows them
    QTest::addColumn<QString>("percent");
    const auto row = [](const char *name, qint64 value, qint64 maximum, int hashes, bool half,
                        const char *percent) {
        QTest::newRow(name) << value << maximum << hashes << half << QString::fromLatin1(percent);
    };
    row("nothing yet", 0, 100, 0, false, "  0");
    row("one per cent is half a step", 1, 100, 0, true, "  1");
    row("two per cent is one step", 2, 100, 1, false, "  2");
    row("an odd percentage", 43, 100, 21, true, " 43");
    row("an even percentage", 42, 100, 21, false, " 42");
    row("rounded down, not to the nearest", 1999, 10000, 9, true, " 19");
    row("99 %", 99, 100, 49, true, " 99");
    row("a byte before the end is 99 %", 999999, 1000000, 49, true, " 99");
    row("100 %", 100, 100, 50, false, "100");
    row("sizes beyond 32 bits", 30000000000LL, 40000000000LL, 37, true, " 75");
    row("more than was announced makes the bar wider", 104, 100, 52, false, "104");
    row("a bar has an end all the same", 1000000000LL, 100, 1000, false, "1000000000");
    row("sizes whose product would not fit", 4611686018427387904LL, 9223372036854775807LL, 25,
        false, " 50");
}

void TestInstallRules::barOfAKnownSize()
{
    QFETCH(qint64, value);
    QFETCH(qint64, maximum);
    QFETCH(int, hashes);
    QFETCH(bool, half);
    QFETCH(QString, percent);
    TextProgressBar bar;
    bar.setMessage(QStringLiteral("1.5 MB/s"));
    bar.setStatus(value, maximum);
    const QString steps =
        QString(hashes, QLatin1Char('#')) + (half ? QStringLiteral(">") : QString());
    const QString field = steps + blanks(50 - steps.size());
    const QString expected = QStringLiteral("\r[") + field + QStringLiteral("] ") + percent +
                             QStringLiteral("% 1.5 MB/s     ");
    const QByteArray printed = printedBy([&bar] { bar.update(); });
    QCOMPARE(QString::fromUtf8(printed), expected);
}

void TestInstallRules::textOfAKnownSize_data()
{
    QTest::addColumn<qint64>("value");
    QTest::addColumn<qint64>("maximum");
    QTest::addColumn<int>("progress");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, qint64 value, qint64 maximum, int progress,
                        const char *text) {
        QTest::newRow(name) << value << maximum << progress << QString::fromLatin1(text);
    };
    row("nothing yet", 0, 7, 0, "  0% 1.5 MB/s     ");
    row("two digits after a blank", 42, 100, 42, " 42% 1.5 MB/s     ");
    row("rounded down", 2, 3, 66, " 66% 1.5 MB/s     ");
    row("everything", 7, 7, 100, "100% 1.5 MB/s     ");
    row("sizes beyond 32 bits", 30000000000LL, 40000000000LL, 75, " 75% 1.5 MB/s     ");
}

void TestInstallRules::textOfAKnownSize()
{
    QFETCH(qint64, value);
    QFETCH(qint64, maximum);
    QFETCH(int, progress);
    QFETCH(QString, text);
    TextProgressBar bar;
    bar.setMessage(QStringLiteral("1.5 MB/s"));
    bar.setStatus(value, maximum);
    QString message;
    const QByteArray printed = printedBy([&bar, &message] { message = bar.getMessage(); });
    QCOMPARE(message, text);
    QCOMPARE(printed, QByteArray());
    QCOMPARE(bar.getProgress(), progress);
}

void TestInstallRules::movingBar_data()
{
    QTest::addColumn<int>("redraws");
    QTest::addColumn<qint64>("maximum");
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");
    QTest::newRow("the first redraw") << 1 << qint64(-1) << 0 << 4;
    QTest::newRow("the second redraw") << 2 << qint64(-1) << 1 << 5;
    QTest::newRow("the third redraw") << 3 << qint64(-1) << 2 << 6;
    QTest::newRow("in the middle") << 24 << qint64(-1) << 23 << 27;
    QTest::newRow("the widest field") << 47 << qint64(-1) << 46 << 50;
    QTest::newRow("back at the left") << 48 << qint64(-1) << 0 << 3;
    QTest::newRow("the second round") << 49 << qint64(-1) << 0 << 4;
    QTest::newRow("a size of 0 is unknown too") << 3 << qint64(0) << 2 << 6;
}

void TestInstallRules::movingBar()
{
    QFETCH(int, redraws);
    QFETCH(qint64, maximum);
    QFETCH(int, before);
    QFETCH(int, after);
    TextProgressBar bar;
    bar.setMessage(QStringLiteral("3.0 kB/s"));
    bar.setStatus(5000, maximum);
    QByteArray printed;
    for (int i = 0; i < redraws; ++i) {
        printed = printedBy([&bar] { bar.update(); });
    }
    const QString expected = QStringLiteral("\r[") + blanks(before) + QStringLiteral("###") +
                             blanks(after) + QStringLiteral("]      3.0 kB/s      ");
    QCOMPARE(QString::fromUtf8(printed), expected);
    QCOMPARE(bar.getMessage(), expected);
    QCOMPARE(bar.getProgress(), 0);
}

void TestInstallRules::movingBarBeginsAnewAfterFortyEightRedraws()
{
    TextProgressBar bar;
    bar.setStatus(1, -1);
    const QByteArray first = printedBy([&bar] { bar.update(); });
    QCOMPARE(first, QByteArray("\r[###    ]            "));
    QByteArray last;
    for (int i = 0; i < 48; ++i) {
        last = printedBy([&bar] { bar.update(); });
    }
    QCOMPARE(last, first);
}

void TestInstallRules::textDoesNotMoveTheBar()
{
    TextProgressBar bar;
    bar.setStatus(1, -1);
    (void)printedBy([&bar] { bar.update(); });
    const QString text = bar.getMessage();
    QCOMPARE(text, QStringLiteral("\r[###    ]            "));
    QCOMPARE(bar.getMessage(), text);
    const QByteArray second = printedBy([&bar] { bar.update(); });
    QCOMPARE(second, QByteArray("\r[ ###     ]            "));
}

void TestInstallRules::freshBarKnowsNoSize()
{
    const TextProgressBar bar;
    QCOMPARE(bar.getMessage(), QStringLiteral("\r[###   ]            "));
    QCOMPARE(bar.getProgress(), 0);
}

void TestInstallRules::clearEndsTheLineAndForgetsAllButTheMessage()
{
    TextProgressBar bar;
    bar.setMessage(QStringLiteral("fast"));
    bar.setStatus(50, 100);
    (void)printedBy([&bar] {
        bar.update();
        bar.update();
    });
    QCOMPARE(bar.getProgress(), 50);
    const QByteArray printed = printedBy([&bar] { bar.clear(); });
    QCOMPARE(printed, QByteArray("\n"));
    QCOMPARE(bar.getProgress(), 0);
    QCOMPARE(bar.getMessage(), QStringLiteral("\r[###   ]      fast      "));
    QCOMPARE(bar.value, qint64(0));
    QCOMPARE(bar.maximum, qint64(-1));
    const QByteArray redrawn = printedBy([&bar] { bar.update(); });
    QCOMPARE(redrawn, QByteArray("\r[###    ]      fast      "));
}

void TestInstallRules::folderInsideWorkingDirectory_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("inside");
    QTest::newRow("a folder in it") << QStringLiteral("Alpha") << true;
    QTest::newRow("a folder further down") << QStringLiteral("Alpha/Official") << true;
    QTest::newRow("a way that comes back in") << QStringLiteral("../installation/Alpha") << true;
    QTest::newRow("the way as the system knows it") << QStringLiteral("%1/Alpha") << true;
    QTest::newRow("a link that leads elsewhere inside") << QStringLiteral("inner") << true;
    QTest::newRow("the folder itself") << QStringLiteral(".") << false;
    QTest::newRow("the folder itself, from within") << QStringLiteral("Alpha/..") << false;
    QTest::newRow("the folder itself, absolute") << QStringLiteral("%1") << false;
    QTest::newRow("the folder above") << QStringLiteral("..") << false;
    QTest::newRow("climbing out from within") << QStringLiteral("Alpha/../..") << false;
    QTest::newRow("a folder beside it") << QStringLiteral("../elsewhere") << false;
    QTest::newRow("a folder beside it whose name goes on")
        << QStringLiteral("../installation2") << false;
    QTest::newRow("the root of the drive") << QStringLiteral("/") << false;
    QTest::newRow("an absolute folder elsewhere") << QStringLiteral("/tmp") << false;
    QTest::newRow("a link that leads out") << QStringLiteral("outer") << false;
    QTest::newRow("a folder behind a link that leads out")
        << QStringLiteral("outer/Alpha") << false;
    QTest::newRow("a link that leads nowhere") << QStringLiteral("broken") << false;
    QTest::newRow("a folder that does not exist") << QStringLiteral("Beta") << false;
    QTest::newRow("an empty name") << QString() << false;
}

void TestInstallRules::folderInsideWorkingDirectory()
{
    QFETCH(QString, folder);
    QFETCH(bool, inside);
    makeFolder(QStringLiteral("Alpha/Official"));
    makeFolder(QStringLiteral("../installation2"));
    if (needsLinks()) {
        MAKE_LINK(QStringLiteral("Alpha"), QStringLiteral("inner"));
        MAKE_LINK(QStringLiteral("../elsewhere"), QStringLiteral("outer"));
        MAKE_LINK(QStringLiteral("nowhere"), QStringLiteral("broken"));
    }
    if (folder.contains(QLatin1Char('%'))) {
        folder = folder.arg(QDir::currentPath());
    }
    QCOMPARE(liesInsideWorkingDirectory(folder), inside);
}

void TestInstallRules::folderToBeMade_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("inside");
    QTest::newRow("a folder in it") << QStringLiteral("Alpha") << true;
    QTest::newRow("a folder further down") << QStringLiteral("Alpha/Official/2.1") << true;
    QTest::newRow("a way that comes back in") << QStringLiteral("../installation/Alpha") << true;
    QTest::newRow("absolute, in it") << QStringLiteral("%1/Alpha") << true;
    QTest::newRow("with a slash behind it") << QStringLiteral("Alpha/") << true;
    QTest::newRow("dots that are part of the name") << QStringLiteral("..Alpha") << true;
    QTest::newRow("the folder itself") << QStringLiteral(".") << false;
    QTest::newRow("the folder itself, from within") << QStringLiteral("Alpha/..") << false;
    QTest::newRow("the folder itself, absolute") << QStringLiteral("%1/") << false;
    QTest::newRow("an empty name") << QString() << false;
    QTest::newRow("the folder above") << QStringLiteral("..") << false;
    QTest::newRow("climbing out from within")
        << QStringLiteral("Alpha/Official/../../../evil") << false;
    QTest::newRow("a folder beside it whose name goes on")
        << QStringLiteral("../installation2") << false;
    QTest::newRow("an absolute folder elsewhere") << QStringLiteral("/tmp/evil") << false;
    QTest::newRow("the root of the drive") << QStringLiteral("/") << false;
#ifdef Q_OS_WIN
    QTest::newRow("by the system's separators") << QStringLiteral("Alpha\\2.1") << true;
    QTest::newRow("climbing out by them") << QStringLiteral("..\\evil") << false;
    QTest::newRow("from the root by them") << QStringLiteral("\\evil") << false;
    QTest::newRow("another machine") << QStringLiteral("\\\\server\\share") << false;
    QTest::newRow("a drive") << QStringLiteral("C:") << false;
    QTest::newRow("above where a drive was worked on") << QStringLiteral("C:..\\evil") << false;
    QTest::newRow("where a drive was worked on") << QStringLiteral("C:evil") << false;
    QTest::newRow("a stream of a folder") << QStringLiteral("Alpha:evil") << false;
#else
    QTest::newRow("a colon, which means nothing here") << QStringLiteral("Alpha: 2.1") << true;
#endif
}

// By the text alone: none of them exists.
void TestInstallRules::folderToBeMade()
{
    QFETCH(QString, folder);
    QFETCH(bool, inside);
    if (folder.contains(QLatin1Char('%'))) {
        folder = folder.arg(QDir::currentPath());
    }
    QCOMPARE(wouldLieInsideWorkingDirectory(folder), inside);
}

void TestInstallRules::nothingLiesInARemovedWorkingDirectory()
{
    const QString removed = m_scratch->filePath(QStringLiteral("removed"));
    makeFolder(removed);
    QVERIFY(QDir::setCurrent(removed));
    if (!QDir().rmdir(removed)) {
        QSKIP("this system keeps a folder that somebody works in");
    }
    QVERIFY(!liesInsideWorkingDirectory(m_scratch->filePath(QStringLiteral("elsewhere"))));
    QVERIFY(!liesInsideWorkingDirectory(QStringLiteral("/tmp")));
    QVERIFY(!isFileOfWorkingDirectory(m_scratch->filePath(QStringLiteral("elsewhere/a.png"))));
    QVERIFY(!isFileOfWorkingDirectory(QStringLiteral("a.png")));
}

void TestInstallRules::fileOfWorkingDirectory_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<bool>("inside");
    QTest::newRow("a file in it") << QStringLiteral("settings.txt") << true;
    QTest::newRow("a file that does not exist yet") << QStringLiteral("new.png") << true;
    QTest::newRow("a file further down") << QStringLiteral("Alpha/logo.png") << true;
    QTest::newRow("a way that comes back in") << QStringLiteral("../installation/a.png") << true;
    QTest::newRow("a file above") << QStringLiteral("../a.png") << false;
    QTest::newRow("a file beside it") << QStringLiteral("../elsewhere/a.png") << false;
    QTest::newRow("a file beside it whose folder's name goes on")
        << QStringLiteral("../installation2/a.png") << false;
    QTest::newRow("a file at the root of the drive") << QStringLiteral("/a.png") << false;
    QTest::newRow("a file behind a link that leads out") << QStringLiteral("outer/a.png") << false;
    QTest::newRow("a link to a file outside") << QStringLiteral("out.txt") << false;
    QTest::newRow("a link to a file inside") << QStringLiteral("in.txt") << false;
    QTest::newRow("a link that leads nowhere yet") << QStringLiteral("broken.txt") << false;
    QTest::newRow("a file in a folder that does not exist")
        << QStringLiteral("Beta/a.png") << false;
}

void TestInstallRules::fileOfWorkingDirectory()
{
    QFETCH(QString, file);
    QFETCH(bool, inside);
    makeFolder(QStringLiteral("Alpha"));
    makeFolder(QStringLiteral("../installation2"));
    makeFile(QStringLiteral("settings.txt"));
    makeFile(QStringLiteral("../elsewhere/letter.txt"));
    if (needsLinks()) {
        MAKE_LINK(QStringLiteral("../elsewhere"), QStringLiteral("outer"));
        MAKE_LINK(QStringLiteral("../elsewhere/letter.txt"), QStringLiteral("out.txt"));
        MAKE_LINK(QStringLiteral("settings.txt"), QStringLiteral("in.txt"));
        MAKE_LINK(QStringLiteral("../elsewhere/new.txt"), QStringLiteral("broken.txt"));
    }
    QCOMPARE(isFileOfWorkingDirectory(file), inside);
}

QTEST_GUILESS_MAIN(TestInstallRules)
#include "tst_installrules.moc"
