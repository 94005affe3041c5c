#include "fetch/imagedownloader.h"
#include "picturefiles.h"
#include "picturetest.h"
#include "support/consolecapture.h"
#include "support/messagelog.h"
#include "support/scratchfolder.h"

#include <QLabel>
#include <QPixmap>
#include <QSignalSpy>
#include <QTest>

// Showing the picture of an earlier session from its cache file.
class TestImageBuffer : public PictureTest
{
    Q_OBJECT

private slots:
    void bufferShowsTheCachedPicture();
    void bufferWithoutALabel();
    void bufferWithoutACacheFile_data();
    void bufferWithoutACacheFile();
    void bufferSwitchedOff();
    void bufferWithACacheFileThatIsNoPicture_data();
    void bufferWithACacheFileThatIsNoPicture();
    void downloadAfterBufferFetchesAndOverwrites();
    void bufferAfterDownloadKeepsTheDisplayCopy();
    void fileExistsOnlyForFiles();
};

void TestImageBuffer::bufferShowsTheCachedPicture()
{
    const QByteArray cached = busyPicture(8, 3);
    ScratchFolder::write(QStringLiteral("picture.png"), cached);
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(busyPicture(5, 5)), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    bool shownWhenAnnounced = false;
    connect(&downloader, &ImageDownloader::loadedImage, this, [&] {
        shownWhenAnnounced = shownOn(label) == stretched(cached, {20, 10});
    });
    downloader.loadBuffer();
    QCOMPARE(loaded.count(), 1);
    QVERIFY(shownWhenAnnounced);
    QCOMPARE(shownOn(label), stretched(cached, {20, 10}));
    QCOMPARE(originalOf(downloader), decoded(cached));
    QVERIFY(downloader.px->isNull());
    QCOMPARE(downloader.isDownloaded, false);
    QCOMPARE(downloader.fd, nullptr);
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), cached);
}

void TestImageBuffer::bufferWithoutALabel()
{
    const QByteArray cached = busyPicture(8, 3);
    ScratchFolder::write(QStringLiteral("Alpha.png"), cached);
    ImageDownloader downloader(QUrl(), QStringLiteral("Alpha"));
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.loadBuffer();
    QCOMPARE(loaded.count(), 1);
    QCOMPARE(originalOf(downloader), decoded(cached));
    QCOMPARE(downloader.px, nullptr);
}

void TestImageBuffer::bufferWithoutACacheFile_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("there is only a file without the ending") << QString();
    QTest::newRow("there is a folder of that name") << QStringLiteral("picture.png");
}

void TestImageBuffer::bufferWithoutACacheFile()
{
    QFETCH(QString, folder);
    if (!folder.isEmpty()) {
        ScratchFolder::makeFolder(folder);
    }
    ScratchFolder::write(QStringLiteral("picture"), busyPicture(5, 5));
    PictureLabel label({20, 10});
    const QString placeholder = QStringLiteral("border-image: url(:/images/newsBig.png)");
    label.setStyleSheet(placeholder);
    ImageDownloader downloader(QUrl(), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    const QImage before = label.grab().toImage();
    downloader.loadBuffer();
    QCOMPARE(loaded.count(), 0);
    QCOMPARE(downloader.getOriginalPixmap(), nullptr);
    QCOMPARE(label.styleSheet(), placeholder);
    QVERIFY(label.pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(label.grab().toImage(), before);
}

void TestImageBuffer::bufferSwitchedOff()
{
    ScratchFolder::write(QStringLiteral("picture.png"), busyPicture(8, 3));
    PictureLabel label({20, 10});
    ImageDownloader downloader(QUrl(), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.setEnableLoadBuffer(false);
    QCOMPARE(downloader.getEnableLoadBuffer(), false);
    downloader.loadBuffer();
    QCOMPARE(loaded.count(), 0);
    QCOMPARE(downloader.getOriginalPixmap(), nullptr);
    QVERIFY(label.pixmap(Qt::ReturnByValue).isNull());

    downloader.setEnableLoadBuffer(true);
    QCOMPARE(downloader.getEnableLoadBuffer(), true);
    downloader.loadBuffer();
    QCOMPARE(loaded.count(), 1);
}

void TestImageBuffer::bufferWithACacheFileThatIsNoPicture_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("an empty file") << QByteArray();
    QTest::newRow("a text file") << QByteArray("no picture");
    QTest::newRow("a binary file") << QByteArray(1000, '\0');
    // Files that the launcher did not write: an archive may have been called so.
    QImage wall(8000, 8000, QImage::Format_Mono);
    wall.fill(0);
    QTest::newRow("far too many pixels") << encoded(wall, "PNG");
    QTest::newRow("far too much work") << PictureFiles::gifBomb(2000 * 1000);
}

void TestImageBuffer::bufferWithACacheFileThatIsNoPicture()
{
    QFETCH(QByteArray, content);
    ScratchFolder::write(QStringLiteral("picture.png"), content);
    PictureLabel label({20, 10});
    label.setPixmap(QPixmap(20, 10));
    ImageDownloader downloader(QUrl(), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    ConsoleCapture console;
    const MessageLog log;
    downloader.loadBuffer();
    QCOMPARE(loaded.count(), 1);
    QVERIFY(downloader.getOriginalPixmap() != nullptr);
    QVERIFY(downloader.getOriginalPixmap()->isNull());
    QVERIFY(label.pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(MessageLog::messages(), QStringList());
    QCOMPARE(console.out() + console.err(), QByteArray());
}

void TestImageBuffer::downloadAfterBufferFetchesAndOverwrites()
{
    ScratchFolder::write(QStringLiteral("picture.png"), busyPicture(8, 3));
    const QByteArray source = busyPicture(5, 5);
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(source), &label);
    downloader.loadBuffer();
    QCOMPARE(requests(), 0);
    QVERIFY(download(downloader));
    QCOMPARE(requests(), 1);
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
    QCOMPARE(originalOf(downloader), decoded(source));
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
}

void TestImageBuffer::bufferAfterDownloadKeepsTheDisplayCopy()
{
    const QByteArray source = busyPicture(5, 5);
    const QByteArray cached = busyPicture(8, 3);
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(source), &label);
    QVERIFY(download(downloader));
    ScratchFolder::write(QStringLiteral("picture.png"), cached);
    const QPixmap *const original = downloader.getOriginalPixmap();
    downloader.loadBuffer();
    // A new object; whoever still shows the previous one may go on.
    QVERIFY(downloader.getOriginalPixmap() != original);
    QCOMPARE(plain(original->toImage()), decoded(source));
    QCOMPARE(originalOf(downloader), decoded(cached));
    QCOMPARE(shownOn(label), stretched(cached, {20, 10}));
    QCOMPARE(plain(downloader.px->toImage()), decoded(source));
    QCOMPARE(downloader.isDownloaded, true);
    delete original;
}

void TestImageBuffer::fileExistsOnlyForFiles()
{
    ScratchFolder::write(QStringLiteral("file"));
    ScratchFolder::makeFolder(QStringLiteral("folder"));
    const ImageDownloader downloader(QUrl(), QStringLiteral("Alpha"));
    QVERIFY(downloader.fileExists(QStringLiteral("file")));
    QVERIFY(!downloader.fileExists(QStringLiteral("folder")));
    QVERIFY(!downloader.fileExists(QStringLiteral("missing")));
}

QTEST_MAIN(TestImageBuffer)
#include "tst_imagebuffer.moc"
