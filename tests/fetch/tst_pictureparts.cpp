#include "fetch/pictureparts.h"
#include "picturefiles.h"

#include <QTest>

namespace
{
// Of 9 x 7 pixels, as a common program writes it.
QByteArray smallGif()
{
    return QByteArray::fromHex(
        "47494638376109000700810000333333666666999999cccccc2c0000000009000700000828000508"
        "080080e0c00001040e1838b060428208192614785060c4000b0f0ec0b8f120c28916050404003b");
}
} // namespace

// What is told of picture files by their parts.
class TestPictureParts : public QObject
{
    Q_OBJECT

private slots:
    void pngKeepsWhatDecidesAboutLooks();
    void pngThatBreaksOff();
    void otherBytesStay_data();
    void otherBytesStay();

    void scans_data();
    void scans();

    void gifPixels_data();
    void gifPixels();
    void gifThatBreaksOff_data();
    void gifThatBreaksOff();
    void gifDataBehindItsEnd();

    void pictureWithinAnIcon();
    void sizeThatAnIconLeavesToItsPicture();
};

void TestPictureParts::pngKeepsWhatDecidesAboutLooks()
{
    using namespace PictureFiles;
    const QByteArray head = pngHead(3, 2);
    const QByteArray kept = chunk("PLTE", "abc") + chunk("tRNS", "a") + chunk("gAMA", "abcd") +
                            chunk("cHRM", "c") + chunk("sRGB", "a") + chunk("sBIT", "b") +
                            chunk("bKGD", "c") + chunk("pHYs", "d") + chunk("IDAT", "data") +
                            chunk("IDAT", "") + chunk("IDAT", "more");
    const QByteArray end = chunk("IEND", "");
    QCOMPARE(withoutRestOfPng(head + kept + end), head + kept + end);
    const QByteArray dropped = chunk("zTXt", "x") + chunk("iTXt", "") + chunk("tEXt", "x") +
                               chunk("iCCP", "x") + chunk("eXIf", "x") + chunk("acTL", "x") +
                               chunk("idat", "x") + chunk("zzzz", QByteArray(1000, '\0'));
    QCOMPARE(withoutRestOfPng(head + dropped + kept + dropped + end + dropped), head + kept + end);
    // Each but the data once.
    QCOMPARE(withoutRestOfPng(head + chunk("gAMA", "abcd").repeated(1000) + end),
             head + chunk("gAMA", "abcd") + end);
}

void TestPictureParts::pngThatBreaksOff()
{
    using namespace PictureFiles;
    const QByteArray head = pngHead(3, 2);
    const QByteArray data = chunk("IDAT", "some data");
    QCOMPARE(withoutRestOfPng(head), head);
    QCOMPARE(withoutRestOfPng(head + data.left(10)), head + data.left(10));
    QCOMPARE(withoutRestOfPng(head + data + chunk("zTXt", "text").left(9)), head + data);
    QCOMPARE(withoutRestOfPng(head + data + QByteArray("\0\0\0", 3)), head + data);
    // A length beyond the file's end.
    QCOMPARE(withoutRestOfPng(head + QByteArray("\xff\xff\xff\xffzTXt") + data), head);
    const QByteArray endless = QByteArray("\xff\xff\xff\xffIDAT") + data;
    QCOMPARE(withoutRestOfPng(head + endless), head + endless);
}

void TestPictureParts::otherBytesStay_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("none") << QByteArray();
    QTest::newRow("a text") << QByteArray("no picture");
    QTest::newRow("a JPEG file's first bytes") << QByteArray("\xff\xd8\xff\xe0");
    QTest::newRow("an icon file's first bytes") << QByteArray("\0\0\1\0\1\0", 6);
    QTest::newRow("half a signature") << QByteArray("\x89PNG");
}

void TestPictureParts::otherBytesStay()
{
    QFETCH(QByteArray, bytes);
    QCOMPARE(withoutRestOfPng(bytes), bytes);
    QCOMPARE(withoutIconAround(bytes), bytes);
    QCOMPARE(scansOfJpeg(bytes), 0);
    QCOMPARE(pixelsInGif(bytes), qint64(0));
    QVERIFY(bytes.startsWith(QByteArray("\0\0\1\0", 4)) || !sizeInIcon(bytes).isValid());
}

void TestPictureParts::scans_data()
{
    QTest::addColumn<QByteArray>("rest");
    QTest::addColumn<int>("scans");
    const QByteArray scan = QByteArray::fromHex("ffda0004aabb");
    const QByteArray end = QByteArray::fromHex("ffd9");
    QTest::newRow("none") << end << 0;
    QTest::newRow("one") << scan + "data" + end << 1;
    QTest::newRow("one that breaks off") << scan + "data" << 1;
    QTest::newRow("three") << (scan + "data").repeated(3) + end << 3;
    QTest::newRow("a byte of ones within the data")
        << scan + QByteArray::fromHex("ff00da11ff00ff00") + end << 1;
    QTest::newRow("restarts within the data")
        << scan + QByteArray::fromHex("11ffd022ffd133ffd744") + end << 1;
    QTest::newRow("bytes that fill up before a marker")
        << scan + QByteArray::fromHex("11ffffff") + scan.mid(1) + end << 2;
    QTest::newRow("a small picture within a segment")
        << QByteArray::fromHex("ffe1000affda0004aabbffd9") + scan + "data" + end << 1;
    QTest::newRow("a segment longer than the file") << QByteArray::fromHex("ffe1ffff") + scan << 0;
    QTest::newRow("a segment of no length") << QByteArray::fromHex("ffe10000") + scan + end << 1;
    QTest::newRow("behind the end") << scan + end + scan.repeated(100) << 1;
    QTest::newRow("tables between")
        << scan + QByteArray::fromHex("ffc40005010203") + scan + end << 2;
}

void TestPictureParts::scans()
{
    QFETCH(QByteArray, rest);
    QFETCH(int, scans);
    QCOMPARE(scansOfJpeg(QByteArray::fromHex("ffd8") + rest), scans);
    QCOMPARE(scansOfJpeg(rest), 0);
}

void TestPictureParts::gifPixels_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<qint64>("pixels");
    const QByteArray small = smallGif();
    QTest::newRow("as a common program writes it") << small << qint64(63);
    QTest::newRow("broken off ahead of its data") << small.left(36) << qint64(0);
    QTest::newRow("another picture behind it")
        << small + small.mid(small.indexOf(',')) << qint64(63);
    // Each code unpacks to one pixel more than the one before, until the table is full.
    QTest::newRow("as much as possible") << PictureFiles::gifBomb(10) << qint64(1 + 54 + 11);
    constexpr qint64 codes = 4096 - 6;
    QTest::newRow("more and more of it")
        << PictureFiles::gifBomb(codes + 1000) << 1 + codes * (codes + 3) / 2 + 1000 * (codes + 1);
}

void TestPictureParts::gifPixels()
{
    QFETCH(QByteArray, bytes);
    QFETCH(qint64, pixels);
    QCOMPARE(pixelsInGif(bytes), pixels);
}

void TestPictureParts::gifThatBreaksOff_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("breaksOff");
    const QByteArray small = smallGif();
    QTest::newRow("whole") << small << false;
    QTest::newRow("without its last byte") << small.left(small.size() - 1) << false;
    QTest::newRow("half") << small.left(60) << true;
    QTest::newRow("without data") << small.left(36) << true;
    QTest::newRow("a head alone") << small.left(13) << false;
    QTest::newRow("a second picture that breaks off")
        << small + small.mid(small.indexOf(',')).left(30) << false;
    QTest::newRow("no GIF file") << QByteArray("\x89PNG,,,,,,,,,,") << false;
}

void TestPictureParts::gifThatBreaksOff()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, breaksOff);
    QCOMPARE(breaksOffInGif(bytes), breaksOff);
}

// The decoder begins anew there.
void TestPictureParts::gifDataBehindItsEnd()
{
    const QByteArray few = PictureFiles::gifBomb(10, QByteArray(200, '\0'));
    QCOMPARE(pixelsInGif(few), pixelsInGif(PictureFiles::gifBomb(10)));
    const QByteArray many = PictureFiles::gifBomb(10, QByteArray(5000, '\0'));
    QVERIFY(pixelsInGif(many) > qint64(1) << 40);
}

void TestPictureParts::pictureWithinAnIcon()
{
    const QByteArray png = PictureFiles::pngHead(3, 2) + "and more";
    const QByteArray icon = PictureFiles::iconAround(png);
    QCOMPARE(withoutIconAround(icon), png);
    QCOMPARE(withoutIconAround(icon.left(icon.size() - 4)), icon.left(icon.size() - 4).mid(22));
    const QByteArray other = PictureFiles::iconAround("no png");
    QCOMPARE(withoutIconAround(other), other);
    QByteArray elsewhere = icon;
    elsewhere[6 + 15] = '\x7f';
    QCOMPARE(withoutIconAround(elsewhere), elsewhere);
}

void TestPictureParts::sizeThatAnIconLeavesToItsPicture()
{
    QByteArray head(40, '\0');
    head[0] = 40;
    head[5] = 0x10; // 4096
    head[9] = 0x20; // 8192
    QByteArray icon = PictureFiles::iconAround(head);
    QCOMPARE(sizeInIcon(icon), QSize(4096, 8192));
    icon[6] = 16;
    icon[7] = 32;
    QCOMPARE(sizeInIcon(icon), QSize(16, 32));
    icon[6 + 15] = '\x7f';
    QVERIFY(!sizeInIcon(icon).isValid());
}

QTEST_GUILESS_MAIN(TestPictureParts)
#include "tst_pictureparts.moc"
