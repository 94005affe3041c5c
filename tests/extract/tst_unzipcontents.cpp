#include "extract/extractor.h"
#include "extract/zipbuilder.h"
#include "support/scratchfolder.h"
#include "support/texts.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

using Extractor::Ended;
using Extractor::unpack;
using Texts::names;
using Texts::text;
using ZipBytes::field;
using ZipBytes::number;

namespace
{
const QString target = QStringLiteral("Alpha/Official/1.0");

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

// Names of what lies beside the folder that is unpacked into.
QStringList beside(const QString &folder)
{
    return QDir(QFileInfo(folder).path())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

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

// What unpacking makes of members: contents, encryption, times, modes.
class TestUnzipContents : public QObject
{
    Q_OBJECT

private slots:
    void nothingWhereFilesAreLarge();
    void largeMembers();
    void manyMembers();
    void passwords_data();
    void passwords();
    void ofAnotherPacker_data();
    void ofAnotherPacker();
    void damagedAuthenticationCode();
    void damagedCodeOfALargeMember();
    void modificationTimes_data();
    void modificationTimes();
    void timesOfFolders();
#ifndef Q_OS_WIN
    void executeBits();
#endif
};

// Too large to be held in memory, and wrong at the end only.
void TestUnzipContents::nothingWhereFilesAreLarge()
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

void TestUnzipContents::largeMembers()
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

void TestUnzipContents::manyMembers()
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

void TestUnzipContents::passwords_data()
{
    QTest::addColumn<QByteArray>("encoded");
    QTest::newRow("UTF-8") << QByteArray("\xC3\xBC"
                                         "ber-\xC3\x9F");
    QTest::newRow("code page 437") << QByteArray("\x81"
                                                 "ber-\xE1");
    QTest::newRow("code page 1252") << QByteArray("\xFC"
                                                  "ber-\xDF");
}

void TestUnzipContents::passwords()
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

void TestUnzipContents::ofAnotherPacker_data()
{
    QTest::addColumn<QString>("archive");
    // AES of the newer kind, without a sum; a packed, a stored and an empty file.
    for (const char *name : {"aes128", "aes192", "aes256", "zipcrypto"}) {
        QTest::newRow(name) << text(":/archives/") + text(name) + text(".zip");
    }
}

void TestUnzipContents::ofAnotherPacker()
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

void TestUnzipContents::damagedAuthenticationCode()
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

// Inflating ends before the code is read: it is asked for all the same.
void TestUnzipContents::damagedCodeOfALargeMember()
{
    QByteArray bytes = ScratchFolder::read(text(":/archives/aeslarge.zip"));
    const ScratchFolder scratch;
    QCOMPARE(unpack(bytes, target, text("sesame")).error, QByteArray());
    QCOMPARE(QFileInfo(target + text("/large.txt")).size(), qint64(40 << 20));
    const int last = bytes.indexOf("PK\1\2") - 1;
    bytes[last] = static_cast<char>(bytes[last] ^ 1);
    const Ended ended = unpack(bytes, text("other"), text("sesame"));
    QCOMPARE(ended.code, 1);
    QVERIFY2(ended.error.contains("authentication code"), ended.error.constData());
}

void TestUnzipContents::modificationTimes_data()
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

void TestUnzipContents::modificationTimes()
{
    QFETCH(QByteArray, extra);
    QFETCH(QDateTime, time);
    const ScratchFolder scratch;
    ZipEntry entry("a", "a");
    entry.extra = extra;
    QCOMPARE(unpack(ZipBuilder{entry}.bytes(), target).error, QByteArray());
    QCOMPARE(QFileInfo(target + text("/a")).lastModified(), time);
}

void TestUnzipContents::timesOfFolders()
{
    const ScratchFolder scratch;
    QCOMPARE(unpack(ZipBuilder{{"data/", ""}, {"data/a", "a"}}.bytes(), target).code, 0);
    QCOMPARE(QFileInfo(target + text("/data")).lastModified(),
             QDateTime(QDate(2020, 1, 1), QTime(12, 0)));
}

#ifndef Q_OS_WIN
void TestUnzipContents::executeBits()
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
#endif

QTEST_GUILESS_MAIN(TestUnzipContents)
#include "tst_unzipcontents.moc"
