#include "busypool.h"
#include "fetch/imagedownloader.h"
#include "fetch/picturesize.h"
#include "picturefiles.h"
#include "picturetest.h"
#include "support/httpserver.h"

#include <QImage>
#include <QPixmap>
#include <QSignalSpy>
#include <QTest>

// Pictures that may be shown but cost much, alone or together.
class TestCostlyPictures : public PictureTest
{
    Q_OBJECT

private slots:
    void whatTakesLongIsDecodedElsewhere();
    void looksTheSameDecodedElsewhere_data();
    void looksTheSameDecodedElsewhere();
    void arrivedPictureIsDecodedAtOnce();
    void askedForAgainMeanwhile();
    void anotherOneMeanwhile();
    void cachedOneMeanwhile();
    void goneMeanwhile();
    void allPicturesTogether();

private:
    // Fetches it up to where it waits for the pool.
    static bool arrives(ImageDownloader &downloader)
    {
        downloader.downloadImage();
        return QTest::qWaitFor([&downloader] { return downloader.m_newestWaits; }, limit);
    }
};

// The window's thread stands still meanwhile in none of these.
void TestCostlyPictures::whatTakesLongIsDecodedElsewhere()
{
    QImage wall(3000, 2000, QImage::Format_Mono);
    wall.fill(0);
    const QByteArray large = encoded(wall, "PNG");
    QVERIFY(takesLongToDecode(large));
    QVERIFY(takesLongToDecode(QByteArray(64 * 1024 + 1, 'x')));
    QVERIFY(!takesLongToDecode(QByteArray(64 * 1024, 'x')));
    QImage tile(256, 129, QImage::Format_Mono);
    tile.fill(0);
    QVERIFY(takesLongToDecode(encoded(tile, "PNG")));
    QVERIFY(!takesLongToDecode(encoded(tile.copy(0, 0, 256, 128), "PNG")));
    // The picture in an icon may be larger than the entry says.
    QByteArray icon = PictureFiles::iconAround(large);
    icon[6] = 16;
    icon[7] = 16;
    QVERIFY(takesLongToDecode(icon));
    BusyPool pool;
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(large), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    QVERIFY(arrives(downloader));
    // The pool is busy, and the picture waits: not so a small one.
    ImageDownloader small(url(busyPicture(5, 5)), QStringLiteral("small"));
    QSignalSpy smallLoaded(&small, &ImageDownloader::loadedImage);
    small.downloadImage();
    QVERIFY(smallLoaded.wait(limit));
    QCOMPARE(loaded.count(), 0);
    QVERIFY(!downloader.isDownloaded);
    pool.release();
    QVERIFY(loaded.wait(limit));
    QCOMPARE(loaded.count(), 1);
    QCOMPARE(downloader.getOriginalPixmap()->size(), wall.size());
    QCOMPARE(shownOn(label).size(), QSize(20, 10));
}

void TestCostlyPictures::looksTheSameDecodedElsewhere_data()
{
    QTest::addColumn<QImage::Format>("format");
    QTest::addColumn<int>("alpha"); // of the least opaque pixel

    QTest::newRow("two colours") << QImage::Format_Mono << 255;
    QTest::newRow("256 colours") << QImage::Format_Indexed8 << 255;
    QTest::newRow("256 colours, some of them transparent") << QImage::Format_Indexed8 << 40;
    QTest::newRow("grey") << QImage::Format_Grayscale8 << 255;
    QTest::newRow("true colour") << QImage::Format_RGB32 << 255;
    QTest::newRow("with transparency") << QImage::Format_ARGB32 << 40;
    QTest::newRow("with transparency that is nowhere") << QImage::Format_ARGB32 << 255;
    QTest::newRow("of 16 bits a colour") << QImage::Format_RGBX64 << 255;
    QTest::newRow("of 16 bits a colour, with transparency") << QImage::Format_RGBA64 << 40;
}

void TestCostlyPictures::looksTheSameDecodedElsewhere()
{
    QFETCH(const QImage::Format, format);
    QFETCH(const int, alpha);
    QImage drawn(300, 200, QImage::Format_ARGB32);
    for (int y = 0; y < drawn.height(); ++y) {
        for (int x = 0; x < drawn.width(); ++x) {
            drawn.setPixelColor(x, y, QColor(x / 4 * 3, y, 90, y < 100 ? alpha : 255));
        }
    }
    const QByteArray bytes = encoded(drawn.convertToFormat(format), "PNG");
    QVERIFY(takesLongToDecode(bytes));
    const QImage expected = plain(QPixmap::fromImage(decodedPicture(bytes)).toImage());
    PictureLabel label({150, 100});
    ImageDownloader downloader(url(bytes), &label);
    QVERIFY(download(downloader));
    QCOMPARE(plain(downloader.getOriginalPixmap()->toImage()), expected);
    QCOMPARE(shownOn(label), expected.scaled(150, 100));
}

// Whoever needs it does not wait for the pool, and what comes of that later is nobody's.
void TestCostlyPictures::arrivedPictureIsDecodedAtOnce()
{
    QImage wall(3000, 2000, QImage::Format_Mono);
    wall.fill(0);
    BusyPool pool;
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(encoded(wall, "PNG")), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    QVERIFY(arrives(downloader));
    QCOMPARE(loaded.count(), 0);
    downloader.loadArrived();
    QCOMPARE(loaded.count(), 1);
    QCOMPARE(downloader.getOriginalPixmap()->size(), wall.size());
    pool.release();
    QVERIFY(QThreadPool::globalInstance()->waitForDone(limit));
    ImageDownloader another(url(busyPicture(5, 5)), QStringLiteral("another"));
    QVERIFY(download(another));
    QCOMPARE(loaded.count(), 1);
}

void TestCostlyPictures::askedForAgainMeanwhile()
{
    BusyPool pool;
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(busyPicture(300, 200)), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    QVERIFY(arrives(downloader));
    downloader.downloadImage();
    pool.release();
    QVERIFY(loaded.wait(limit));
    QCOMPARE(requests(), 1);
    QCOMPARE(loaded.count(), 1);
    QCOMPARE(downloader.m_waiting, 0);
    QVERIFY(downloader.isDownloaded);
}

// The first of them is nobody's any more, whenever it is ready.
void TestCostlyPictures::anotherOneMeanwhile()
{
    const QByteArray newer = busyPicture(200, 300);
    m_server->serve(QStringLiteral("newer"), newer);
    BusyPool pool;
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(busyPicture(300, 200)), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    QVERIFY(arrives(downloader));
    PictureLabel other({10, 20}, "other");
    downloader.downloadNewImage(QUrl(m_server->url(QStringLiteral("newer"))), &other);
    QVERIFY(!downloader.m_newestWaits);
    QTRY_VERIFY(downloader.m_newestWaits);
    pool.release();
    QVERIFY(loaded.wait(limit));
    QVERIFY(cacheIsWritten());
    QCoreApplication::processEvents();
    QCOMPARE(loaded.count(), 1);
    QCOMPARE(originalOf(downloader), decoded(newer));
    QCOMPARE(shownOn(other), stretched(newer, {10, 20}));
    QVERIFY(label.pixmap(Qt::ReturnByValue).isNull());
}

void TestCostlyPictures::cachedOneMeanwhile()
{
    const QByteArray older = busyPicture(5, 5);
    const QByteArray newer = busyPicture(300, 200);
    ScratchFolder::write(QStringLiteral("picture.png"), older);
    BusyPool pool;
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(newer), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    QVERIFY(arrives(downloader));
    downloader.loadBuffer();
    QCOMPARE(shownOn(label), stretched(older, {20, 10}));
    QVERIFY(!downloader.isDownloaded);
    pool.release();
    QTRY_VERIFY(downloader.isDownloaded);
    QCOMPARE(shownOn(label), stretched(newer, {20, 10}));
    QCOMPARE(loaded.count(), 2);
    QVERIFY(cacheIsWritten());
    QCOMPARE(decoded(ScratchFolder::read(QStringLiteral("picture.png"))), decoded(newer));
}

// The next start finds it in the cache all the same.
void TestCostlyPictures::goneMeanwhile()
{
    const QByteArray source = busyPicture(300, 200);
    BusyPool pool;
    {
        PictureLabel label({20, 10});
        ImageDownloader downloader(url(source), &label);
        QVERIFY(arrives(downloader));
    }
    pool.release();
    QVERIFY(cacheIsWritten());
    QCOMPARE(decoded(ScratchFolder::read(QStringLiteral("picture.png"))), decoded(source));
}

// A document may name any number of pictures, each of a few kilobytes.
void TestCostlyPictures::allPicturesTogether()
{
    const qint64 before = ImageDownloader::s_pixels;
    {
        PictureLabel label({20, 10});
        ImageDownloader first(url(busyPicture(5, 4)), &label);
        QVERIFY(download(first));
        QCOMPARE(ImageDownloader::s_pixels, before + 20);
        ImageDownloader::s_pixels = ImageDownloader::mostPixels - 19;
        PictureLabel other({20, 10}, "other");
        ImageDownloader tooMuch(url(busyPicture(5, 4)), &other);
        QVERIFY(download(tooMuch));
        QVERIFY(tooMuch.getOriginalPixmap()->isNull());
        QVERIFY(other.pixmap(Qt::ReturnByValue).isNull());
        // One that takes the place of another counts for itself alone.
        first.downloadNewImage(url(busyPicture(5, 4)), &label);
        QSignalSpy again(&first, &ImageDownloader::loadedImage);
        QVERIFY(again.wait(limit));
        QVERIFY(!first.getOriginalPixmap()->isNull());
        QCOMPARE(ImageDownloader::s_pixels, ImageDownloader::mostPixels - 19);
        ImageDownloader::s_pixels = before + 20;
    }
    QCOMPARE(ImageDownloader::s_pixels, before);
}

QTEST_MAIN(TestCostlyPictures)
#include "tst_costlypictures.moc"
