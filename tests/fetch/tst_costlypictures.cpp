#include "busypool.h"
#include "fetch/imagedownloader.h"
#include "fetch/picturesize.h"
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
    void arrivedPictureIsDecodedAtOnce();
    void allPicturesTogether();
};

// The window's thread stands still meanwhile in none of these.
void TestCostlyPictures::whatTakesLongIsDecodedElsewhere()
{
    QImage wall(3000, 2000, QImage::Format_Mono);
    wall.fill(0);
    const QByteArray large = encoded(wall, "PNG");
    QVERIFY(takesLongToDecode(large));
    QVERIFY(takesLongToDecode(QByteArray(600 * 1024, 'x')));
    QVERIFY(!takesLongToDecode(busyPicture(325, 325)));
    BusyPool pool;
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(large), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadImage();
    QTRY_VERIFY(downloader.m_newestWaits);
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

// Whoever needs it does not wait for the pool, and what comes of that later is nobody's.
void TestCostlyPictures::arrivedPictureIsDecodedAtOnce()
{
    QImage wall(3000, 2000, QImage::Format_Mono);
    wall.fill(0);
    BusyPool pool;
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(encoded(wall, "PNG")), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadImage();
    QTRY_VERIFY(downloader.m_newestWaits);
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
