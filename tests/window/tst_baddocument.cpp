#include "badinputtest.h"
#include "news/newsworld.h"
#include "support/consolecapture.h"
#include "support/scratchfolder.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QLabel>
#include <QLayout>
#include <QTest>

// What the player sees of a document that is broken, missing or none, and what it does to the disk.
class TestBadDocument : public BadInputTest
{
    Q_OBJECT

private slots:
    void wholeWorldIsShown();

    void documentThatSaysNothing_data();
    void documentThatSaysNothing();
    void documentThatIsNone_data();
    void documentThatIsNone();
    void documentCutInTheMiddle_data();
    void documentCutInTheMiddle();
    void documentWithClientsOnly();
    void documentWithNewsOnly();
};

// The yardstick of whatever goes wrong: with nothing wrong all of it is there.
void TestBadDocument::wholeWorldIsShown()
{
    NewsWorld world;
    for (const QString &server : {alpha, omega}) {
        world.server.serve(logoPath(server), Documents::png(40, 30, 0xff305080));
    }
    world.publish(twoClients() + world.elements());
    Session session;
    testform &window = session.window;
    ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    expectRestOfThePage(window, -1);
    QCOMPARE(columns(window), 2);
    QVERIFY(hasLogo(window, alpha));
    QVERIFY(hasLogo(window, omega));
    QCOMPARE(console.err(), QByteArray());
}

void TestBadDocument::documentThatSaysNothing_data()
{
    addFaultRows({{"nobody listens", Fault::Refused},
                  {"it is not found", Fault::NotFound},
                  {"the server is out of order", Fault::ServerError},
                  {"it has moved", Fault::Redirect},
                  {"it is empty", Fault::Empty},
                  {"it begins with a NUL byte", Fault::NulBytes}});
}

void TestBadDocument::documentThatSaysNothing()
{
    QFETCH(int, fault);
    NewsWorld world;
    if (static_cast<Fault>(fault) == Fault::Refused) {
        TestSettings::setBaseUrl(QLatin1String(TestSettings::nobodyListens));
    }
    serveFaulty(world.server, NewsWorld::documentPath(), Documents::launcher(world.elements()),
                static_cast<Fault>(fault));
    Session session;
    testform &window = session.window;
    ConsoleCapture console;
    QVERIFY(session.show());
    QVERIFY(session.documentIsAnswered());
    QVERIFY(session.turnsOn());

    QVERIFY(window.ui->serverButtonsGroup->isVisible());
    QVERIFY(window.ui->labelConnecting->isVisible());
    QCOMPARE(window.ui->labelConnecting->text(), QStringLiteral("Connecting to server..."));
    QCOMPARE(window.ui->serverButtonsGroup->layout(), nullptr);
    QVERIFY(window.clientInfos.isEmpty());
    for (const NewsWorld::Item &item : NewsWorld::items) {
        QCOMPARE(NewsWorld::labelOf(window, item.title)->text(), QString());
        QCOMPARE(NewsWorld::labelOf(window, item.subtitle)->text(), QString());
        QCOMPARE(NewsWorld::itemOf(window, item).imageDownloader, nullptr);
    }
    QCOMPARE(world.server.requests(QStringLiteral("target")), 0);
    QCOMPARE(console.out() + console.err(), QByteArray());
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("offline.txt")});
    QCOMPARE(ScratchFolder::read(QStringLiteral("offline.txt")), QByteArray());
}

void TestBadDocument::documentThatIsNone_data()
{
    addFaultRows({{"an error page instead of it, not found", Fault::NotFoundWithPage},
                  {"an error page instead of it, out of order", Fault::ServerErrorWithPage},
                  {"a text", Fault::Text}});
}

// Any text is taken for a document, the status is not looked at: a panel without columns.
void TestBadDocument::documentThatIsNone()
{
    QFETCH(int, fault);
    NewsWorld world;
    serveFaulty(world.server, NewsWorld::documentPath(), {}, static_cast<Fault>(fault));
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());

    QVERIFY(window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(columns(window), 0);
    for (const NewsWorld::Item &item : NewsWorld::items) {
        QCOMPARE(NewsWorld::labelOf(window, item.title)->text(), QString());
        QVERIFY(pictureOf(window, item).isNull());
        QCOMPARE(ScratchFolder::read(NewsWorld::cacheFile(item)), QByteArray());
    }
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles() << QStringLiteral("offline.txt")));
}

void TestBadDocument::documentCutInTheMiddle_data()
{
    QTest::addColumn<bool>("connectionIsCut");
    QTest::newRow("the server sends the first part only") << false;
    QTest::newRow("the connection is cut") << true;
}

void TestBadDocument::documentCutInTheMiddle()
{
    QFETCH(bool, connectionIsCut);
    NewsWorld world;
    for (const QString &server : {alpha, omega}) {
        world.server.serve(logoPath(server), Documents::png(40, 30, 0xff305080));
    }
    const QByteArray whole = Documents::launcher(twoClients() + world.elements());
    const int kept = whole.indexOf("Title of the second slide");
    QVERIFY(kept > 0);
    if (connectionIsCut) {
        world.server.serveCut(NewsWorld::documentPath(), whole, kept);
    } else {
        world.server.serve(NewsWorld::documentPath(), whole.left(kept));
    }
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());

    // What was read before the cut stands.
    QCOMPARE(columns(window), 2);
    QVERIFY(window.ui->serverButtonsGroup->isVisible());
    QVERIFY(hasLogo(window, alpha));
    QVERIFY(hasLogo(window, omega));
    for (int number = 0; number < NewsWorld::numItems; ++number) {
        const NewsWorld::Item &item = NewsWorld::itemNumber(number);
        QCOMPARE(NewsWorld::labelOf(window, item.title)->text(),
                 number == 0 ? NewsWorld::titleOf(item) : QString());
        QCOMPARE(showsItsPicture(window, item), number == 0);
    }
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles()
                    << logoPath(alpha) << logoPath(omega) << QStringLiteral("offline.txt")));
}

void TestBadDocument::documentWithClientsOnly()
{
    NewsWorld world;
    for (const QString &server : {alpha, omega}) {
        world.server.serve(logoPath(server), Documents::png(40, 30, 0xff305080));
    }
    world.publish(twoClients());
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    const QImage placeholder = window.ui->newsBigBackground->grab().toImage();
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());

    QVERIFY(window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(columns(window), 2);
    QVERIFY(hasLogo(window, alpha));
    QVERIFY(hasLogo(window, omega));
    for (const NewsWorld::Item &item : NewsWorld::items) {
        QCOMPARE(NewsWorld::labelOf(window, item.title)->text(), QString());
        QCOMPARE(NewsWorld::labelOf(window, item.subtitle)->text(), QString());
        QVERIFY(pictureOf(window, item).isNull());
        QCOMPARE(world.pictures(item).log(), QStringList());
    }
    QCOMPARE(window.ui->newsBigBackground->grab().toImage(), placeholder);
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles()
                    << logoPath(alpha) << logoPath(omega) << QStringLiteral("offline.txt")));
}

void TestBadDocument::documentWithNewsOnly()
{
    NewsWorld world;
    world.publish(world.elements());
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());
    expectRestOfThePage(window, -1);
    QCOMPARE(columns(window), 0);
    QVERIFY(window.ui->serverButtonsGroup->layout() != nullptr);
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles() << QStringLiteral("offline.txt")));
}

QTEST_MAIN(TestBadDocument)
#include "tst_baddocument.moc"
