#include "extract/bytesource.h"
#include "extract/verdict.h"
#include "extract/zipbuilder.h"

#include <QTest>

#include <string>

using ZipBytes::field;
using ZipBytes::number;

namespace
{
Extract::Verdict verdictOf(const QByteArray &archive, const std::string &password = {})
{
    const std::string bytes = archive.toStdString();
    return Extract::verified(Extract::MemoryBytes(bytes), password);
}

QByteArray wordsOf(const Extract::Verdict &verdict)
{
    return verdict.accepted ? QByteArray("accepted")
                            : QByteArray::fromStdString(verdict.member + ": " + verdict.reason);
}

const quint32 regular = 0100644;
const quint32 folderMode = 0040755;
const quint16 utf8 = 0x0800;

ZipEntry entryWith(void (*change)(ZipEntry &))
{
    ZipEntry entry = ZipEntry::deflated("data.bin", QByteArray(1000, 'd'));
    change(entry);
    return entry;
}
} // namespace

// Which archives are refused and why, with everything that is in them, without a disk.
class TestVerdict : public QObject
{
    Q_OBJECT

private slots:
    void accepted_data();
    void accepted();
    void refused_data();
    void refused();
    void everyLength();
    void listsTheMembers();
    void tellsTheFirstOfTheDamaged();
    void withoutTheContents();
    void looksAtTheBeginnings();
    void oneByteChanged();
};

void TestVerdict::accepted_data()
{
    QTest::addColumn<QByteArray>("archive");
    QTest::addColumn<int>("members");
    const auto row = [](const char *what, const QByteArray &archive, int members = 1) {
        QTest::newRow(what) << archive << members;
    };
    const ZipEntry game = ZipEntry::deflated("game.exe", "game");
    row("one member", ZipBuilder{game}.bytes());
    row("stored", ZipBuilder{{"a", "content"}}.bytes());
    row("nothing in it", ZipBuilder{{"a", ""}}.bytes());
    row("nothing in it, said to be packed", ZipBuilder{entryWith([](ZipEntry &e) {
                                                e.content.clear();
                                                e.size = 0;
                                                e.crc = 0;
                                            })}.bytes());
    row("a folder", ZipBuilder{{"data/", ""}}.bytes());
    row("a folder of Unix", ZipBuilder{ZipEntry::onUnix("data/", folderMode)}.bytes());
    row("a folder of Unix without its slash",
        ZipBuilder{ZipEntry::onUnix("data", folderMode)}.bytes());
    row("a folder, then what is in it", ZipBuilder{{"data/", ""}, {"data/a", "a"}}.bytes(), 2);
    row("a folder after what is in it", ZipBuilder{{"data/a", "a"}, {"data/", ""}}.bytes(), 2);
    row("a packed folder",
        ZipBuilder{{"data/", ""},
                   [] {
                       ZipEntry entry = ZipEntry::deflated("more/", "");
                       return entry;
                   }()}
            .bytes(),
        2);
    row("the archive's own folder", ZipBuilder{{"./", ""}, {"./a", "a"}}.bytes());
    row("a mode without a kind", ZipBuilder{ZipEntry::onUnix("a", 0600, "a")}.bytes());
    row("a file of Unix", ZipBuilder{ZipEntry::onUnix("a", regular, "a")}.bytes());
    row("names that begin alike",
        ZipBuilder{{"data", "a"}, {"data.bin", "b"}, {"data-/a", "c"}}.bytes(), 3);
    row("the same name in two folders", ZipBuilder{{"a/x", "1"}, {"b/x", "2"}, {"x", "3"}}.bytes(),
        3);
    row("sizes behind the data", ZipBuilder{entryWith([](ZipEntry &e) { e.flags = 8; })}.bytes());
    ZipBuilder prefixed;
    prefixed.addBytes("");
    prefixed.add(game);
    row("a program before it", QByteArray(300, 'x') + prefixed.bytes());
    row("a line end behind it", ZipBuilder{game}.bytes() + "\n");
    ZipBuilder commented{game};
    commented.comment = "a comment with PK\5\6 in it, and more behind this";
    row("a comment", commented.bytes());
    row("zip64", ZipBuilder{game}.wideBytes());
    row("zip64 sizes",
        ZipBuilder{entryWith([](ZipEntry &e) {
            e.extra = field(1, number(1000, 8) + number(static_cast<quint64>(e.content.size()), 8) +
                                   number(0, 8));
            e.sizeField = 0xFFFFFFFF;
            e.packedField = 0xFFFFFFFF;
            e.headerField = 0xFFFFFFFF;
        })}.bytes());
    row("a broken extra field",
        ZipBuilder{entryWith([](ZipEntry &e) { e.extra = "\1\2\377"; })}.bytes());
    row(
        "gaps between the data",
        [&] {
            ZipBuilder builder{game};
            builder.addBytes(QByteArray(100, '\0'));
            builder.add({"b", "b"});
            return builder.bytes();
        }(),
        2);
    ZipBuilder many;
    for (int i = 0; i < 66000; ++i) {
        many.add({"d" + QByteArray::number(i / 1000) + "/f" + QByteArray::number(i), "x"});
    }
    row("zip64 with over 65,535 members", many.wideBytes(), 66000);
    many.count = 66000 & 0xFFFF;
    row("so many without zip64, counted on from 0", many.bytes(), 66000);
}

void TestVerdict::accepted()
{
    QFETCH(QByteArray, archive);
    QFETCH(int, members);
    const Extract::Verdict verdict = verdictOf(archive);
    QCOMPARE(wordsOf(verdict), QByteArray("accepted"));
    QCOMPARE(static_cast<int>(verdict.members.size()), members);
}

void TestVerdict::refused_data()
{
    QTest::addColumn<QByteArray>("archive");
    QTest::addColumn<QByteArray>("why");
    const auto row = [](const char *what, const QByteArray &archive, const char *why) {
        QTest::newRow(what) << archive << QByteArray(why);
    };
    const auto changed = [&row](const char *what, const char *why, void (*change)(ZipEntry &)) {
        row(what, ZipBuilder{entryWith(change)}.bytes(), why);
    };
    const ZipEntry game = ZipEntry::deflated("game.exe", QByteArray(500, 'g'));
    row("an empty file", "", ": is no zip archive");
    row("a web page", "<html>not found</html>", ": is no zip archive");
    row("zeros", QByteArray(70000, '\0'), ": is no zip archive");
    row("no members", ZipBuilder{}.bytes(), ": has no members");
    ZipBuilder deep;
    for (int i = 0; i < 2030; ++i) {
        deep.add({QByteArray::number(i) + '/' + QByteArray("a/").repeated(198), ""});
    }
    row("folders without end", deep.bytes(), ": has more folders than can be made");
    row("the archive's own folder alone", ZipBuilder{{"./", ""}}.bytes(), ": has no members");
    row("cut", ZipBuilder{game}.bytes().chopped(30), ": is no zip archive");

    const auto name = [&row](const QByteArray &bytes, const char *why) {
        row(("the name " + bytes.toPercentEncoding()).constData(), ZipBuilder{{bytes, "x"}}.bytes(),
            why);
    };
    name("../a", "../a: its name leads out");
    name("..\\a", "its name leads out");
    name("/a", "absolute");
    name("\\\\host\\a", "absolute");
    name("C:\\a", "drive");
    name(QByteArray("a\0b", 3), "control");
    name("a\nb", "a?b: its name holds a control");
    name("con", "device");
    name("a.", "cut off");
    name("a?", "does not take");
    row("a name that is said to be UTF-8", ZipBuilder{entryWith([](ZipEntry &e) {
                                               e.name = "\x81";
                                               e.flags = utf8;
                                           })}.bytes(),
        "is said to be UTF-8");
    row("a bad name in the field for names",
        ZipBuilder{entryWith([](ZipEntry &e) {
            e.extra = field(0x7075, number(1, 1) + number(ZipBytes::sum(e.name), 4) + "../b");
        })}.bytes(),
        "leads out");

    row("a member twice", ZipBuilder{{"a", "1"}, {"b", "2"}, {"a", "3"}}.bytes(),
        "a: it is in the archive twice");
    row("a folder twice", ZipBuilder{{"a/", ""}, {"a/", ""}}.bytes(), "twice");
    row("twice by the field for names",
        ZipBuilder{{"b", "1"}, entryWith([](ZipEntry &e) {
                       e.extra =
                           field(0x7075, number(1, 1) + number(ZipBytes::sum(e.name), 4) + "b");
                   })}
            .bytes(),
        "twice");
    row("capital letters", ZipBuilder{{"Read.me", "1"}, {"read.ME", "2"}}.bytes(),
        "capital and small");
    row("capital letters beyond ASCII", ZipBuilder{{"\xC3\x84", "1"}, {"\xC3\xA4", "2"}}.bytes(),
        "capital and small");
    row("capital letters of a folder", ZipBuilder{{"Data/a", "1"}, {"data/b", "2"}}.bytes(),
        "capital and small");
    row("capital letters of a folder further down",
        ZipBuilder{{"x/Data/a", "1"}, {"x/m", "2"}, {"x/data/b", "3"}}.bytes(),
        "capital and small");
    row("a folder and a file", ZipBuilder{{"a/", ""}, {"a", "1"}}.bytes(), "twice");
    row("a file where a folder is needed", ZipBuilder{{"a/b", "1"}, {"a", "2"}}.bytes(),
        "needs a folder");
    row("a file where a folder is needed, between others",
        ZipBuilder{{"a", "1"}, {"a.b", "2"}, {"a-/c", "3"}, {"a/b/c", "4"}}.bytes(),
        "needs a folder");

    row("a link", ZipBuilder{ZipEntry::onUnix("a", 0120777, "/etc/passwd")}.bytes(),
        "a link, a device");
    row("a device", ZipBuilder{ZipEntry::onUnix("a", 0020644)}.bytes(), "a link, a device");
    row("a disk", ZipBuilder{ZipEntry::onUnix("a", 0060644)}.bytes(), "a link, a device");
    row("a pipe", ZipBuilder{ZipEntry::onUnix("a", 0010644)}.bytes(), "a link, a device");
    row("a socket", ZipBuilder{ZipEntry::onUnix("a", 0140644)}.bytes(), "a link, a device");
    changed("a link of a Mac", "a link, a device", [](ZipEntry &e) {
        e.madeBy = 19 << 8;
        e.attributes = 0120777U << 16;
    });
    changed("a link of Windows", "a link, a device", [](ZipEntry &e) { e.attributes = 0x400; });
    changed("a disk's name", "a link, a device", [](ZipEntry &e) { e.attributes = 0x08; });
    changed("a folder with a content", "cannot have a content", [](ZipEntry &e) { e.name = "a/"; });

    changed("more data than it says", "more data", [](ZipEntry &e) { e.size = 999; });
    changed("less data than it says", "less data", [](ZipEntry &e) { e.size = 1001; });
    changed("a wrong sum", "its sum is wrong", [](ZipEntry &e) { e.crc = 1; });
    changed("damaged data", "damaged",
            [](ZipEntry &e) { e.content[2] = static_cast<char>(~e.content[2]); });
    changed("no packed data", "damaged", [](ZipEntry &e) {
        e.content.clear();
        e.size = 0;
        e.crc = 0;
        e.content = QByteArray("\7");
    });
    changed("more than deflate can hold", "larger than its data can hold",
            [](ZipEntry &e) { e.size = 100000; });
    row("stored, and larger than it is",
        ZipBuilder{[] {
            ZipEntry entry("a", "abc");
            entry.size = 4;
            return entry;
        }()}
            .bytes(),
        "larger than its data can hold");
    row("stored, and smaller than it is",
        ZipBuilder{[] {
            ZipEntry entry("a", "abc");
            entry.size = 2;
            return entry;
        }()}
            .bytes(),
        "more data");
    changed("data behind the archive's end", "not lie in the archive",
            [](ZipEntry &e) { e.packedField = 5000; });
    changed("a header behind the archive's end", "not lie in the archive",
            [](ZipEntry &e) { e.headerField = 5000; });
    changed("a header that is none", "not where the directory says", [](ZipEntry &e) {
        e.headerField = 1;
        e.packedField = 5;
    });
    changed("by a method nobody knows", "packed by method 77", [](ZipEntry &e) { e.method = 77; });
    changed("by bzip2", "packed by method 12", [](ZipEntry &e) { e.method = 12; });
    changed("by the packer's own encryption", "not supported", [](ZipEntry &e) { e.flags = 0x41; });
    changed("with a masked directory", "not supported", [](ZipEntry &e) { e.flags = 0x2000; });
    changed("as a patch", "not supported", [](ZipEntry &e) { e.flags = 0x20; });
    changed("by AES that is not told", "its encryption is not told", [](ZipEntry &e) {
        e.method = 99;
        e.flags = 1;
    });
    changed("encrypted, without a password", "there is no password",
            [](ZipEntry &e) { e.flags = 1; });

    ZipBuilder twoNames{game};
    ZipEntry other = game;
    other.name = "other.exe";
    twoNames.addToDirectory(other, 0);
    row("two members with the same data", twoNames.bytes(), "overlap");
    row(
        "data that reaches into the next member",
        [] {
            ZipEntry outer("a", QByteArray(10, 'a'));
            outer.packedField = 60;
            outer.sizeField = 60;
            return ZipBuilder{outer, {"b", QByteArray(100, 'b')}}.bytes();
        }(),
        "overlap");
    // The bytes between two members are few: only the member's own header tells of the rest.
    row(
        "data that reaches into the next member by its own header",
        [] {
            ZipEntry outer("a", QByteArray(10, 'a'));
            outer.packedField = 70;
            outer.sizeField = 70;
            outer.localExtra = QByteArray(61, '\0');
            return ZipBuilder{outer, {"b", QByteArray(100, 'b')}}.bytes();
        }(),
        "overlap");

    const auto ending = [&](const char *what, const char *why, void (*change)(ZipBuilder &)) {
        ZipBuilder builder{game};
        change(builder);
        row(what, builder.bytes(), why);
    };
    ending("more members counted than there are", "not whole", [](ZipBuilder &b) { b.count = 2; });
    ending("fewer members counted than there are", "not whole", [](ZipBuilder &b) { b.count = 0; });
    ending("a directory larger than the archive", "does not lie in it",
           [](ZipBuilder &b) { b.directorySize = 100000; });
    ending("a directory behind the archive", "does not lie in it",
           [](ZipBuilder &b) { b.directoryAt = 100000; });
    ending("a part of several", "one part of several", [](ZipBuilder &b) { b.disk = 1; });
    ZipBuilder wide{game};
    wide.count = 1000000;
    row("zip64 that counts a million", wide.wideBytes(), "more members than it has");
}

void TestVerdict::refused()
{
    QFETCH(QByteArray, archive);
    QFETCH(QByteArray, why);
    const QByteArray words = wordsOf(verdictOf(archive));
    QVERIFY2(words.contains(why), words.constData());
}

// Cut anywhere, it is refused and nothing is read that is not there.
void TestVerdict::everyLength()
{
    const QByteArray archive =
        ZipBuilder{ZipEntry::deflated("a", QByteArray(300, 'a')), {"b/c", "content"}}.wideBytes();
    for (int length = 0; length < archive.size(); ++length) {
        QVERIFY2(!verdictOf(archive.left(length)).accepted, QByteArray::number(length).constData());
    }
    QVERIFY(verdictOf(archive).accepted);
}

void TestVerdict::listsTheMembers()
{
    ZipEntry locked("c", "twelve bytes and more");
    locked.flags = 1;
    const Extract::Verdict verdict = verdictOf(
        ZipBuilder{{"a/", ""}, ZipEntry::deflated("a/b", QByteArray(100, 'b')), locked}.bytes());
    QCOMPARE(int(verdict.members.size()), 3);
    QVERIFY(verdict.members[0].folder && !verdict.members[1].folder);
    QCOMPARE(verdict.members[0].name, std::string("a"));
    QCOMPARE(verdict.members[1].name, std::string("a/b"));
    QCOMPARE(quint64(verdict.members[1].size), quint64(100));
    QVERIFY(!verdict.members[1].encrypted && verdict.members[2].encrypted);
    QVERIFY(!verdict.accepted);
    QCOMPARE(verdict.member, std::string("c"));
}

// However many workers there are, and whichever of them is the first to find something.
void TestVerdict::tellsTheFirstOfTheDamaged()
{
    ZipEntry large = ZipEntry::deflated("first", QByteArray(8 << 20, 'x'));
    large.crc = 1;
    ZipBuilder archive{{"sound", "content"}, large};
    for (int i = 0; i < 64; ++i) {
        ZipEntry later(QByteArray::number(i), "content");
        later.crc = 1;
        archive.add(later);
    }
    const Extract::Verdict verdict = verdictOf(archive.bytes());
    QCOMPARE(verdict.member, std::string("first"));
    QCOMPARE(verdict.reason, std::string("its sum is wrong: it is damaged"));
}

// Looking at the directory alone does not find what only the contents tell.
void TestVerdict::withoutTheContents()
{
    ZipEntry wrong("a", "content");
    wrong.crc = 1;
    const std::string damaged = ZipBuilder{wrong}.bytes().toStdString();
    QVERIFY(Extract::judged(Extract::MemoryBytes(damaged)).accepted);
    QVERIFY(!Extract::verified(Extract::MemoryBytes(damaged), {}).accepted);
    const std::string twice = ZipBuilder{{"a", "1"}, {"A", "2"}}.bytes().toStdString();
    QVERIFY(!Extract::judged(Extract::MemoryBytes(twice)).accepted);
}

// Of every file once, whatever its size; of a folder there is nothing to see.
void TestVerdict::looksAtTheBeginnings()
{
    ZipBuilder archive{{"a/", ""}, {"a/none", ""}, {"short", "12"}};
    for (int i = 0; i < 50; ++i) {
        const QByteArray letter(1, static_cast<char>('A' + i % 26));
        archive.add(ZipEntry::deflated("long" + QByteArray::number(i), letter.repeated(200000)));
    }
    const std::string bytes = archive.bytes().toStdString();
    QMap<std::string, std::string> seen;
    const Extract::Verdict verdict =
        Extract::verified(Extract::MemoryBytes(bytes), {},
                          [&seen](const std::string &member, const std::string &beginning) {
                              QVERIFY(!seen.contains(member));
                              seen.insert(member, beginning);
                          });
    QVERIFY(verdict.accepted);
    QCOMPARE(seen.size(), 52);
    QCOMPARE(seen.value("a/none"), std::string());
    QCOMPARE(seen.value("short"), std::string("12"));
    QCOMPARE(seen.value("long27"), std::string(Extract::lookedAt, 'B'));
}

// Whatever byte of the data is changed is noticed; of the first and the last one not every bit
// means something.
void TestVerdict::oneByteChanged()
{
    QByteArray content;
    for (int i = 0; i < 400; ++i) {
        content += static_cast<char>(i * i >> 3);
    }
    const ZipEntry entry = ZipEntry::deflated("a", content);
    const QByteArray archive = ZipBuilder{entry}.bytes();
    const int begin = 30 + 1;
    for (int place = begin + 1; place < begin + entry.content.size() - 1; ++place) {
        QByteArray damaged = archive;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x10);
        QVERIFY2(!verdictOf(damaged).accepted, QByteArray::number(place).constData());
    }
}

QTEST_GUILESS_MAIN(TestVerdict)
#include "tst_verdict.moc"
