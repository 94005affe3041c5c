#include "extract/casefold.h"
#include "extract/membername.h"
#include "extract/refusal.h"
#include "extract/text.h"

#include <QTest>

#include <string>

// How members' names are read, and which of them no file may get.
class TestMemberName : public QObject
{
    Q_OBJECT

private slots:
    void reading_data();
    void reading();
    void flaggedThatIsNoUtf8();
    void taken_data();
    void taken();
    void refused_data();
    void refused();
    void lengths();
    void capitals_data();
    void capitals();
    void oldEncodings();
    void printedOnOneLine();
};

void TestMemberName::reading_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("flagged");
    QTest::addColumn<QByteArray>("name");
    const auto row = [](const char *what, const QByteArray &bytes, bool flagged,
                        const QByteArray &name) {
        QTest::newRow(what) << bytes << flagged << name;
    };
    row("plain", "data/a.txt", false, "data/a.txt");
    row("UTF-8 with its flag", "Gr\xC3\xBC\xC3\x9F", true, "Gr\xC3\xBC\xC3\x9F");
    row("UTF-8 without its flag", "Gr\xC3\xBC\xC3\x9F", false, "Gr\xC3\xBC\xC3\x9F");
    row("code page 437", "Gr\x81\xE1", false, "Gr\xC3\xBC\xC3\x9F");
    row("the last of code page 437", "\x80\xFF", false, "\xC3\x87\xC2\xA0");
    row("backslashes", "data\\sub\\a.txt", false, "data/sub/a.txt");
    row("a folder by a backslash", "data\\", false, "data/");
    row("the folder itself before it", "./data/a", false, "data/a");
    row("the folder itself twice", "././a", false, "a");
    row("the folder itself by a backslash", ".\\a", false, "a");
    row("nothing but the folder itself", "./", false, "");
    row("a dot that belongs to the name", ".config", false, ".config");
    row("four bytes", "\xF0\x9F\x94\xA5", true, "\xF0\x9F\x94\xA5");
    row("half a surrogate is no UTF-8", "\xED\xA0\x80", false, "\xCF\x86\xC3\xA1\xC3\x87");
    row("too long a form is no UTF-8", "\xC0\xAF", false, "\xE2\x94\x94\xC2\xBB");
    row("a cut character is no UTF-8", "a\xC3", false, "a\xE2\x94\x9C");
}

void TestMemberName::reading()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, flagged);
    QFETCH(QByteArray, name);
    QCOMPARE(QByteArray::fromStdString(Extract::memberName(bytes.toStdString(), flagged)), name);
}

void TestMemberName::flaggedThatIsNoUtf8()
{
    QVERIFY_EXCEPTION_THROWN(Extract::memberName("Gr\x81\xE1", true), Extract::Refusal);
}

void TestMemberName::taken_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char *name :
         {"game.exe", "data/", "data/a", ".hidden", "a b", "..a", "a..b", "con1", "comma.txt",
          "COM", "COM10", "nullable", "auxiliary/a", "lptx", "(a) [b] {c} ~!@#$%^&+=;,'`",
          "Gr\xC3\xBC\xC3\x9F", "\xF0\x9F\x94\xA5", "xcon.txt", "a.con"}) {
        QTest::newRow(name) << QByteArray(name);
    }
}

void TestMemberName::taken()
{
    QFETCH(QByteArray, name);
    QCOMPARE(Extract::refusalOfName(name.toStdString()), std::string());
}

void TestMemberName::refused_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("why");
    const auto row = [](const QByteArray &name, const char *why) {
        QTest::newRow(name.toPercentEncoding(" /:.\\").constData()) << name << QByteArray(why);
    };
    for (const char *name : {"/etc/passwd", "//host/share/a"}) {
        row(name, "absolute");
    }
    for (const char *name : {"C:a", "c:/a", "Z:/"}) {
        row(name, "drive");
    }
    for (const char *name : {"..", "../a", "a/..", "a/../b", "a/.././../b"}) {
        row(name, "..");
    }
    for (const char *name : {"a\nb", "a\x01", "\x1B[2J", "a\x7F", "a\xC2\x85z", "a\r", "a\t"}) {
        row(name, "control");
    }
    row(QByteArray("a\0.txt", 6), "control");
    for (const char *name : {"a.", "a ", "a./b", "a /b", "...", "a/ ", " "}) {
        row(name, "cut off");
    }
    for (const char *name : {"a<b", "a>b", "ab:c", "a|b", "a?b", "a*b", "a\"b", "dir/a:stream"}) {
        row(name, "does not take");
    }
    for (const char *name : {"con", "CON", "con.txt", "prn.a.b", "aux/a", "dir/nul", "COM1", "com0",
                             "lpt9.x", "COM\xC2\xB9", "LPT\xC2\xB2.txt", "conin$", "CONOUT$",
                             "clock$", "nul .txt", "aux.tar.gz/x"}) {
        row(name, "device");
    }
    for (const char *name : {"a//b", "//", "a/b//"}) {
        row(name, name[0] == '/' ? "absolute" : "empty");
    }
    row("a/./b", "\".\"");
    row("", "no name");
    row("/", "no name");
}

void TestMemberName::refused()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, why);
    const QByteArray refusal =
        QByteArray::fromStdString(Extract::refusalOfName(name.toStdString()));
    QVERIFY2(refusal.contains(why), refusal.isEmpty() ? "taken" : refusal.constData());
}

void TestMemberName::lengths()
{
    QVERIFY(Extract::refusalOfName(std::string(255, 'a')).empty());
    QVERIFY(!Extract::refusalOfName(std::string(256, 'a')).empty());
    // In units of UTF-16: two for each of these.
    std::string flames;
    for (int i = 0; i < 127; ++i) {
        flames += "\xF0\x9F\x94\xA5";
    }
    QVERIFY(Extract::refusalOfName(flames).empty());
    QVERIFY(!Extract::refusalOfName(flames + "\xF0\x9F\x94\xA5").empty());
    std::string deep;
    for (int i = 0; i < 200; ++i) {
        deep += "a/";
    }
    QVERIFY(Extract::refusalOfName(deep + "b").empty());
    QVERIFY(!Extract::refusalOfName(deep + "a/b").empty());
    const std::string folder = std::string(250, 'a') + "/";
    std::string far;
    for (int i = 0; i < 15; ++i) {
        far += folder;
    }
    QVERIFY(Extract::refusalOfName(far + "b").empty());
    QVERIFY(!Extract::refusalOfName(far + folder + "b").empty());
}

void TestMemberName::capitals_data()
{
    QTest::addColumn<uint>("letter");
    QTest::addColumn<uint>("capital");
    const auto row = [](const char *what, uint letter, uint capital) {
        QTest::newRow(what) << letter << capital;
    };
    row("a", 'a', 'A');
    row("z", 'z', 'Z');
    row("A", 'A', 'A');
    row("a digit", '7', '7');
    row("before a", '`', '`');
    row("umlaut", 0xE4, 0xC4);
    row("sharp s has none", 0xDF, 0xDF);
    row("division sign", 0xF7, 0xF7);
    row("y with two dots", 0xFF, 0x178);
    row("a with macron", 0x101, 0x100);
    row("A with macron", 0x100, 0x100);
    row("z with caron", 0x17E, 0x17D);
    row("alpha", 0x3B1, 0x391);
    row("ia", 0x44F, 0x42F);
    row("io", 0x451, 0x401);
    row("wide a", 0xFF41, 0xFF21);
    row("a flame", 0x1F525, 0x1F525);
}

void TestMemberName::capitals()
{
    QFETCH(uint, letter);
    QFETCH(uint, capital);
    QCOMPARE(uint(Extract::capital(letter)), capital);
}

void TestMemberName::oldEncodings()
{
    QVERIFY(Extract::inCodePage437(U"Gr\u00FC\u00DF") == std::string("Gr\x81\xE1"));
    QVERIFY(Extract::inCodePage1252(U"Gr\u00FC\u00DF\u20AC") == std::string("Gr\xFC\xDF\x80"));
    QVERIFY(!Extract::inCodePage437(U"\u20AC"));
    QVERIFY(!Extract::inCodePage1252(U"\u0416"));
}

void TestMemberName::printedOnOneLine()
{
    QCOMPARE(QByteArray::fromStdString(Extract::printable("a\nb\x1B\x7F"
                                                          "c\xC3\xBC")),
             QByteArray("a?b??c\xC3\xBC"));
    QCOMPARE(QByteArray::fromStdString(Extract::printable("a\x81")), QByteArray("a?"));
    // What terminals obey, ends a line elsewhere, or turns the letters round.
    for (const char *command : {"\xC2\x9B", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9",
                                "\xE2\x80\xAE", "\xE2\x81\xA6", "\xE2\x80\x8F"}) {
        QCOMPARE(QByteArray::fromStdString(Extract::printable(std::string("a") + command + "b")),
                 QByteArray("a?b"));
    }
}

QTEST_GUILESS_MAIN(TestMemberName)
#include "tst_membername.moc"
