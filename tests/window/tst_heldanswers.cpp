#include "badinputtest.h"
#include "fetch/filedownloader.h"
#include "news/newsworld.h"
#include "support/consolecapture.h"
#include "support/relation.h"
#include "support/scratchfolder.h"

#include <QFile>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

// A window that is closed while something published is still on its way.
class TestHeldAnswers : public BadInputTest
{
    Q_OBJECT

private slots:
    void windowGoesWhileSomethingIsHeld_data();
    void windowGoesWhileSomethingIsHeld();
    void windowGoesWhilePicturesWaitForTheirTurn();
};

void TestHeldAnswers::windowGoesWhileSomethingIsHeld_data()
{
    QTest::addColumn<QStringList>("held");
    QTest::addColumn<int>("bytes");
    const QString slide = NewsWorld::path(NewsWorld::itemNumber(0));
    const QString tile = NewsWorld::path(NewsWorld::itemNumber(8));
    QTest::newRow("the document, before its first byte")
        << QStringList{NewsWorld::documentPath()} << 0;
    QTest::newRow("the document, half-way") << QStringList{NewsWorld::documentPath()} << 100;
    QTest::newRow("a slide's picture, before its first byte") << QStringList{slide} << 0;
    QTest::newRow("a slide's picture, half-way") << QStringList{slide} << 40;
    QTest::newRow("a tile's picture, half-way") << QStringList{tile} << 40;
    QTest::newRow("a logo, before its first byte") << QStringList{logoPath(alpha)} << 0;
    QTest::newRow("a logo, half-way") << QStringList{logoPath(alpha)} << 40;
    QTest::newRow("pictures and logos, half-way")
        << QStringList{slide, tile, logoPath(alpha), logoPath(omega)} << 40;
}

void TestHeldAnswers::windowGoesWhileSomethingIsHeld()
{
    QFETCH(QStringList, held);
    QFETCH(int, bytes);
    NewsWorld world;
    const QByteArray logo = Documents::png(40, 30, 0xff305080);
    world.server.serve(logoPath(alpha), logo);
    world.server.serve(logoPath(omega), logo);
    const QByteArray document = Documents::launcher(twoClients() + world.elements());
    world.server.serve(NewsWorld::documentPath(), document);
    QStringList missing;
    HttpServer *const servers[] = {&world.server, &world.slides, &world.tiles};
    const auto serverOf = [&](const QString &path) -> HttpServer & {
        return *servers[path == NewsWorld::path(NewsWorld::itemNumber(0))   ? 1
                        : path == NewsWorld::path(NewsWorld::itemNumber(8)) ? 2
                                                                            : 0];
    };
    for (const QString &path : held) {
        const bool isDocument = path == NewsWorld::documentPath();
        serverOf(path).serveHeld(path, isDocument ? document : logo, bytes);
        missing << QString(path).replace(QStringLiteral(".bin"), QStringLiteral(".png"));
    }
    QStringList expected = NewsWorld::cacheFiles()
                           << logoPath(alpha) << logoPath(omega) << QStringLiteral("offline.txt");
    if (held.contains(NewsWorld::documentPath())) {
        expected.clear();
    }
    for (const QString &name : missing) {
        expected.removeAll(name);
    }
    {
        Session session;
        const ConsoleCapture console;
        QVERIFY(session.show());
        for (const QString &path : held) {
            QTRY_COMPARE_WITH_TIMEOUT(serverOf(path).requests(path), 1, limit);
        }
        // Everything else has arrived and was written.
        QTRY_VERIFY_WITH_TIMEOUT(QThreadPool::globalInstance()->waitForDone(limit) &&
                                     ScratchFolder::tree() == sorted(expected),
                                 limit);
        QVERIFY(session.turnsOn());
    }
    for (const QString &path : held) {
        serverOf(path).release(path);
    }
    // Another whole fetch gives the abandoned answers time to do harm.
    const HttpServer other;
    FileDownloader later(QUrl(other.url(QStringLiteral("later"))));
    QSignalSpy downloaded(&later, &FileDownloader::downloaded);
    QVERIFY(downloaded.wait(limit));
    QVERIFY(QThreadPool::globalInstance()->waitForDone(limit));
    QCOMPARE(ScratchFolder::tree(), sorted(expected));
}

// What has arrived is written for the next start, though nobody has seen it.
void TestHeldAnswers::windowGoesWhilePicturesWaitForTheirTurn()
{
    NewsWorld world;
    const QByteArray logo = Documents::png(40, 30, 0xff305080);
    world.server.serve(logoPath(alpha), logo);
    world.server.serve(logoPath(omega), logo);
    world.publish(twoClients() + world.elements());
    const QStringList files = sorted(NewsWorld::cacheFiles() << logoPath(alpha) << logoPath(omega)
                                                             << QStringLiteral("offline.txt"));
    {
        Session session;
        testform &window = session.window;
        const ConsoleCapture console;
        QVERIFY(session.show());
        QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
        QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
        QCOMPARE(ScratchFolder::tree(), files);
        // All of them once more, in one turn.
        for (const QString &file : files) {
            QVERIFY(QFile::remove(file));
        }
        ScratchFolder::write(QStringLiteral("offline.txt"));
        for (const NewsWorld::Item &item : NewsWorld::items) {
            emit NewsWorld::itemOf(window, item).imageDownloader->fd->downloaded();
        }
        for (ServerButton *server : qAsConst(window.serverButtons)) {
            emit server->getImageDownloader()->fd->downloaded();
        }
        VERIFY_RELATION(ScratchFolder::tree().size(), <, files.size());
    }
    QVERIFY(QThreadPool::globalInstance()->waitForDone(limit));
    QCOMPARE(ScratchFolder::tree(), files);
    QCOMPARE(ScratchFolder::read(logoPath(omega)), logo);
    for (const NewsWorld::Item &item : NewsWorld::items) {
        QCOMPARE(ScratchFolder::read(NewsWorld::cacheFile(item)),
                 Documents::png(40, 30, item.colour));
    }
}

QTEST_MAIN(TestHeldAnswers)
#include "tst_heldanswers.moc"
