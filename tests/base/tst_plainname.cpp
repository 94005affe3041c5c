#include "base/plainname.h"
#include "support/texts.h"

#include <QTest>

namespace
{
using Texts::text;
} // namespace

// Which names from a document may become a folder's.
class TestPlainName : public QObject
{
    Q_OBJECT

private slots:
    void everySystem_data();
    void everySystem();
    void windows_data();
    void windows();
    void ways_data();
    void ways();
};

void TestPlainName::everySystem_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("plain");
    const auto row = [](const char *what, const QString &name, bool plain) {
        QTest::newRow(what) << name << plain;
    };
    row("a word", text("Alpha"), true);
    row("a version", text("2.1.4"), true);
    row("a blank in the middle", text("The Old World"), true);
    row("letters beyond ASCII", text("\xC3\x84\xD0\x96"), true);
    row("a letter of two units", text("\xF0\x9F\x94\xA5"), true);
    row("dots that are part of the name", text("..2.0"), true);
    row("two dots in the middle", text("1..2"), true);
    row("a dot before it", text(".hidden"), true);
    row("as long as a name can be", QString(255, QLatin1Char('a')), true);
    row("longer than a name can be", QString(256, QLatin1Char('a')), false);
    row("no name at all", QString(), false);
    row("the folder itself", text("."), false);
    row("the folder above", text(".."), false);
    row("two folders", text("Alpha/Official"), false);
    row("a way out", text("../Alpha"), false);
    row("from the root", text("/Alpha"), false);
    row("with a slash behind it", text("Alpha/"), false);
    row("a slash alone", text("/"), false);
    row("a zero byte", text("Al") + QChar(0) + text("pha"), false);
    row("a zero byte at the end", text("Alpha") + QChar(0), false);
    row("a line end", text("Alpha\n"), false);
    row("an escape", text("\x1B[2J"), false);
    row("a delete", text("Al\x7Fpha"), false);
    row("a control character beyond ASCII", text("Al\xC2\x85pha"), false);
}

void TestPlainName::everySystem()
{
    QFETCH(QString, name);
    QFETCH(bool, plain);
    QCOMPARE(isPlainName(name), plain);
}

void TestPlainName::windows_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("plain");
    const auto row = [](const char *name, bool plain) {
        QTest::newRow(name) << text(name) << plain;
    };
    for (const char *name : {"Alpha",   "2.1.4",     "The Old World", "\xC3\x84\xD0\x96",
                             ".hidden", "..2.0",     " Alpha",        "CONTEST",
                             "CON1",    "XCON",      "COM",           "COM10",
                             "COMX",    "LPT",       "LPT12",         "NULL",
                             "AUX2",    "CONIN",     "CONOUT",        "CONIN$X",
                             "2.CON",   "Alpha CON", "C-ON"}) {
        row(name, true);
    }
    for (const char *name : {"Al\\pha",    "..\\Alpha", "\\",          "C:",          "C:Alpha",
                             "Alpha:x",    "Al<pha",    "Al>pha",      "Al\"pha",     "Al|pha",
                             "Al?pha",     "Al*pha",    "CON",         "con",         "Prn",
                             "AUX",        "NUL",       "COM0",        "com1",        "COM9",
                             "LPT0",       "lpt9",      "COM\xC2\xB9", "LPT\xC2\xB2", "COM\xC2\xB3",
                             "CONIN$",     "conout$",   "nul.old",     "CON.",        "CON.tar.gz",
                             "CON .txt",   "CON  ",     "COM1 .x",     " CON",        "  nul.old",
                             "CONIN$.log", "Alpha.",    "Alpha ",      "Alpha. .",    "...",
                             " "}) {
        row(name, false);
    }
}

void TestPlainName::windows()
{
    QFETCH(QString, name);
    QFETCH(bool, plain);
    QCOMPARE(isPlainOnWindows(name), plain);
#ifdef Q_OS_WIN
    QCOMPARE(isPlainName(name), plain);
#else
    // Here they are names as any other.
    QVERIFY(isPlainName(name));
#endif
}

void TestPlainName::ways_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("plain");
    const auto row = [](const char *path, bool plain) {
        QTest::newRow(path) << text(path) << plain;
    };
    row("Alpha", true);
    row("Alpha/Official", true);
    row("Al pha/..2", true);
    row("", false);
    row("/", false);
    row("/Alpha", false);
    row("Alpha/", false);
    row("Alpha//Official", false);
    row("Alpha/..", false);
    row("./Alpha", false);
    row("Alpha/Official/1.0", false);
    row("Alpha/Offi\ncial", false);
}

// Of two names at most.
void TestPlainName::ways()
{
    QFETCH(QString, path);
    QFETCH(bool, plain);
    QCOMPARE(isPlainWay(path, 2), plain);
}

QTEST_GUILESS_MAIN(TestPlainName)
#include "tst_plainname.moc"
