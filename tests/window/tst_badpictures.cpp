#include "badinputtest.h"
#include "info/serverbutton.h"
#include "news/newsworld.h"
#include "support/consolecapture.h"
#include "support/messagelog.h"
#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>

// What the player sees of pictures and logos that are broken, and what they do to the disk.
class TestBadPictures : public BadInputTest
{
    Q_OBJECT

private slots:
    void everyPictureCanFail_data();
    void everyPictureCanFail();
    void pictureFault_data();
    void pictureFault();
    void allPicturesFail();
    void pictureOfAnotherScheme_data();
    void pictureOfAnotherScheme();

    void everyLogoCanFail_data();
    void everyLogoCanFail();
    void logoFault_data();
    void logoFault();
    void logoNamesThatLeadOut_data();
    void logoNamesThatLeadOut();
};

void TestBadPictures::everyPictureCanFail_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("fault");
    const QPair<const char *, Fault> faults[] = {
        {"is not found", Fault::NotFound},
        {"meets a server out of order", Fault::ServerErrorWithPage},
    };
    for (int number = 0; number < NewsWorld::numItems; ++number) {
        for (const auto &fault : faults) {
            QTest::addRow("the picture of %s %s", NewsWorld::itemNumber(number).description,
                          fault.first)
                << number << static_cast<int>(fault.second);
        }
    }
}

void TestBadPictures::everyPictureCanFail()
{
    QFETCH(int, number);
    QFETCH(int, fault);
    const NewsWorld::Item &item = NewsWorld::itemNumber(number);
    NewsWorld world;
    serveFaulty(world.pictures(item), NewsWorld::path(item), Documents::png(40, 30, item.colour),
                static_cast<Fault>(fault));
    world.publish(world.elements());
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());
    expectRestOfThePage(window, number);
    QCOMPARE(world.pictures(item).requests(NewsWorld::path(item)), 1);
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles() << QStringLiteral("offline.txt")));
}

void TestBadPictures::pictureFault_data()
{
    addFaultRows({{"the picture moved", Fault::Redirect},
                  {"the picture is empty", Fault::Empty},
                  {"the picture is a text", Fault::Text},
                  {"the picture is a page with an error status", Fault::NotFoundWithPage},
                  {"the picture is NUL bytes", Fault::NulBytes},
                  {"the server sends half of the picture", Fault::HalfSent},
                  {"the connection is cut", Fault::ConnectionCut},
                  {"nobody listens for the picture", Fault::Refused}});
}

void TestBadPictures::pictureFault()
{
    QFETCH(int, fault);
    const int number = 3;
    const NewsWorld::Item &item = NewsWorld::itemNumber(number);
    // An older picture of it does not come back.
    ScratchFolder::write(NewsWorld::cacheFile(item), Documents::png(40, 30, item.colour));
    NewsWorld world;
    serveFaulty(world.tiles, NewsWorld::path(item), Documents::png(40, 30, item.colour),
                static_cast<Fault>(fault));
    QStringList elements = world.elements();
    if (static_cast<Fault>(fault) == Fault::Refused) {
        elements[number] = Documents::news(
            QStringLiteral("news"), NewsWorld::titleOf(item), NewsWorld::subtitleOf(item),
            QLatin1String(TestSettings::nobodyListens) + NewsWorld::path(item));
    }
    world.publish(elements);
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());
    expectRestOfThePage(window, number);
    QCOMPARE(world.tiles.requests(QStringLiteral("target")), 0);
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles() << QStringLiteral("offline.txt")));
}

void TestBadPictures::allPicturesFail()
{
    NewsWorld world;
    for (const NewsWorld::Item &item : NewsWorld::items) {
        serveFaulty(world.pictures(item), NewsWorld::path(item), {}, Fault::Text);
    }
    world.publish(twoClients() + world.elements());
    Session session;
    testform &window = session.window;
    ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());
    for (const NewsWorld::Item &item : NewsWorld::items) {
        QCOMPARE(NewsWorld::labelOf(window, item.title)->text(), NewsWorld::titleOf(item));
        QVERIFY(pictureOf(window, item).isNull());
    }
    QCOMPARE(columns(window), 2);
    QCOMPARE(console.err(), QByteArray());
    QCOMPARE(MessageLog::containing(QStringLiteral("QPixmap")), QStringList());
    QCOMPARE(MessageLog::containing(QStringLiteral("QImage")), QStringList());
}

void TestBadPictures::pictureOfAnotherScheme_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("an address without a scheme") << QStringLiteral("picture.png");
    QTest::newRow("an unknown scheme") << QStringLiteral("gopher://127.0.0.1/picture.png");
    QTest::newRow("an address that cannot be read") << QStringLiteral("http://[::1/picture.png");
    QTest::newRow("a missing local file") << QStringLiteral("file:///no/such/picture.png");
    QTest::newRow("nothing") << QString();
}

void TestBadPictures::pictureOfAnotherScheme()
{
    QFETCH(QString, address);
    NewsWorld world;
    QStringList elements = world.elements();
    const int number = 5;
    const NewsWorld::Item &item = NewsWorld::itemNumber(number);
    elements[number] = Documents::news(QStringLiteral("news"), NewsWorld::titleOf(item),
                                       NewsWorld::subtitleOf(item), address);
    world.publish(elements);
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());
    expectRestOfThePage(window, number);
}

void TestBadPictures::everyLogoCanFail_data()
{
    QTest::addColumn<QString>("failing");
    QTest::addColumn<QString>("other");
    QTest::addColumn<int>("fault");
    QTest::newRow("the first logo is not found")
        << alpha << omega << static_cast<int>(Fault::NotFound);
    QTest::newRow("the second logo is not found")
        << omega << alpha << static_cast<int>(Fault::NotFound);
    QTest::newRow("the first logo meets a server out of order")
        << alpha << omega << static_cast<int>(Fault::ServerErrorWithPage);
    QTest::newRow("the second logo meets a server out of order")
        << omega << alpha << static_cast<int>(Fault::ServerErrorWithPage);
}

void TestBadPictures::everyLogoCanFail()
{
    QFETCH(QString, failing);
    QFETCH(QString, other);
    QFETCH(int, fault);
    NewsWorld world;
    const QByteArray logo = Documents::png(40, 30, 0xff305080);
    world.server.serve(logoPath(other), logo);
    serveFaulty(world.server, logoPath(failing), logo, static_cast<Fault>(fault));
    world.publish(twoClients() + world.elements());
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());

    expectRestOfThePage(window, -1);
    QCOMPARE(columns(window), 2);
    QVERIFY(!hasLogo(window, failing));
    QVERIFY(hasLogo(window, other));
    QVERIFY(window.serverButtons.value(failing)->getButton()->isFlat());
    QCOMPARE(ScratchFolder::read(logoPath(failing)), QByteArray());
    QCOMPARE(ScratchFolder::read(logoPath(other)), logo);
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles()
                    << logoPath(alpha) << logoPath(omega) << QStringLiteral("offline.txt")));
}

void TestBadPictures::logoFault_data()
{
    addFaultRows({{"it moved", Fault::Redirect},
                  {"it is empty", Fault::Empty},
                  {"it is a text", Fault::Text},
                  {"it is NUL bytes", Fault::NulBytes},
                  {"the server sends half of it", Fault::HalfSent},
                  {"the connection is cut", Fault::ConnectionCut}});
}

// The server can still be chosen; an older logo on the disk is not shown instead.
void TestBadPictures::logoFault()
{
    QFETCH(int, fault);
    NewsWorld world;
    const QByteArray logo = Documents::png(40, 30, 0xff305080);
    ScratchFolder::write(logoPath(alpha), logo);
    serveFaulty(world.server, logoPath(alpha), logo, static_cast<Fault>(fault));
    world.publish(twoClients().mid(0, 1));
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());
    QCOMPARE(columns(window), 1);
    QVERIFY(!hasLogo(window, alpha));
    QCOMPARE(world.server.requests(QStringLiteral("target")), 0);
    QCOMPARE(ScratchFolder::read(logoPath(alpha)), QByteArray());

    QPushButton *official = nullptr;
    const auto buttons = window.ui->serverButtonsGroup->findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        if (button->styleSheet().contains(QStringLiteral("official.png"))) {
            official = button;
        }
    }
    QVERIFY(official != nullptr);
    window.ui->labelServer->setPixmap(QPixmap(10, 10));
    QCOMPARE(WindowDriver::click(window, *official), QString());
    QVERIFY(!window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(window.ui->labelClient->text(), QStringLiteral("OFFICIAL"));
    QVERIFY(window.ui->labelServer->pixmap(Qt::ReturnByValue).isNull());
}

void TestBadPictures::logoNamesThatLeadOut_data()
{
    QTest::addColumn<QString>("server");
    QTest::newRow("the folder above") << QStringLiteral("../precious");
    QTest::newRow("an absolute path") << QStringLiteral("%1/precious");
}

void TestBadPictures::logoNamesThatLeadOut()
{
    QFETCH(QString, server);
    server.replace(QStringLiteral("%1"), m_folder->outside());
    NewsWorld world;
    // Every path that the server may see for this name.
    for (const QString &path : {QStringLiteral("precious"), server, server.mid(1)}) {
        world.server.serve(logoPath(path), Documents::png(40, 30, 0xff305080));
    }
    world.publish({Documents::client(server, QStringLiteral("Official"), QStringLiteral("1.0"))});
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());
    // The logo is shown, it is only not kept.
    QCOMPARE(columns(window), 1);
    QVERIFY(hasLogo(window, server));
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles() << QStringLiteral("offline.txt")));
}

QTEST_MAIN(TestBadPictures)
#include "tst_badpictures.moc"
