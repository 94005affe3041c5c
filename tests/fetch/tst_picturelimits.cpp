#include "fetch/imagedownloader.h"
#include "fetch/picturesize.h"
#include "picturefiles.h"
#include "picturetest.h"
#include "support/consolecapture.h"
#include "support/httpserver.h"
#include "support/messagelog.h"
#include "support/scratchfolder.h"
#include "support/testsettings.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QImageWriter>
#include <QPixmap>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

#include <array>
#include <utility>
#include <vector>

// Pictures that are too large, broken, or none at all.
class TestPictureLimits : public PictureTest
{
    Q_OBJECT

private slots:
    void reasonableSize_data();
    void reasonableSize();
    void sizeThatIsNotTold();
    void sizeThatTheFrameHides();
    void iconThatAsksForMore();
    void iconWhosePictureIsLarge();
    void unreasonableWork_data();
    void unreasonableWork();
    void partsThatAreNotShown_data();
    void partsThatAreNotShown();
    void manyScans();

    void dataOfHonestPictures_data();
    void dataOfHonestPictures();
    void noPicture_data();
    void noPicture();
    void brokenPicture_data();
    void brokenPicture();
    void statusIsNotLookedAt_data();
    void statusIsNotLookedAt();
};

void TestPictureLimits::reasonableSize_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("reasonable");
    QTest::newRow("the largest") << 8000 << 4500 << true;
    QTest::newRow("one row more") << 8000 << 4501 << false;
    QTest::newRow("the largest screen") << 7680 << 4320 << true;
    QTest::newRow("a strip") << 20000 << 900 << true;
    QTest::newRow("a ribbon") << 30000 << 533 << true;
    QTest::newRow("both sides long") << 12000 << 12000 << false;
}

// Few bytes, many pixels.
void TestPictureLimits::reasonableSize()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(bool, reasonable);
    QImage picture(width, height, QImage::Format_Mono);
    picture.fill(1);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QVERIFY(buffer.open(QIODevice::WriteOnly));
    QVERIFY(picture.save(&buffer, "PNG"));
    QCOMPARE(isPictureOfReasonableSize(bytes), reasonable);
    m_server->serve(QStringLiteral("picture"), bytes);
    PictureLabel label({20, 10});
    ImageDownloader downloader(QUrl(pictureUrl()), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadImage();
    QVERIFY(loaded.wait(30000));
    QCOMPARE(downloader.getOriginalPixmap()->isNull(), !reasonable);
    QCOMPARE(label.pixmap(Qt::ReturnByValue).isNull(), !reasonable);
}

void TestPictureLimits::sizeThatIsNotTold()
{
    QVERIFY(isPictureOfReasonableSize(QByteArray()));
    QVERIFY(isPictureOfReasonableSize("no picture"));
}

// A GIF file tells the size of the whole apart from those of its frames; here the frame is empty,
// and the whole has 54 million pixels.
void TestPictureLimits::sizeThatTheFrameHides()
{
    const QByteArray bytes =
        QByteArray::fromHex("47494638376147"
                            "0a3f50810000333333666666999999cccccc2c000000000700000828000500"
                            "0001040e3b");
    QVERIFY(!isPictureOfReasonableSize(bytes));
    QByteArray smaller = bytes;
    smaller[9] = 1; // 2631 x 319
    QVERIFY(isPictureOfReasonableSize(smaller));
    QVERIFY(isPictureOfReasonableSize(bytes.left(9)));
}

// An icon file whose entry claims to have a gigabyte.
void TestPictureLimits::iconThatAsksForMore()
{
    QImage picture(16, 16, QImage::Format_ARGB32);
    picture.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QVERIFY(buffer.open(QIODevice::WriteOnly));
    QVERIFY(picture.save(&buffer, "ICO"));
    QVERIFY(isPictureOfReasonableSize(bytes));
    constexpr int highestByteOfSize = 6 + 11;
    QByteArray greedy = bytes;
    greedy[highestByteOfSize] = 0x40;
    QVERIFY(!isPictureOfReasonableSize(greedy));
    QByteArray ofCursors = greedy;
    ofCursors[2] = 2;
    QVERIFY(!isPictureOfReasonableSize(ofCursors));
    QByteArray withoutEntries = bytes.left(6);
    QVERIFY(!isPictureOfReasonableSize(withoutEntries));
    QVERIFY(isPictureOfReasonableSize(bytes.left(5)));
}

// The entry leaves the size to the picture, or holds a whole PNG file.
void TestPictureLimits::iconWhosePictureIsLarge()
{
    QByteArray head(40, '\0');
    head[0] = 40;
    head[6] = 1; // 65536
    head[9] = 2; // 512, for picture and mask
    QVERIFY(isPictureOfReasonableSize(PictureFiles::iconAround(head)));
    head[10] = 1;
    QVERIFY(!isPictureOfReasonableSize(PictureFiles::iconAround(head)));
    const QByteArray png = encoded(busyImage(300, 200), "PNG");
    QCOMPARE(plain(decodedPicture(PictureFiles::iconAround(png))), decoded(png));
    const QByteArray large = PictureFiles::pngHead(60000, 60000) + png.mid(33);
    QVERIFY(!isPictureOfReasonableSize(PictureFiles::iconAround(large)));
}

void TestPictureLimits::unreasonableWork_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("60000 x 60000 pixels")
        << PictureFiles::pngHead(60000, 60000) + busyPicture(5, 5).mid(33);
    // Three seconds to unpack, for a picture of 100 x 100.
    QTest::newRow("data for more pixels than the picture has") << PictureFiles::gifBomb(100000);
    // A gigabyte.
    const QByteArray behind = PictureFiles::pngBomb(1000 * 1000);
    QTest::newRow("data behind the last row") << behind;
    QTest::newRow("the same in an icon") << PictureFiles::iconAround(behind);
    QTest::newRow("numbers without an end")
        << "P3 3000 1900 255\n" + QByteArray("9 ").repeated(3000 * 1900 * 3);
}

void TestPictureLimits::unreasonableWork()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!isPictureOfReasonableSize(bytes));
    QVERIFY(decodedPicture(bytes).isNull());
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(bytes), &label);
    QVERIFY(download(downloader));
    QVERIFY(downloader.getOriginalPixmap()->isNull());
    QVERIFY(label.pixmap(Qt::ReturnByValue).isNull());
}

void TestPictureLimits::partsThatAreNotShown_data()
{
    QTest::addColumn<int>("times");
    QTest::addColumn<bool>("inIcon");
    QTest::newRow("a text") << 1 << false;
    QTest::newRow("texts that unpack to hundreds of megabytes") << 40 << false;
    QTest::newRow("the same in an icon") << 40 << true;
}

// The decoder would unpack them all, and the toolkit keep them with the picture.
void TestPictureLimits::partsThatAreNotShown()
{
    QFETCH(int, times);
    QFETCH(bool, inIcon);
    const QByteArray picture = busyPicture(9, 7);
    constexpr int behindHead = 33;
    QByteArray bytes = picture;
    bytes.insert(behindHead, PictureFiles::pngText(7900000).repeated(times));
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(inIcon ? PictureFiles::iconAround(bytes) : bytes), &label);
    QVERIFY(download(downloader));
    QCOMPARE(originalOf(downloader), decoded(picture));
    QCOMPARE(downloader.getOriginalPixmap()->toImage().textKeys(), QStringList());
    QCOMPARE(shownOn(label), stretched(picture, {20, 10}));
}

// A progressive picture has about ten of them; small ones may have more than large ones.
void TestPictureLimits::manyScans()
{
    const auto progressive = [](const QSize &size) {
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::gray);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        QImageWriter writer(&buffer, "jpg");
        writer.setProgressiveScanWrite(true);
        return writer.write(image) ? bytes : QByteArray();
    };
    // The last scan so many times more.
    const auto withScans = [](const QByteArray &bytes, int more) {
        const int last = bytes.lastIndexOf("\xff\xda");
        return bytes.left(bytes.size() - 2) +
               bytes.mid(last, bytes.size() - 2 - last).repeated(more) + bytes.right(2);
    };
    const QByteArray small = progressive({80, 60});
    QVERIFY(!decodedPicture(small).isNull());
    QVERIFY(!decodedPicture(withScans(small, 50)).isNull());
    QVERIFY(decodedPicture(withScans(small, 3000)).isNull());
    QVERIFY(!isPictureOfReasonableSize(withScans(small, 3000)));
    // A decoder that looks for its place again passes markers that mean nothing, and reads on
    // behind.
    const int data = small.lastIndexOf("\xff\xda");
    const QByteArray hidden = small.left(small.size() - 2) + QByteArray("\xff\x02\xfe\xfe") +
                              small.mid(data, small.size() - 2 - data).repeated(3000) +
                              small.right(2);
    QVERIFY(!isPictureOfReasonableSize(hidden));
    const QByteArray large = progressive({7680, 4320});
    QVERIFY(isPictureOfReasonableSize(large));
    QVERIFY(!isPictureOfReasonableSize(withScans(large, 50)));
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(withScans(small, 3000)), &label);
    QVERIFY(download(downloader));
    QVERIFY(downloader.getOriginalPixmap()->isNull());
}

// What decoders ask for and what they are given, in every kind of PNG file.
void TestPictureLimits::dataOfHonestPictures_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QImage noise(700, 500, QImage::Format_RGBA64);
    for (int y = 0; y < noise.height(); ++y) {
        auto *row = reinterpret_cast<quint32 *>(noise.scanLine(y));
        QRandomGenerator(static_cast<quint32>(y)).fillRange(row, noise.bytesPerLine() / 4);
    }
    const std::vector<std::pair<const char *, QImage::Format>> formats{
        {"sixteen bits", QImage::Format_RGBA64},
        {"transparent", QImage::Format_ARGB32},
        {"true colour", QImage::Format_RGB32},
        {"grey", QImage::Format_Grayscale8},
        {"a table of colours", QImage::Format_Indexed8}};
    for (const auto &[name, format] : formats) {
        QTest::newRow(name) << encoded(noise.convertToFormat(format), "PNG");
    }
    QTest::newRow("one bit") << encoded(
        QImage(6000, 5900, QImage::Format_Mono).convertToFormat(QImage::Format_Mono), "PNG");
    // Each of seven pictures holds a part of the pixels, in true colour; the numbers are theirs.
    constexpr std::array<std::pair<int, int>, 7> parts{
        {{88, 63}, {87, 63}, {175, 62}, {175, 125}, {350, 125}, {350, 250}, {700, 250}}};
    QByteArray rows;
    for (const auto &[width, height] : parts) {
        for (int row = 0; row < height; ++row) {
            rows += '\0' + QByteArray(3 * width, '\x55');
        }
    }
    QByteArray packed = PackedBytes::pack(rows, PackedBytes::Deflate);
    QTest::newRow("interlaced") << PictureFiles::pngHead(700, 500, true) +
                                       PictureFiles::chunk("IDAT", packed) +
                                       PictureFiles::chunk("IEND", {});
}

void TestPictureLimits::dataOfHonestPictures()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(isPictureOfReasonableSize(bytes));
    QVERIFY(!decodedPicture(bytes).isNull());
}

void TestPictureLimits::noPicture_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("an empty body") << 200 << QByteArray();
    QTest::newRow("plain text") << 200 << QByteArray("this is no picture");
    QTest::newRow("NUL bytes") << 200 << QByteArray(64, '\0');
    QTest::newRow("a page") << 200 << QByteArray("<html><body>picture</body></html>");
    QTest::newRow("not found, with a page") << 404 << QByteArray("<html>not found</html>");
    QTest::newRow("not found, without a body") << 404 << QByteArray();
    QTest::newRow("a server error") << 500 << QByteArray("out of order");
    QTest::newRow("a redirect") << 302 << QByteArray();
    QTest::newRow("nobody listens") << 0 << QByteArray();
    QTest::newRow("no address at all") << -1 << QByteArray();
}

void TestPictureLimits::noPicture()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    ScratchFolder::write(QStringLiteral("picture.png"), busyPicture(9, 9));
    m_server->serve(QStringLiteral("picture"), body, status);
    m_server->serve(QStringLiteral("target"), busyPicture(5, 5));
    if (status == 302) {
        m_server->redirect(QStringLiteral("picture"), m_server->url(QStringLiteral("target")),
                           body);
    }
    QUrl address(pictureUrl());
    if (status == 0) {
        address = QUrl(QLatin1String(TestSettings::nobodyListens) + QStringLiteral("picture"));
    } else if (status < 0) {
        address = QUrl();
    }
    PictureLabel label({20, 10});
    label.setPixmap(QPixmap(20, 10));
    ImageDownloader downloader(address, &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    {
        ConsoleCapture console;
        const MessageLog log;
        QVERIFY(download(downloader));
        QCOMPARE(MessageLog::messages(), QStringList());
        QCOMPARE(console.out() + console.err(), QByteArray());
    }
    QCOMPARE(loaded.count(), 1);
    QCOMPARE(downloader.isDownloaded, true);
    QVERIFY(label.pixmap(Qt::ReturnByValue).isNull());
    QVERIFY(downloader.getOriginalPixmap() != nullptr);
    QVERIFY(downloader.getOriginalPixmap()->isNull());
    QVERIFY(QFile::exists(QStringLiteral("picture.png")));
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), QByteArray());
    QCOMPARE(m_server->requests(QStringLiteral("target")), 0);

    // It counts as downloaded: asking again stays empty and asks nobody.
    const int before = requests();
    const MessageLog log;
    downloader.downloadImage();
    QVERIFY(label.pixmap(Qt::ReturnByValue).isNull());
    QVERIFY(downloader.isDownloaded);
    QCOMPARE(requests(), before);
    QCOMPARE(MessageLog::messages(), QStringList());
}

void TestPictureLimits::brokenPicture_data()
{
    QTest::addColumn<bool>("connectionIsCut");
    QTest::newRow("the server sends half of it") << false;
    QTest::newRow("the connection is cut half-way") << true;
}

// The decoder of the toolkit may say a word about it; the launcher does not.
void TestPictureLimits::brokenPicture()
{
    QFETCH(bool, connectionIsCut);
    const QByteArray source = busyPicture(200, 200);
    if (connectionIsCut) {
        m_server->serveCut(QStringLiteral("picture"), source, source.size() / 2);
    } else {
        m_server->serve(QStringLiteral("picture"), source.left(source.size() / 2));
    }
    PictureLabel label({20, 10});
    label.setPixmap(QPixmap(20, 10));
    ImageDownloader downloader(QUrl(pictureUrl()), &label);
    const MessageLog log;
    QVERIFY(download(downloader));
    QVERIFY(label.pixmap(Qt::ReturnByValue).isNull());
    QVERIFY(downloader.getOriginalPixmap()->isNull());
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("picture.png")});
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), QByteArray());
}

void TestPictureLimits::statusIsNotLookedAt_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("not found") << 404;
    QTest::newRow("a server error") << 500;
    QTest::newRow("a redirect") << 302;
}

void TestPictureLimits::statusIsNotLookedAt()
{
    QFETCH(int, status);
    const QByteArray source = busyPicture(6, 5);
    m_server->serve(QStringLiteral("picture"), source, status);
    if (status == 302) {
        m_server->redirect(QStringLiteral("picture"), m_server->url(QStringLiteral("target")),
                           source);
    }
    PictureLabel label({20, 10});
    ImageDownloader downloader(QUrl(pictureUrl()), &label);
    QVERIFY(download(downloader));
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
    QCOMPARE(m_server->requests(QStringLiteral("target")), 0);
}

QTEST_MAIN(TestPictureLimits)
#include "tst_picturelimits.moc"
