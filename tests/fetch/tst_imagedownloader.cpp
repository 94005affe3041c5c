#include "fetch/filedownloader.h"
#include "fetch/imagedownloader.h"
#include "picturetest.h"
#include "support/httpserver.h"
#include "support/messagelog.h"
#include "support/scratchfolder.h"

#include <QLabel>
#include <QPixmap>
#include <QSet>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <stdexcept>

// Fetching one picture and showing it.
class TestImageDownloader : public PictureTest
{
    Q_OBJECT

private slots:
    void madeForALabel();
    void madeForAName();
    void noLabelIsRefused();
    void nothingIsFetchedBeforeItIsAskedFor();

    void pictureFillsItsLabel_data();
    void pictureFillsItsLabel();
    void pictureStandsWhenItIsAnnounced();
    void pictureWithoutALabelIsOnlyKept();
    void labelsSizeAtArrivalCounts();
    void pictureIsDecodedOnce();
    void scaledToSizeOfNothing();

    void secondDownloadOnlyRescales();
    void secondDownloadWithoutALabelDoesNothing();
    void secondDownloadRescalesTheDisplayCopy();

    void originalStaysTheSameObject();
    void labelGoneBeforeThePictureArrives();
    void downloaderGoneBeforeThePictureArrives();
};

void TestImageDownloader::madeForALabel()
{
    PictureLabel label({40, 30}, "someLabel");
    const ImageDownloader downloader(QUrl(QStringLiteral("http://127.0.0.1:9/a.png")), &label);
    QCOMPARE(downloader.url, QUrl(QStringLiteral("http://127.0.0.1:9/a.png")));
    QCOMPARE(downloader.objectName, QStringLiteral("someLabel"));
    QCOMPARE(downloader.label.data(), &label);
    QCOMPARE(downloader.isDownloaded, false);
    QCOMPARE(downloader.createdPixmap, true);
    QVERIFY(downloader.px != nullptr);
    QVERIFY(downloader.px->isNull());
    QCOMPARE(downloader.px_orig, nullptr);
    QCOMPARE(downloader.getOriginalPixmap(), nullptr);
    QCOMPARE(downloader.getEnableLoadBuffer(), true);
    QCOMPARE(downloader.parent(), nullptr);
}

void TestImageDownloader::madeForAName()
{
    const ImageDownloader downloader(QUrl(QStringLiteral("http://127.0.0.1:9/a.png")),
                                     QStringLiteral("Alpha"));
    QCOMPARE(downloader.url, QUrl(QStringLiteral("http://127.0.0.1:9/a.png")));
    QCOMPARE(downloader.objectName, QStringLiteral("Alpha"));
    QCOMPARE(downloader.label.data(), nullptr);
    QCOMPARE(downloader.isDownloaded, false);
    QCOMPARE(downloader.createdPixmap, false);
    QCOMPARE(downloader.px, nullptr);
    QCOMPARE(downloader.px_orig, nullptr);
    QCOMPARE(downloader.getEnableLoadBuffer(), true);
    QCOMPARE(downloader.parent(), nullptr);
}

void TestImageDownloader::noLabelIsRefused()
{
    QLabel *const none = nullptr;
    QVERIFY_EXCEPTION_THROWN(ImageDownloader(QUrl(), none), std::invalid_argument);
}

void TestImageDownloader::nothingIsFetchedBeforeItIsAskedFor()
{
    PictureLabel label({40, 30});
    const QUrl address = url(busyPicture(4, 4));
    const ImageDownloader silent(address, &label);
    ImageDownloader asked(address, QStringLiteral("asked"));
    QVERIFY(download(asked));
    QCOMPARE(requests(), 1);
    QCOMPARE(silent.fd, nullptr);
}

void TestImageDownloader::pictureFillsItsLabel_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QSize>("label");
    QTest::newRow("a wide picture on a tall label") << QSize(90, 10) << QSize(33, 147);
    QTest::newRow("a tall picture on a wide label") << QSize(10, 90) << QSize(147, 33);
    QTest::newRow("a small picture on a large label") << QSize(7, 5) << QSize(559, 319);
    QTest::newRow("a large picture on a small label") << QSize(601, 403) << QSize(138, 75);
    QTest::newRow("a picture of the label's size") << QSize(40, 30) << QSize(40, 30);
    QTest::newRow("a picture of one pixel") << QSize(1, 1) << QSize(21, 12);
    QTest::newRow("a label of one pixel") << QSize(21, 12) << QSize(1, 1);
}

void TestImageDownloader::pictureFillsItsLabel()
{
    QFETCH(QSize, picture);
    QFETCH(QSize, label);
    const QByteArray source = busyPicture(picture.width(), picture.height());
    PictureLabel shown(label);
    ImageDownloader downloader(url(source), &shown);
    QVERIFY(download(downloader));

    QCOMPARE(shownOn(shown).size(), label);
    QCOMPARE(shownOn(shown), stretched(source, label));
    QCOMPARE(downloader.isDownloaded, true);
    QCOMPARE(originalOf(downloader), decoded(source));
    QCOMPARE(plain(downloader.px->toImage()), decoded(source));

    // Smoothing would mix colours that the picture does not have.
    QSet<QRgb> colours;
    const QImage original = decoded(source);
    for (int y = 0; y < original.height(); ++y) {
        for (int x = 0; x < original.width(); ++x) {
            colours << original.pixel(x, y);
        }
    }
    const QImage result = shownOn(shown);
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x) {
            QVERIFY(colours.contains(result.pixel(x, y)));
        }
    }
}

void TestImageDownloader::pictureStandsWhenItIsAnnounced()
{
    PictureLabel label({20, 10});
    const QByteArray source = busyPicture(5, 5);
    ImageDownloader downloader(url(source), &label);
    QImage onLabel;
    QImage original;
    bool isDownloaded = false;
    connect(&downloader, &ImageDownloader::loadedImage, this, [&] {
        onLabel = shownOn(label);
        original = originalOf(downloader);
        isDownloaded = downloader.isDownloaded;
    });
    QVERIFY(download(downloader));
    QCOMPARE(onLabel, stretched(source, {20, 10}));
    QCOMPARE(original, decoded(source));
    QVERIFY(isDownloaded);
}

void TestImageDownloader::pictureWithoutALabelIsOnlyKept()
{
    const QByteArray source = busyPicture(5, 5);
    ImageDownloader downloader(url(source), QStringLiteral("Alpha"));
    QVERIFY(download(downloader));
    QCOMPARE(originalOf(downloader), decoded(source));
    QCOMPARE(downloader.px, nullptr);
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("Alpha.png")});
}

void TestImageDownloader::labelsSizeAtArrivalCounts()
{
    PictureLabel label({20, 10});
    const QByteArray source = busyPicture(5, 5);
    ImageDownloader downloader(url(source), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadImage();
    label.resize(31, 17);
    QVERIFY(loaded.wait(limit));
    QCOMPARE(shownOn(label).size(), QSize(31, 17));
}

// Decoding a large picture is what keeps the player waiting.
void TestImageDownloader::pictureIsDecodedOnce()
{
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(busyPicture(5, 5)), &label);
    QVERIFY(download(downloader));
    QVERIFY(!downloader.px->isNull());
    QCOMPARE(downloader.px->cacheKey(), downloader.px_orig->cacheKey());
}

void TestImageDownloader::scaledToSizeOfNothing()
{
    const MessageLog log;
    QVERIFY(scaledToSize(QPixmap(), {20, 10}).isNull());
    QVERIFY(scaledToSize(QPixmap(5, 5), {0, 0}).isNull());
    QCOMPARE(scaledToSize(QPixmap(5, 5), {20, 10}).size(), QSize(20, 10));
    QCOMPARE(MessageLog::messages(), QStringList());
}

void TestImageDownloader::secondDownloadOnlyRescales()
{
    PictureLabel label({20, 10});
    const QByteArray source = busyPicture(50, 50);
    ImageDownloader downloader(url(source), &label);
    QVERIFY(download(downloader));
    QVERIFY(QFile::remove(QStringLiteral("picture.png")));

    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    const FileDownloader *const fetch = downloader.fd;
    label.resize(123, 45);
    downloader.downloadImage();
    // At once, and from the whole picture rather than from the small one shown before.
    QCOMPARE(shownOn(label), stretched(source, {123, 45}));
    QCOMPARE(downloader.fd, fetch);
    QCOMPARE(downloader.findChildren<FileDownloader *>().size(), 1);
    QCOMPARE(loaded.count(), 0);
    QVERIFY(cacheIsWritten());
    QCOMPARE(ScratchFolder::tree(), QStringList());
    QCOMPARE(requests(), 1);
}

void TestImageDownloader::secondDownloadWithoutALabelDoesNothing()
{
    ImageDownloader downloader(url(busyPicture(5, 5)), QStringLiteral("Alpha"));
    QVERIFY(download(downloader));
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadImage();
    QCOMPARE(loaded.count(), 0);
    QCOMPARE(downloader.findChildren<FileDownloader *>().size(), 1);
}

void TestImageDownloader::secondDownloadRescalesTheDisplayCopy()
{
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(busyPicture(5, 5)), &label);
    QVERIFY(download(downloader));
    downloader.px->fill(QColor(red));
    downloader.px_orig->fill(QColor(green));
    downloader.downloadImage();
    QCOMPARE(shownOn(label).pixel(3, 3), red);
}

void TestImageDownloader::originalStaysTheSameObject()
{
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(busyPicture(5, 5)), &label);
    QVERIFY(download(downloader));
    const QPixmap *const original = downloader.getOriginalPixmap();
    QVERIFY(original != nullptr);
    downloader.downloadImage();
    QCOMPARE(downloader.getOriginalPixmap(), original);

    m_server->serve(QStringLiteral("text"), "no picture");
    const QByteArray source = busyPicture(6, 7);
    m_server->serve(QStringLiteral("other"), source);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadNewImage(QUrl(m_server->url(QStringLiteral("text"))), &label);
    QVERIFY(loaded.wait(limit));
    QCOMPARE(downloader.getOriginalPixmap(), original);
    QVERIFY(original->isNull());
    downloader.downloadNewImage(QUrl(m_server->url(QStringLiteral("other"))), &label);
    QVERIFY(loaded.wait(limit));
    QCOMPARE(downloader.getOriginalPixmap(), original);
    QCOMPARE(plain(original->toImage()), decoded(source));
}

void TestImageDownloader::labelGoneBeforeThePictureArrives()
{
    const QByteArray source = busyPicture(5, 5);
    m_server->serveHeld(QStringLiteral("picture"), source, 20);
    auto label = std::make_unique<PictureLabel>(QSize(20, 10));
    ImageDownloader downloader(QUrl(pictureUrl()), label.get());
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadImage();
    QTRY_COMPARE_WITH_TIMEOUT(requests(), 1, limit);
    label.reset();
    m_server->release(QStringLiteral("picture"));
    QVERIFY(loaded.wait(limit));
    QVERIFY(cacheIsWritten());
    QCOMPARE(originalOf(downloader), decoded(source));
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
    downloader.downloadImage();
    downloader.loadBuffer();
    QCOMPARE(originalOf(downloader), decoded(source));
}

void TestImageDownloader::downloaderGoneBeforeThePictureArrives()
{
    m_server->serveHeld(QStringLiteral("picture"), busyPicture(5, 5), 20);
    m_server->serve(QStringLiteral("later"), busyPicture(5, 5));
    PictureLabel label({20, 10});
    auto downloader = std::make_unique<ImageDownloader>(QUrl(pictureUrl()), &label);
    downloader->downloadImage();
    QTRY_COMPARE_WITH_TIMEOUT(requests(), 1, limit);
    downloader.reset();
    m_server->release(QStringLiteral("picture"));

    // Another whole fetch gives the abandoned one time enough to do harm.
    ImageDownloader later(QUrl(m_server->url(QStringLiteral("later"))), QStringLiteral("later"));
    QVERIFY(download(later));
    QVERIFY(label.pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("later.png")});
}

QTEST_MAIN(TestImageDownloader)
#include "tst_imagedownloader.moc"
