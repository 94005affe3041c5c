#include "fetch/filedownloader.h"
#include "fetch/imagedownloader.h"
#include "fetch/oneperturn.h"
#include "support/consolecapture.h"
#include "support/documents.h"
#include "support/httpserver.h"
#include "support/links.h"
#include "support/messagelog.h"
#include "support/scratchfolder.h"
#include "support/testsettings.h"

#include <QBuffer>
#include <QDir>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QSemaphore>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>
#include <QTimer>
#include <QtConcurrent>

#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace
{
constexpr int limit = 10000; // milliseconds

constexpr QRgb red = 0xffff0000;
constexpr QRgb green = 0xff00ff00;

QByteArray encoded(const QImage &image, const char *format, int quality = -1)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format, quality);
    return bytes;
}

// Every pixel unlike its neighbours, so that smoothing cannot hide.
QImage busyImage(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            image.setPixel(x, y, qRgb((x * 97) % 256, (y * 61) % 256, ((x + y) % 2) * 255));
        }
    }
    return image;
}

QByteArray busyPicture(int width, int height)
{
    return encoded(busyImage(width, height), "PNG");
}

QImage plain(const QImage &image)
{
    return image.convertToFormat(QImage::Format_ARGB32);
}

QImage shownOn(const QLabel &label)
{
    return plain(label.pixmap(Qt::ReturnByValue).toImage());
}

QImage stretched(const QByteArray &picture, QSize size, Qt::TransformationMode mode)
{
    return plain(QImage::fromData(picture).scaled(size, Qt::IgnoreAspectRatio, mode));
}

QImage stretched(const QByteArray &picture, QSize size)
{
    return stretched(picture, size, Qt::FastTransformation);
}

QImage decoded(const QByteArray &picture)
{
    return plain(QImage::fromData(picture));
}

QImage originalOf(const ImageDownloader &downloader)
{
    return plain(downloader.getOriginalPixmap()->toImage());
}

// Nothing waits for a later turn of the event loop any more.
bool turnsAreFree()
{
    auto *turns = QCoreApplication::instance()->findChild<OnePerTurn *>();
    return turns == nullptr || QTest::qWaitFor([turns] { return turns->m_timer == 0; }, limit);
}

bool cacheIsWritten()
{
    return QThreadPool::globalInstance()->waitForDone(limit);
}

// Downloads and waits for the picture and its cache file.
bool download(ImageDownloader &downloader)
{
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadImage();
    return loaded.wait(limit) && cacheIsWritten();
}

class PictureLabel : public QLabel
{
public:
    explicit PictureLabel(QSize size, const char *name = "picture")
    {
        setObjectName(QLatin1String(name));
        resize(size);
    }
};

// Keeps the only thread of the pool busy, so that what is started meanwhile waits for its turn.
class BusyPool
{
public:
    BusyPool()
        : m_threads(QThreadPool::globalInstance()->maxThreadCount())
    {
        QThreadPool::globalInstance()->setMaxThreadCount(1);
        QtConcurrent::run([this] { m_release.acquire(); });
    }
    ~BusyPool()
    {
        release();
        QThreadPool::globalInstance()->waitForDone();
        QThreadPool::globalInstance()->setMaxThreadCount(m_threads);
    }
    BusyPool(const BusyPool &) = delete;
    BusyPool &operator=(const BusyPool &) = delete;

    void release()
    {
        if (!m_released) {
            m_released = true;
            m_release.release();
        }
    }

private:
    QSemaphore m_release;
    int m_threads;
    bool m_released = false;
};
} // namespace

// Fetching one picture, showing it and caching it.
class TestImageDownloader : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

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
    void aSlowDiskDoesNotHoldUpTheNextPicture();
    void saveBufferWithoutAnOriginal();

    void reasonableSize_data();
    void reasonableSize();
    void sizeThatIsNotTold();
    void sizeThatTheFrameHides();
    void iconThatAsksForMore();
    void noPicture_data();
    void noPicture();
    void brokenPicture_data();
    void brokenPicture();
    void statusIsNotLookedAt_data();
    void statusIsNotLookedAt();

    void secondDownloadOnlyRescales();
    void secondDownloadWithoutALabelDoesNothing();
    void secondDownloadRescalesTheDisplayCopy();
    void secondDownloadDuringTheFirstFetchesAgain();
    void newestFetchIsRead();

    void bufferShowsTheCachedPicture();
    void bufferWithoutALabel();
    void bufferWithoutACacheFile_data();
    void bufferWithoutACacheFile();
    void bufferSwitchedOff();
    void bufferWithACacheFileThatIsNoPicture_data();
    void bufferWithACacheFileThatIsNoPicture();
    void downloadAfterBufferFetchesAndOverwrites();
    void bufferAfterDownloadKeepsTheDisplayCopy();

    void newImageAfterADownload();
    void newImageOnAnotherLabel();
    void newImageForANameGetsADisplayCopy();
    void newImageOfOneMarkedFromOutside();
    void newImageDuringTheFetch();
    void newImageFromInsideTheAnnouncement();
    void newImageWhileThePictureWaitsForItsTurn();
    void newImageWhileTheFirstPictureWaitsForItsTurn();
    void picturesThatComeTogetherAreLoadedOneByOne();
    void downloaderGoneWhileItsPictureWaits();

    void originalStaysTheSameObject();
    void labelGoneBeforeThePictureArrives();
    void downloaderGoneBeforeThePictureArrives();
    void downloaderGoneBeforeTheCacheFileIsWritten();
    void cachedPictureIsItsOwnCopy();
    void originalIsReplacedWhileItIsWritten();
    void twoDownloadsWriteTheSameFile();

    void fileExistsOnlyForFiles();
    void scaledToSizeOfNothing();

private:
    QString pictureUrl() const { return m_server->url(QStringLiteral("picture")); }
    QUrl url(const QByteArray &picture)
    {
        m_server->serve(QStringLiteral("picture"), picture);
        return QUrl(pictureUrl());
    }
    int requests() const { return m_server->requests(QStringLiteral("picture")); }

    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<HttpServer> m_server;
};

void TestImageDownloader::init()
{
    m_folder = std::make_unique<ScratchFolder>();
    m_server = std::make_unique<HttpServer>();
}

void TestImageDownloader::cleanup()
{
    m_server.reset();
    m_folder.reset();
}

void TestImageDownloader::madeForALabel()
{
    PictureLabel label({40, 30}, "someLabel");
    const ImageDownloader downloader(QUrl(QStringLiteral("http://127.0.0.1:9/a.png")), &label);
    QCOMPARE(downloader.url, QUrl(QStringLiteral("http://127.0.0.1:9/a.png")));
    QCOMPARE(downloader.objectName, QStringLiteral("someLabel"));
    QVERIFY(downloader.label == &label);
    QCOMPARE(downloader.isDownloaded, false);
    QCOMPARE(downloader.createdPixmap, true);
    QVERIFY(downloader.px != nullptr);
    QVERIFY(downloader.px->isNull());
    QVERIFY(downloader.px_orig == nullptr);
    QVERIFY(downloader.getOriginalPixmap() == nullptr);
    QCOMPARE(downloader.getEnableLoadBuffer(), true);
    QVERIFY(downloader.parent() == nullptr);
}

void TestImageDownloader::madeForAName()
{
    const ImageDownloader downloader(QUrl(QStringLiteral("http://127.0.0.1:9/a.png")),
                                     QStringLiteral("Alpha"));
    QCOMPARE(downloader.url, QUrl(QStringLiteral("http://127.0.0.1:9/a.png")));
    QCOMPARE(downloader.objectName, QStringLiteral("Alpha"));
    QVERIFY(downloader.label == nullptr);
    QCOMPARE(downloader.isDownloaded, false);
    QCOMPARE(downloader.createdPixmap, false);
    QVERIFY(downloader.px == nullptr);
    QVERIFY(downloader.px_orig == nullptr);
    QCOMPARE(downloader.getEnableLoadBuffer(), true);
    QVERIFY(downloader.parent() == nullptr);
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
    QVERIFY(silent.fd == nullptr);
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
    QVERIFY(shownOn(shown) == stretched(source, label));
    QCOMPARE(downloader.isDownloaded, true);
    QVERIFY(originalOf(downloader) == decoded(source));
    QVERIFY(plain(downloader.px->toImage()) == decoded(source));

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
    QVERIFY(onLabel == stretched(source, {20, 10}));
    QVERIFY(original == decoded(source));
    QVERIFY(isDownloaded);
}

void TestImageDownloader::pictureWithoutALabelIsOnlyKept()
{
    const QByteArray source = busyPicture(5, 5);
    ImageDownloader downloader(url(source), QStringLiteral("Alpha"));
    QVERIFY(download(downloader));
    QVERIFY(originalOf(downloader) == decoded(source));
    QVERIFY(downloader.px == nullptr);
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

void TestImageDownloader::cacheFileIsPng_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<int>("quality");
    QTest::newRow("from a JPEG picture") << QByteArray("JPG") << 90;
    QTest::newRow("from a BMP picture") << QByteArray("BMP") << -1;
    QTest::newRow("from a PPM picture") << QByteArray("PPM") << -1;
    QTest::newRow("from a PNG picture that was compressed otherwise") << QByteArray("PNG") << 100;
}

void TestImageDownloader::cacheFileIsPng()
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
    QVERIFY(decoded(cached) == decoded(source));
    QCOMPARE(cached, encoded(QPixmap::fromImage(QImage::fromData(source)).toImage(), "PNG"));
}

void TestImageDownloader::cacheFileName_data()
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
    QTest::newRow("a name in a folder that exists")
        << QStringLiteral("sub/logo")
        << QStringList{QStringLiteral("sub/"), QStringLiteral("sub/logo.png")};
}

void TestImageDownloader::cacheFileName()
{
    QFETCH(QString, name);
    QFETCH(QStringList, files);
    ScratchFolder::makeFolder(QStringLiteral("sub"));
    ImageDownloader downloader(url(busyPicture(5, 5)), name);
    QVERIFY(download(downloader));
    QCOMPARE(ScratchFolder::tree(), files);
}

void TestImageDownloader::cacheFileNameIsTakenAtTheStart()
{
    PictureLabel label({20, 10}, "before");
    ImageDownloader downloader(url(busyPicture(5, 5)), &label);
    label.setObjectName(QStringLiteral("after"));
    QVERIFY(download(downloader));
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("before.png")});
}

void TestImageDownloader::cacheFileIsOverwritten()
{
    ScratchFolder::write(QStringLiteral("picture.png"), QByteArray(100000, 'x'));
    PictureLabel label({20, 10});
    const QByteArray source = busyPicture(5, 5);
    ImageDownloader downloader(url(source), &label);
    QVERIFY(download(downloader));
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
}

void TestImageDownloader::cacheFileThatCannotBeWritten()
{
    ScratchFolder::makeFolder(QStringLiteral("picture.png"));
    PictureLabel label({20, 10});
    const QByteArray source = busyPicture(5, 5);
    ImageDownloader downloader(url(source), &label);
    ConsoleCapture console;
    const MessageLog log;
    QVERIFY(download(downloader));
    QVERIFY(shownOn(label) == stretched(source, {20, 10}));
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("picture.png/")});
    QCOMPARE(MessageLog::messages(), QStringList());
    QCOMPARE(console.out() + console.err(), QByteArray());
}

void TestImageDownloader::cacheFileInAMissingFolder()
{
    ImageDownloader downloader(url(busyPicture(5, 5)), QStringLiteral("missing/logo"));
    const MessageLog log;
    QVERIFY(download(downloader));
    QCOMPARE(ScratchFolder::tree(), QStringList());
    QCOMPARE(MessageLog::messages(), QStringList());
}

void TestImageDownloader::cacheFileOutsideTheWorkingDirectory_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("a cache file that is a link out") << QStringLiteral("linked");
    QTest::newRow("the folder above") << QStringLiteral("../evil");
    QTest::newRow("down and up again") << QStringLiteral("sub/../../evil");
    QTest::newRow("an absolute path") << QStringLiteral("%1/evil");
    QTest::newRow("a link to a folder outside") << QStringLiteral("link/evil");
    QTest::newRow("a neighbour whose name starts alike") << QStringLiteral("%2 too/evil");
}

void TestImageDownloader::cacheFileOutsideTheWorkingDirectory()
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

void TestImageDownloader::saveBufferWritesTheOriginal()
{
    PictureLabel label({20, 10});
    const QByteArray source = busyPicture(5, 5);
    ImageDownloader downloader(url(source), &label);
    QVERIFY(download(downloader));
    QVERIFY(QFile::remove(QStringLiteral("picture.png")));
    downloader.saveBuffer();
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
}

void TestImageDownloader::aSlowDiskDoesNotHoldUpTheNextPicture()
{
#ifdef Q_OS_UNIX
    // One place in the pool, and what takes it cannot open its file until somebody reads from it.
    QThreadPool *pool = QThreadPool::globalInstance();
    const int places = pool->maxThreadCount();
    pool->setMaxThreadCount(1);
    QCOMPARE(mkfifo("slow.png", 0600), 0);
    // Half transparent, and large enough that the toolkit decodes it on several threads.
    QImage image(800, 600, QImage::Format_ARGB32);
    image.fill(qRgba(200, 100, 50, 128));
    m_server->serve(QStringLiteral("slow"), encoded(image, "PNG"));
    ImageDownloader slow(QUrl(m_server->url(QStringLiteral("slow"))), QStringLiteral("slow"));
    QSignalSpy slowLoaded(&slow, &ImageDownloader::loadedImage);
    slow.downloadImage();
    QVERIFY(slowLoaded.wait(limit));

    // Lets go in the end, so that a failure does not hang.
    QSemaphore nextIsThere;
    bool inTime = false;
    std::thread reader([&] {
        inTime = nextIsThere.tryAcquire(1, limit / 2);
        QFile pipe(QStringLiteral("slow.png"));
        if (pipe.open(QIODevice::ReadOnly)) {
            (void)pipe.readAll();
        }
    });
    ImageDownloader next(QUrl(m_server->url(QStringLiteral("slow"))), QStringLiteral("next"));
    QSignalSpy nextLoaded(&next, &ImageDownloader::loadedImage);
    next.downloadImage();
    const bool loaded = nextLoaded.wait(limit);
    nextIsThere.release();
    reader.join();
    const bool written = cacheIsWritten();
    pool->setMaxThreadCount(places);
    QVERIFY(loaded);
    QVERIFY2(inTime, "the picture waited for the file of another one");
    QVERIFY(written);
    QCOMPARE(originalOf(next).size(), image.size());
    QCOMPARE(QImage(QStringLiteral("next.png")).size(), image.size());
#else
    QSKIP("there are no named pipes in a folder here");
#endif
}

void TestImageDownloader::saveBufferWithoutAnOriginal()
{
    ScratchFolder::write(QStringLiteral("picture.png"), "older");
    PictureLabel label({20, 10});
    const ImageDownloader downloader(QUrl(), &label);
    downloader.saveBuffer();
    QVERIFY(QFile::exists(QStringLiteral("picture.png")));
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), QByteArray());
}

void TestImageDownloader::reasonableSize_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("reasonable");
    QTest::newRow("the largest") << 8000 << 2000 << true;
    QTest::newRow("one row more") << 8000 << 2001 << false;
    QTest::newRow("a ribbon") << 30000 << 533 << true;
    QTest::newRow("both sides long") << 12000 << 12000 << false;
}

// Few bytes, many pixels.
void TestImageDownloader::reasonableSize()
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

void TestImageDownloader::sizeThatIsNotTold()
{
    QVERIFY(isPictureOfReasonableSize(QByteArray()));
    QVERIFY(isPictureOfReasonableSize("no picture"));
}

// A GIF file tells the size of the whole apart from those of its frames; here the frame is empty,
// and the whole has 54 million pixels.
void TestImageDownloader::sizeThatTheFrameHides()
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
void TestImageDownloader::iconThatAsksForMore()
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

void TestImageDownloader::noPicture_data()
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

void TestImageDownloader::noPicture()
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

void TestImageDownloader::brokenPicture_data()
{
    QTest::addColumn<bool>("connectionIsCut");
    QTest::newRow("the server sends half of it") << false;
    QTest::newRow("the connection is cut half-way") << true;
}

// The decoder of the toolkit may say a word about it; the launcher does not.
void TestImageDownloader::brokenPicture()
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

void TestImageDownloader::statusIsNotLookedAt_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("not found") << 404;
    QTest::newRow("a server error") << 500;
    QTest::newRow("a redirect") << 302;
}

void TestImageDownloader::statusIsNotLookedAt()
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
    QVERIFY(shownOn(label) == stretched(source, {20, 10}));
    QCOMPARE(m_server->requests(QStringLiteral("target")), 0);
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
    QVERIFY(shownOn(label) == stretched(source, {123, 45}));
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

void TestImageDownloader::secondDownloadDuringTheFirstFetchesAgain()
{
    const QByteArray source = busyPicture(5, 5);
    m_server->serveHeld(QStringLiteral("picture"), source);
    PictureLabel label({20, 10});
    ImageDownloader downloader(QUrl(pictureUrl()), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadImage();
    QTRY_COMPARE_WITH_TIMEOUT(requests(), 1, limit);
    downloader.downloadImage();
    QTRY_COMPARE_WITH_TIMEOUT(requests(), 2, limit);
    QCOMPARE(loaded.count(), 0);
    m_server->release(QStringLiteral("picture"));
    QTRY_COMPARE_WITH_TIMEOUT(loaded.count(), 2, limit);
    QVERIFY(shownOn(label) == stretched(source, {20, 10}));
}

void TestImageDownloader::newestFetchIsRead()
{
    const QByteArray source = busyPicture(5, 5);
    m_server->serve(QStringLiteral("first"), busyPicture(9, 9));
    m_server->serveHeld(QStringLiteral("second"), source);
    PictureLabel label({20, 10});
    ImageDownloader downloader(QUrl(m_server->url(QStringLiteral("first"))), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadImage();
    downloader.url = QUrl(m_server->url(QStringLiteral("second")));
    downloader.downloadImage();

    // The first answer finds the second fetch in its place, which has brought nothing yet.
    QVERIFY(loaded.wait(limit));
    QVERIFY(downloader.getOriginalPixmap()->isNull());
    m_server->release(QStringLiteral("second"));
    QVERIFY(loaded.wait(limit));
    QVERIFY(originalOf(downloader) == decoded(source));
    QVERIFY(shownOn(label) == stretched(source, {20, 10}));
}

void TestImageDownloader::bufferShowsTheCachedPicture()
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
    QVERIFY(shownOn(label) == stretched(cached, {20, 10}));
    QVERIFY(originalOf(downloader) == decoded(cached));
    QVERIFY(downloader.px->isNull());
    QCOMPARE(downloader.isDownloaded, false);
    QVERIFY(downloader.fd == nullptr);
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), cached);
}

void TestImageDownloader::bufferWithoutALabel()
{
    const QByteArray cached = busyPicture(8, 3);
    ScratchFolder::write(QStringLiteral("Alpha.png"), cached);
    ImageDownloader downloader(QUrl(), QStringLiteral("Alpha"));
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.loadBuffer();
    QCOMPARE(loaded.count(), 1);
    QVERIFY(originalOf(downloader) == decoded(cached));
    QVERIFY(downloader.px == nullptr);
}

void TestImageDownloader::bufferWithoutACacheFile_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("there is only a file without the ending") << QString();
    QTest::newRow("there is a folder of that name") << QStringLiteral("picture.png");
}

void TestImageDownloader::bufferWithoutACacheFile()
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
    QVERIFY(downloader.getOriginalPixmap() == nullptr);
    QCOMPARE(label.styleSheet(), placeholder);
    QVERIFY(label.pixmap(Qt::ReturnByValue).isNull());
    QVERIFY(label.grab().toImage() == before);
}

void TestImageDownloader::bufferSwitchedOff()
{
    ScratchFolder::write(QStringLiteral("picture.png"), busyPicture(8, 3));
    PictureLabel label({20, 10});
    ImageDownloader downloader(QUrl(), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.setEnableLoadBuffer(false);
    QCOMPARE(downloader.getEnableLoadBuffer(), false);
    downloader.loadBuffer();
    QCOMPARE(loaded.count(), 0);
    QVERIFY(downloader.getOriginalPixmap() == nullptr);
    QVERIFY(label.pixmap(Qt::ReturnByValue).isNull());

    downloader.setEnableLoadBuffer(true);
    QCOMPARE(downloader.getEnableLoadBuffer(), true);
    downloader.loadBuffer();
    QCOMPARE(loaded.count(), 1);
}

void TestImageDownloader::bufferWithACacheFileThatIsNoPicture_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("an empty file") << QByteArray();
    QTest::newRow("a text file") << QByteArray("no picture");
    QTest::newRow("a binary file") << QByteArray(1000, '\0');
}

void TestImageDownloader::bufferWithACacheFileThatIsNoPicture()
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

void TestImageDownloader::downloadAfterBufferFetchesAndOverwrites()
{
    ScratchFolder::write(QStringLiteral("picture.png"), busyPicture(8, 3));
    const QByteArray source = busyPicture(5, 5);
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(source), &label);
    downloader.loadBuffer();
    QCOMPARE(requests(), 0);
    QVERIFY(download(downloader));
    QCOMPARE(requests(), 1);
    QVERIFY(shownOn(label) == stretched(source, {20, 10}));
    QVERIFY(originalOf(downloader) == decoded(source));
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
}

void TestImageDownloader::bufferAfterDownloadKeepsTheDisplayCopy()
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
    QVERIFY(plain(original->toImage()) == decoded(source));
    QVERIFY(originalOf(downloader) == decoded(cached));
    QVERIFY(shownOn(label) == stretched(cached, {20, 10}));
    QVERIFY(plain(downloader.px->toImage()) == decoded(source));
    QCOMPARE(downloader.isDownloaded, true);
    delete original;
}

void TestImageDownloader::newImageAfterADownload()
{
    const QByteArray source = busyPicture(6, 7);
    m_server->serve(QStringLiteral("other"), source);
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(busyPicture(5, 5)), &label);
    QVERIFY(download(downloader));
    const QPointer<FileDownloader> previous = downloader.fd;

    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadNewImage(QUrl(m_server->url(QStringLiteral("other"))), &label);
    QCOMPARE(downloader.isDownloaded, false);
    if (!previous.isNull()) {
        // On its way out, it is listened to no longer.
        emit previous->downloaded();
        QCOMPARE(loaded.count(), 0);
    }
    QVERIFY(loaded.wait(limit));
    QVERIFY(cacheIsWritten());
    QVERIFY(previous.isNull());
    QCOMPARE(downloader.isDownloaded, true);
    QVERIFY(shownOn(label) == stretched(source, {20, 10}));
    QVERIFY(originalOf(downloader) == decoded(source));
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
    QCOMPARE(m_server->log(), (QStringList{QStringLiteral("/picture"), QStringLiteral("/other")}));
}

void TestImageDownloader::newImageOnAnotherLabel()
{
    const QByteArray first = busyPicture(5, 5);
    const QByteArray second = busyPicture(6, 7);
    m_server->serve(QStringLiteral("other"), second);
    PictureLabel label({20, 10});
    PictureLabel otherLabel({31, 17}, "otherPicture");
    ImageDownloader downloader(url(first), &label);
    QVERIFY(download(downloader));
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadNewImage(QUrl(m_server->url(QStringLiteral("other"))), &otherLabel);
    QVERIFY(loaded.wait(limit));
    QVERIFY(cacheIsWritten());
    QVERIFY(shownOn(label) == stretched(first, {20, 10}));
    QVERIFY(shownOn(otherLabel) == stretched(second, {31, 17}));
    // The file keeps the name it had from the start.
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("picture.png")});
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), second);
}

void TestImageDownloader::newImageForANameGetsADisplayCopy()
{
    const QByteArray source = busyPicture(6, 7);
    PictureLabel label({20, 10});
    ImageDownloader downloader(QUrl(), QStringLiteral("Alpha"));
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadNewImage(url(source), &label);
    QVERIFY(loaded.wait(limit));
    QVERIFY(cacheIsWritten());
    QVERIFY(downloader.px != nullptr);
    QCOMPARE(downloader.createdPixmap, false);
    QVERIFY(shownOn(label) == stretched(source, {20, 10}));
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("Alpha.png")});
}

// The mark is public: it may stand without any fetch behind it.
void TestImageDownloader::newImageOfOneMarkedFromOutside()
{
    const QByteArray source = busyPicture(6, 7);
    PictureLabel label({20, 10});
    ImageDownloader downloader(QUrl(), &label);
    downloader.isDownloaded = true;
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadNewImage(url(source), &label);
    QVERIFY(loaded.wait(limit));
    QVERIFY(shownOn(label) == stretched(source, {20, 10}));
}

void TestImageDownloader::newImageDuringTheFetch()
{
    const QByteArray source = busyPicture(6, 7);
    m_server->serveHeld(QStringLiteral("held"), busyPicture(5, 5));
    PictureLabel label({20, 10});
    ImageDownloader downloader(QUrl(m_server->url(QStringLiteral("held"))), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadImage();
    downloader.downloadNewImage(url(source), &label);
    QVERIFY(loaded.wait(limit));
    QVERIFY(shownOn(label) == stretched(source, {20, 10}));
    // The older answer comes late and finds the newer picture.
    m_server->release(QStringLiteral("held"));
    QVERIFY(loaded.wait(limit));
    QVERIFY(shownOn(label) == stretched(source, {20, 10}));
    QVERIFY(originalOf(downloader) == decoded(source));
}

void TestImageDownloader::newImageFromInsideTheAnnouncement()
{
    const QByteArray source = busyPicture(6, 7);
    m_server->serve(QStringLiteral("other"), source);
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(busyPicture(5, 5)), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    connect(&downloader, &ImageDownloader::loadedImage, this, [&] {
        if (loaded.count() == 1) {
            downloader.downloadNewImage(QUrl(m_server->url(QStringLiteral("other"))), &label);
        }
    });
    downloader.downloadImage();
    QTRY_COMPARE_WITH_TIMEOUT(loaded.count(), 2, limit);
    QVERIFY(shownOn(label) == stretched(source, {20, 10}));
    QCOMPARE(downloader.findChildren<FileDownloader *>().size(), 1);
}

// Two fetches of one picture, the second of which waits for its turn when another picture is
// asked for: it is disconnected like one that is still on its way.
void TestImageDownloader::newImageWhileThePictureWaitsForItsTurn()
{
    const QByteArray source = busyPicture(6, 7);
    m_server->serveHeld(QStringLiteral("other"), source);
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(busyPicture(5, 5)), &label);
    QVERIFY(download(downloader));
    const QImage shown = shownOn(label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    QVERIFY(turnsAreFree());
    emit downloader.fd->downloaded();
    emit downloader.fd->downloaded();
    QCOMPARE(loaded.count(), 1);
    downloader.downloadNewImage(QUrl(m_server->url(QStringLiteral("other"))), &label);
    // A picture that comes later has its turn later.
    ImageDownloader later(QUrl(pictureUrl()), QStringLiteral("later"));
    QVERIFY(download(later));
    QCOMPARE(loaded.count(), 1);
    QVERIFY(shownOn(label) == shown);
    m_server->release(QStringLiteral("other"));
    QVERIFY(loaded.wait(limit));
    QVERIFY(cacheIsWritten());
    QVERIFY(shownOn(label) == stretched(source, {20, 10}));
}

void TestImageDownloader::newImageWhileTheFirstPictureWaitsForItsTurn()
{
    const QByteArray source = busyPicture(6, 7);
    m_server->serve(QStringLiteral("other"), source);
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(busyPicture(5, 5)), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    // Another's work takes the turn in which the picture arrives.
    downloader.downloadImage();
    connect(downloader.fd, &FileDownloader::downloaded, this, [&] {
        QCOMPARE(loaded.count(), 0);
        downloader.downloadNewImage(QUrl(m_server->url(QStringLiteral("other"))), &label);
    });
    QVERIFY(turnsAreFree());
    // Keeps the turns taken for as long as it lives, with one piece of work that waits: each asks
    // for the next.
    auto busy = std::make_unique<QObject>();
    const std::function<void()> work = [&busy, &work] { OnePerTurn::take(busy.get(), work); };
    work();
    QTRY_COMPARE_WITH_TIMEOUT(m_server->requests(QStringLiteral("other")), 1, limit);
    busy.reset();
    QTRY_COMPARE_WITH_TIMEOUT(loaded.count(), 1, limit);
    QVERIFY(cacheIsWritten());
    QVERIFY(turnsAreFree());
    QCOMPARE(loaded.count(), 1);
    QVERIFY(shownOn(label) == stretched(source, {20, 10}));
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
}

// A window that decodes a dozen of them in one go answers nobody meanwhile.
void TestImageDownloader::picturesThatComeTogetherAreLoadedOneByOne()
{
    constexpr int count = 5;
    std::vector<std::unique_ptr<PictureLabel>> labels;
    std::vector<std::unique_ptr<ImageDownloader>> downloaders;
    QStringList loaded;
    int turn = 0;
    QVector<int> turns;
    for (int i = 0; i < count; ++i) {
        const QByteArray name = "picture" + QByteArray::number(i);
        labels.push_back(std::make_unique<PictureLabel>(QSize(20, 10), name.constData()));
        downloaders.push_back(
            std::make_unique<ImageDownloader>(url(busyPicture(5, 5)), labels.back().get()));
        QVERIFY(download(*downloaders.back()));
        connect(downloaders.back().get(), &ImageDownloader::loadedImage, this, [&, name] {
            loaded << QString::fromLatin1(name);
            turns << turn;
        });
    }
    QTimer everyTurn;
    connect(&everyTurn, &QTimer::timeout, this, [&turn] { ++turn; });
    everyTurn.start(0);
    QVERIFY(turnsAreFree());
    for (const auto &downloader : downloaders) {
        emit downloader->fd->downloaded();
    }
    QCOMPARE(loaded, QStringList{QStringLiteral("picture0")});
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), count, limit);
    for (int i = 1; i < count; ++i) {
        QCOMPARE(loaded.at(i), QStringLiteral("picture%1").arg(i));
        QVERIFY(turns.at(i) > turns.at(i - 1));
    }
    QVERIFY(cacheIsWritten());
}

void TestImageDownloader::downloaderGoneWhileItsPictureWaits()
{
    PictureLabel label({20, 10});
    PictureLabel otherLabel({31, 17}, "otherPicture");
    ImageDownloader first(url(busyPicture(5, 5)), &label);
    auto second = std::make_unique<ImageDownloader>(QUrl(pictureUrl()), &otherLabel);
    QVERIFY(download(first));
    QVERIFY(download(*second));
    QSignalSpy loaded(second.get(), &ImageDownloader::loadedImage);
    QVERIFY(turnsAreFree());
    emit first.fd->downloaded();
    emit second->fd->downloaded();
    QCOMPARE(loaded.count(), 0);
    second.reset();
    ImageDownloader later(QUrl(pictureUrl()), QStringLiteral("later"));
    QVERIFY(download(later));
    QCOMPARE(loaded.count(), 0);
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
    QVERIFY(plain(original->toImage()) == decoded(source));
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
    QVERIFY(originalOf(downloader) == decoded(source));
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
    downloader.downloadImage();
    downloader.loadBuffer();
    QVERIFY(originalOf(downloader) == decoded(source));
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

void TestImageDownloader::downloaderGoneBeforeTheCacheFileIsWritten()
{
    const QByteArray source = busyPicture(300, 200);
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

void TestImageDownloader::cachedPictureIsItsOwnCopy()
{
    const QByteArray source = busyPicture(300, 200);
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

void TestImageDownloader::originalIsReplacedWhileItIsWritten()
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

void TestImageDownloader::twoDownloadsWriteTheSameFile()
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
    QVERIFY(shownOn(label) == stretched(source, {20, 10}));
}

void TestImageDownloader::fileExistsOnlyForFiles()
{
    ScratchFolder::write(QStringLiteral("file"));
    ScratchFolder::makeFolder(QStringLiteral("folder"));
    const ImageDownloader downloader(QUrl(), QStringLiteral("Alpha"));
    QVERIFY(downloader.fileExists(QStringLiteral("file")));
    QVERIFY(!downloader.fileExists(QStringLiteral("folder")));
    QVERIFY(!downloader.fileExists(QStringLiteral("missing")));
}

void TestImageDownloader::scaledToSizeOfNothing()
{
    const MessageLog log;
    QVERIFY(scaledToSize(QPixmap(), {20, 10}).isNull());
    QVERIFY(scaledToSize(QPixmap(5, 5), {0, 0}).isNull());
    QCOMPARE(scaledToSize(QPixmap(5, 5), {20, 10}).size(), QSize(20, 10));
    QCOMPARE(MessageLog::messages(), QStringList());
}

QTEST_MAIN(TestImageDownloader)
#include "tst_imagedownloader.moc"
