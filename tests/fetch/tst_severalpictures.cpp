#include "fetch/filedownloader.h"
#include "fetch/imagedownloader.h"
#include "fetch/oneperturn.h"
#include "picturetest.h"
#include "support/httpserver.h"
#include "support/scratchfolder.h"

#include <QCoreApplication>
#include <QFile>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>
#include <vector>

// One label that gets picture after picture, and several pictures at once.
class TestSeveralPictures : public PictureTest
{
    Q_OBJECT

private slots:
    void secondDownloadDuringTheFirstFetchesAgain();
    void newestFetchIsRead();

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
    void secondDownloadWhileThePictureWaits();
    void waitingPictureIsLoadedOnDemand();
    void newImageFromWithinLoadingOnDemand();

private:
    // Nothing waits for a later turn of the event loop any more.
    static bool turnsAreFree()
    {
        auto *turns = QCoreApplication::instance()->findChild<OnePerTurn *>();
        return turns == nullptr || QTest::qWaitFor([turns] { return turns->m_timer == 0; }, limit);
    }
};

void TestSeveralPictures::secondDownloadDuringTheFirstFetchesAgain()
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
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
}

void TestSeveralPictures::newestFetchIsRead()
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
    QCOMPARE(originalOf(downloader), decoded(source));
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
}

void TestSeveralPictures::newImageAfterADownload()
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
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
    QCOMPARE(originalOf(downloader), decoded(source));
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
    QCOMPARE(m_server->log(), (QStringList{QStringLiteral("/picture"), QStringLiteral("/other")}));
}

void TestSeveralPictures::newImageOnAnotherLabel()
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
    QCOMPARE(shownOn(label), stretched(first, {20, 10}));
    QCOMPARE(shownOn(otherLabel), stretched(second, {31, 17}));
    // The file keeps the name it had from the start.
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("picture.png")});
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), second);
}

void TestSeveralPictures::newImageForANameGetsADisplayCopy()
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
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("Alpha.png")});
}

// The mark is public: it may stand without any fetch behind it.
void TestSeveralPictures::newImageOfOneMarkedFromOutside()
{
    const QByteArray source = busyPicture(6, 7);
    PictureLabel label({20, 10});
    ImageDownloader downloader(QUrl(), &label);
    downloader.isDownloaded = true;
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadNewImage(url(source), &label);
    QVERIFY(loaded.wait(limit));
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
}

void TestSeveralPictures::newImageDuringTheFetch()
{
    const QByteArray source = busyPicture(6, 7);
    m_server->serveHeld(QStringLiteral("held"), busyPicture(5, 5));
    PictureLabel label({20, 10});
    ImageDownloader downloader(QUrl(m_server->url(QStringLiteral("held"))), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    downloader.downloadImage();
    downloader.downloadNewImage(url(source), &label);
    QVERIFY(loaded.wait(limit));
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
    // The older answer comes late and finds the newer picture.
    m_server->release(QStringLiteral("held"));
    QVERIFY(loaded.wait(limit));
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
    QCOMPARE(originalOf(downloader), decoded(source));
}

void TestSeveralPictures::newImageFromInsideTheAnnouncement()
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
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
    QCOMPARE(downloader.findChildren<FileDownloader *>().size(), 1);
}

// Two fetches of one picture, the second of which waits for its turn when another picture is
// asked for: it is disconnected like one that is still on its way.
void TestSeveralPictures::newImageWhileThePictureWaitsForItsTurn()
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
    QCOMPARE(shownOn(label), shown);
    m_server->release(QStringLiteral("other"));
    QVERIFY(loaded.wait(limit));
    QVERIFY(cacheIsWritten());
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
}

void TestSeveralPictures::newImageWhileTheFirstPictureWaitsForItsTurn()
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
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
    QCOMPARE(ScratchFolder::read(QStringLiteral("picture.png")), source);
}

// A window that decodes a dozen of them in one go answers nobody meanwhile.
void TestSeveralPictures::picturesThatComeTogetherAreLoadedOneByOne()
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

void TestSeveralPictures::downloaderGoneWhileItsPictureWaits()
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
    // What has arrived is kept for the next start.
    QVERIFY(QFile::remove(QStringLiteral("otherPicture.png")));
    second.reset();
    QVERIFY(cacheIsWritten());
    QCOMPARE(ScratchFolder::read(QStringLiteral("otherPicture.png")), busyPicture(5, 5));
    ImageDownloader later(QUrl(pictureUrl()), QStringLiteral("later"));
    QVERIFY(download(later));
    QCOMPARE(loaded.count(), 0);
}

void TestSeveralPictures::secondDownloadWhileThePictureWaits()
{
    const QByteArray source = busyPicture(5, 5);
    PictureLabel label({20, 10});
    ImageDownloader downloader(url(source), &label);
    QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
    int waited = 0;
    downloader.downloadImage();
    connect(downloader.fd, &FileDownloader::downloaded, this, [&] {
        waited += loaded.isEmpty() ? 1 : 0;
        downloader.downloadImage();
    });
    QVERIFY(turnsAreFree());
    auto busy = std::make_unique<QObject>();
    const std::function<void()> work = [&busy, &work] { OnePerTurn::take(busy.get(), work); };
    work();
    QTRY_COMPARE_WITH_TIMEOUT(loaded.count(), 1, limit);
    busy.reset();
    QCOMPARE(waited, 1);
    QVERIFY(turnsAreFree());
    QCOMPARE(downloader.findChildren<FileDownloader *>().size(), 1);
    QCOMPARE(loaded.count(), 1);
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
    QVERIFY(cacheIsWritten());
    QCOMPARE(requests(), 1);
}

void TestSeveralPictures::waitingPictureIsLoadedOnDemand()
{
    const QByteArray source = busyPicture(5, 5);
    PictureLabel label({20, 10});
    ImageDownloader first(url(source), QStringLiteral("first"));
    ImageDownloader second(QUrl(pictureUrl()), &label);
    // Neither before the fetch nor during it is there anything to load.
    second.loadArrived();
    QCOMPARE(second.fd, nullptr);
    QVERIFY(download(first));
    QVERIFY(download(second));
    QSignalSpy loaded(&second, &ImageDownloader::loadedImage);
    second.loadArrived();
    QCOMPARE(loaded.count(), 0);
    QVERIFY(turnsAreFree());
    emit first.fd->downloaded();
    emit second.fd->downloaded();
    emit second.fd->downloaded();
    QCOMPARE(loaded.count(), 0);
    label.clear();
    second.loadArrived();
    QCOMPARE(loaded.count(), 2);
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
    second.loadArrived();
    // Its turn comes, and finds nothing to do.
    QVERIFY(turnsAreFree());
    QCOMPARE(loaded.count(), 2);
    QVERIFY(cacheIsWritten());
}

void TestSeveralPictures::newImageFromWithinLoadingOnDemand()
{
    const QByteArray source = busyPicture(6, 7);
    m_server->serve(QStringLiteral("other"), source);
    PictureLabel label({20, 10});
    ImageDownloader first(url(busyPicture(5, 5)), QStringLiteral("first"));
    ImageDownloader second(QUrl(pictureUrl()), &label);
    QVERIFY(download(first));
    QVERIFY(download(second));
    QSignalSpy loaded(&second, &ImageDownloader::loadedImage);
    connect(&second, &ImageDownloader::loadedImage, this, [&] {
        if (loaded.count() == 1) {
            second.downloadNewImage(QUrl(m_server->url(QStringLiteral("other"))), &label);
        }
    });
    QVERIFY(turnsAreFree());
    emit first.fd->downloaded();
    emit second.fd->downloaded();
    emit second.fd->downloaded();
    second.loadArrived();
    QCOMPARE(loaded.count(), 1);
    QTRY_COMPARE_WITH_TIMEOUT(loaded.count(), 2, limit);
    QCOMPARE(shownOn(label), stretched(source, {20, 10}));
    QVERIFY(turnsAreFree());
    QCOMPARE(loaded.count(), 2);
}

QTEST_MAIN(TestSeveralPictures)
#include "tst_severalpictures.moc"
