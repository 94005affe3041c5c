#include "busypool.h"
#include "fetch/imagedownloader.h"
#include "picturetest.h"
#include "support/consolecapture.h"
#include "support/links.h"
#include "support/messagelog.h"
#include "support/scratchfolder.h"

#include <QFile>
#include <QPainter>
#include <QPixmap>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>
#include <QtConcurrent>

#include <thread>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

// Writing a fetched picture to its cache file.
class TestImageCache : public PictureTest
{
    Q_OBJECT

private slots:
    void cacheFileIsPng_data();
    void cacheFileIsPng();
    void cacheFileName_data();
    void cacheFileName();
    void cacheFileNameIsTakenAtTheStart();
    void cacheFileIsOverwritten();
    void cacheFileThatCannotBeWritten();
    void cacheFileInAMissingFolder();
    void cacheFileOutsideTheWorkingDirectory_data();
    void cacheFileOutsideTheWorkingDirectory();

    void saveBufferWritesTheOriginal();
    void saveBufferWithoutAnOriginal();

    void aSlowDiskDoesNotHoldUpTheNextPicture();
    void cacheFileThatIsAPipe();
    void downloaderGoneBeforeTheCacheFileIsWritten();
    void cachedPictureIsItsOwnCopy();
    void originalIsReplacedWhileItIsWritten();
    void twoDownloadsWriteTheSameFile();
};

void TestImageCache::cacheFileIsPng_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<int>("quality");
    QTest::newRow("from a JPEG picture") << QByteArray("JPG") << 90;
    QTest::newRow("from a BMP picture") << QByteArray("BMP") << -1;
    QTest::newRow("from a PPM picture") << QByteArray("PPM") << -1;
    QTest::newRow("from a PNG picture that was compressed otherwise") << QByteArray("PNG") << 100;
}

void TestImageCache::cacheFileIsPng()
{
    QFETCH(QByteArray, format);
    QFETCH(int, quality);
    const QByteArray source = encoded(busyImage(61, 43), format.constData(), quality);
    QVERIFY(!source.isEmpty());
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(source), &label);
    QVERIFY(download(downloader));

    const QByteArray cached = ScratchFolder::read(QStringLiteral("picture.png"));
    QVERIFY(cached != source);
    QVERIFY(cached.startsWith("\x89PNG\r\n\x1a\n"));
    QCOMPARE(decoded(cached), decoded(source));
    QCOMPARE(cached, encoded(QPixmap::fromImage(QImage::fromData(source)).toImage(), "PNG"));
}

void TestImageCache::cacheFileName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("files");
    const QString foreign = QString::fromUtf8("\xD0\x98\xD0\xB3\xD1\x80\xD0\xB0 one");
    QTest::newRow("a label's name")
        << QStringLiteral("homeNewsImageBackground")
        << QStringList{QStringLiteral("homeNewsImageBackground.png"), QStringLiteral("sub/")};
    QTest::newRow("a name with a blank and letters beyond Latin-1")
        << foreign << QStringList{QStringLiteral("sub/"), foreign + QStringLiteral(".png")};
    QTest::newRow("a name that ends in .png already")
        << QStringLiteral("a.png")
        << QStringList{QStringLiteral("a.png.png"), QStringLiteral("sub/")};
    QTest::newRow("an empty name")
        << QString() << QStringList{QStringLiteral(".png"), QStringLiteral("sub/")};
    // A folder of the launcher's is a server's, with installed games in it.
    QTest::newRow("a name in a folder that exists")
        << QStringLiteral("sub/logo") << QStringList{QStringLiteral("sub/")};
    QTest::newRow("a name that no file should have")
        << QStringLiteral("a\tb") << QStringList{QStringLiteral("sub/")};
}

void TestImageCache::cacheFileName()
{
    QFETCH(QString, name);
    QFETCH(QStringList, files);
    ScratchFolder::makeFolder(QStringLiteral("sub"));
    ImageDownloader downloader(url(busyPicture(5, 5)), name);
    QVERIFY(download(downloader));
    QCOMPARE(ScratchFolder::tree(), files);
}

void TestImageCache::cacheFileNameIsTakenAtTheStart()
{
    PictureLabel label({20, 10}, "before");
    ImageDownloader downloader(url(busyPicture(5, 5)), &label);
    label.setObjectName(QStringLiteral("after"));
    QVERIFY(download(downloader));
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("before.png")});
}

void TestImageCache::cacheFileIsOverwritten()
{
    ScratchFolder::write(QStringLiteral("picture.png"), QByteArray(100000, 'x'));
    PictureLabel label({20, 10});
    const QByteArray source = busyPicture(5, 5);
    ImageDownloader downloader(url(source), &label);
    QVERIFY(download(downloader));
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
}

void TestImageCache::cacheFileThatCannotBeWritten()
{
    ScratchFolder::makeFolder(QStringLiteral("picture.png"));
    PictureLabel label({20, 10});
    const QByteArray source = busyPicture(5, 5);
    ImageDownloader downloader(url(source), &label);
    ConsoleCapture console;
    const MessageLog log;
    QVERIFY(download(downloader));
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("picture.png/")});
    QCOMPARE(MessageLog::messages(), QStringList());
    QCOMPARE(console.out() + console.err(), QByteArray());
}

void TestImageCache::cacheFileInAMissingFolder()
{
    ImageDownloader downloader(url(busyPicture(5, 5)), QStringLiteral("missing/logo"));
    const MessageLog log;
    QVERIFY(download(downloader));
    QCOMPARE(ScratchFolder::tree(), QStringList());
    QCOMPARE(MessageLog::messages(), QStringList());
}

void TestImageCache::cacheFileOutsideTheWorkingDirectory_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("a cache file that is a link out") << QStringLiteral("linked");
    QTest::newRow("the folder above") << QStringLiteral("../evil");
    QTest::newRow("down and up again") << QStringLiteral("sub/../../evil");
    QTest::newRow("an absolute path") << QStringLiteral("%1/evil");
    QTest::newRow("a link to a folder outside") << QStringLiteral("link/evil");
    QTest::newRow("a neighbour whose name starts alike") << QStringLiteral("%2 too/evil");
}

void TestImageCache::cacheFileOutsideTheWorkingDirectory()
{
    QFETCH(QString, name);
    ScratchFolder::makeFolder(QStringLiteral("sub"));
    ScratchFolder::makeFolder(m_folder->path() + QStringLiteral(" too"));
    MAKE_LINK(m_folder->outside(), QStringLiteral("link"));
    const QStringList places{m_folder->outside() + QStringLiteral("/evil.png"),
                             m_folder->path() + QStringLiteral(" too/evil.png")};
    for (const QString &place : places) {
        ScratchFolder::write(place, "precious");
    }
    MAKE_LINK(places.constFirst(), QStringLiteral("linked.png"));
    const QStringList inside = ScratchFolder::tree();
    const QStringList outside = m_folder->treeOutside();

    name.replace(QStringLiteral("%1"), m_folder->outside());
    name.replace(QStringLiteral("%2"), m_folder->path());
    ImageDownloader downloader(url(busyPicture(5, 5)), name);
    QVERIFY(download(downloader));
    downloader.saveBuffer();

    QCOMPARE(ScratchFolder::tree(), inside);
    QCOMPARE(m_folder->treeOutside(), outside);
    for (const QString &place : places) {
        QCOMPARE(ScratchFolder::read(place), QByteArray("precious"));
    }
}

void TestImageCache::saveBufferWritesTheOriginal()
{
    PictureLabel label({20, 10});
    const QByteArray source = busyPicture(5, 5);
    ImageDownloader downloader(url(source), &label);
    QVERIFY(download(downloader));
    QVERIFY(QFile::remove(QStringLiteral("picture.png")));
    downloader.saveBuffer();
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
}

void TestImageCache::saveBufferWithoutAnOriginal()
{
    ScratchFolder::write(QStringLiteral("picture.png"), "older");
    PictureLabel label({20, 10});
    const ImageDownloader downloader(QUrl(), &label);
    downloader.saveBuffer();
    QVERIFY(QFile::exists(QStringLiteral("picture.png")));
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), QByteArray());
}

void TestImageCache::aSlowDiskDoesNotHoldUpTheNextPicture()
{
    // One place in the pool, and what takes it waits for the disk.
    QThreadPool *pool = QThreadPool::globalInstance();
    const int places = pool->maxThreadCount();
    pool->setMaxThreadCount(1);
    // Lets go in the end, so that a failure does not hang.
    QSemaphore diskIsSlow;
    QSemaphore nextIsThere;
    bool inTime = false;
    std::thread disk([&] {
        const QMutexLocker locker(&ImageDownloader::cacheTurn());
        diskIsSlow.release();
        inTime = nextIsThere.tryAcquire(1, limit / 2);
    });
    diskIsSlow.acquire();
    // Half transparent, and large enough that the toolkit decodes it on several threads.
    QImage image(800, 600, QImage::Format_ARGB32);
    image.fill(qRgba(200, 100, 50, 128));
    m_server->serve(QStringLiteral("slow"), encoded(image, "PNG"));
    ImageDownloader slow(QUrl(m_server->url(QStringLiteral("slow"))), QStringLiteral("slow"));
    QSignalSpy slowLoaded(&slow, &ImageDownloader::loadedImage);
    slow.downloadImage();
    const bool slowIsLoaded = slowLoaded.wait(limit);
    ImageDownloader next(QUrl(m_server->url(QStringLiteral("slow"))), QStringLiteral("next"));
    QSignalSpy nextLoaded(&next, &ImageDownloader::loadedImage);
    next.downloadImage();
    const bool nextIsLoaded = nextLoaded.wait(limit);
    nextIsThere.release();
    disk.join();
    const bool written = cacheIsWritten();
    pool->setMaxThreadCount(places);
    QVERIFY(slowIsLoaded);
    QVERIFY(nextIsLoaded);
    QVERIFY2(inTime, "the picture waited for the file of another one");
    QVERIFY(written);
    QCOMPARE(originalOf(next).size(), image.size());
    QCOMPARE(QImage(QStringLiteral("next.png")).size(), image.size());
}

void TestImageCache::cacheFileThatIsAPipe()
{
#ifdef Q_OS_UNIX
    QCOMPARE(mkfifo("picture.png", 0600), 0);
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(busyPicture(5, 5)), &label);
    QVERIFY(download(downloader));
    const bool written = cacheIsWritten();
    // Lets a writer go that waits for a reader, so that a failure does not hang.
    const int reader = open("picture.png", O_RDONLY | O_NONBLOCK);
    QVERIFY(QThreadPool::globalInstance()->waitForDone(limit));
    close(reader);
    QVERIFY2(written, "the writer waits for somebody who reads");
#else
    QSKIP("there are no named pipes in a folder here");
#endif
}

void TestImageCache::downloaderGoneBeforeTheCacheFileIsWritten()
{
    const QByteArray source = busyPicture(180, 180); // small enough not to be decoded in the pool
    BusyPool pool;
    {
        PictureLabel label({20, 10});
        ImageDownloader downloader(url(source), &label);
        QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
        downloader.downloadImage();
        QVERIFY(loaded.wait(limit));
        QCOMPARE(ScratchFolder::tree(), QStringList());
    }
    pool.release();
    QVERIFY(cacheIsWritten());
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
}

void TestImageCache::cachedPictureIsItsOwnCopy()
{
    const QByteArray source = busyPicture(180, 180);
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(source), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    BusyPool pool;
    downloader.downloadImage();
    QVERIFY(loaded.wait(limit));
    downloader.px_orig->fill(QColor(red));
    QPainter(downloader.px_orig).fillRect(0, 0, 10, 10, QColor(green));
    *downloader.px_orig = QPixmap();
    downloader.objectName = QStringLiteral("other");
    pool.release();
    QVERIFY(cacheIsWritten());
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("picture.png")});
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
}

void TestImageCache::originalIsReplacedWhileItIsWritten()
{
    const QByteArray source = busyPicture(300, 200);
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(source), &label);
    QVERIFY(download(downloader));
    for (int round = 0; round < 50; ++round) {
        QVERIFY(QFile::remove(QStringLiteral("picture.png")));
        downloader.loadData(); // the same answer again, and with it the same task
        QPainter(downloader.px_orig).fillRect(0, 0, 300, 200, QColor(green));
        *downloader.px_orig = QPixmap(10, 10);
        QVERIFY(cacheIsWritten());
        QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
    }
}

void TestImageCache::twoDownloadsWriteTheSameFile()
{
    const QByteArray source = busyPicture(120, 80);
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(source), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadImage();
    downloader.downloadImage();
    QTRY_COMPARE_WITH_TIMEOUT(loaded.count(), 2, limit);
    QVERIFY(cacheIsWritten());
    QCOMPARE(requests(), 2);
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("picture.png")});
    // The first end reads the second fetch, which may have nothing yet. Two workers write then, one
    // of them nothing, and nobody says which comes last; half a picture it must not be.
    const QByteArray cached = ScratchFolder::read(QStringLiteral("picture.png"));
    QVERIFY(cached == source || cached.isEmpty());
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
}

QTEST_MAIN(TestImageCache)
#include "tst_imagecache.moc"
