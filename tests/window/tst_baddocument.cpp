#include "badinputtest.h"
#include "base/simplemarkup.h"
#include "news/newsworld.h"
#include "support/consolecapture.h"
#include "support/relation.h"
#include "support/scratchfolder.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QLayout>
#include <QTest>

#ifdef Q_OS_UNIX
#include <atomic>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#endif

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

    void textThatNamesAFile_data();
    void textThatNamesAFile();
    void textThatTakesLong_data();
    void textThatTakesLong();
    void textWithSimpleMarkup();
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

void TestBadDocument::textThatNamesAFile_data()
{
    QTest::addColumn<QByteArray>("label");
    for (const NewsWorld::Item &item : NewsWorld::items) {
        QTest::addRow("the title of %s", item.description) << QByteArray(item.title);
        QTest::addRow("the text of %s", item.description) << QByteArray(item.subtitle);
    }
    QTest::newRow("a client kind") << QByteArray("labelClient");
    QTest::newRow("a version") << QByteArray("labelClientVersion");
    QTest::newRow("a version that is downloaded") << QByteArray("downloadProgressText");
}

// Whatever a text names, nobody opens it: a pipe, on which a reader waits for ever.
void TestBadDocument::textThatNamesAFile()
{
#ifdef Q_OS_UNIX
    QFETCH(QByteArray, label);
    const QString text = QStringLiteral("<IMG SRC='PIPE'>");
    QCOMPARE(mkfifo("PIPE", 0600), 0);
    NewsWorld world;
    const bool inClient = label.startsWith("labelClient") || label == "downloadProgressText";
    QStringList elements = world.elements();
    for (int number = 0; number < NewsWorld::numItems; ++number) {
        const NewsWorld::Item &item = NewsWorld::itemNumber(number);
        elements[number] = Documents::news(
            item.isSlide ? QStringLiteral("homenews") : QStringLiteral("news"),
            label == item.title ? text : NewsWorld::titleOf(item),
            label == item.subtitle ? text : NewsWorld::subtitleOf(item), world.pictureUrl(item));
    }
    const QString kind = label == "labelClient" ? text : QStringLiteral("OFFICIAL");
    const QString version = inClient && label != "labelClient" ? text : QStringLiteral("1.0");
    elements.prepend(Documents::client(alpha, kind, version));
    world.publish(elements);

    // Lets a reader go, so that a failure does not hang.
    std::atomic<bool> isOver{false};
    std::atomic<bool> wasOpened{false};
    std::thread writer([&] {
        while (!isOver) {
            const int pipe = open("PIPE", O_WRONLY | O_CLOEXEC);
            wasOpened = wasOpened || !isOver;
            close(pipe);
        }
    });
    {
        Session session;
        testform &window = session.window;
        const ConsoleCapture console;
        const bool shown =
            session.show() && QTest::qWaitFor(
                                  [&] {
                                      return window.ui->labelConnecting->isHidden() &&
                                             allPicturesAreAnswered(window);
                                  },
                                  limit);
        if (inClient) {
            window.onServerSelect(alpha + QLatin1Char('|') + kind);
        }
        if (label == "downloadProgressText") {
            window.updateProgress(QStringLiteral("50 %"), 50);
        }
        const auto *const shownOn = NewsWorld::labelOf(window, label.constData());
        window.setMenuState(inClient || label.startsWith("homeNews") ? 0 : 1);
        window.ui->serverButtonsGroup->hide();
        const QImage picture = window.grab().toImage();
        const QString said = shownOn->text();
        const QSize asked = shownOn->sizeHint();
        isOver = true;
        const int pipe = open("PIPE", O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        writer.join();
        close(pipe);
        QVERIFY(shown);
        QVERIFY(!picture.isNull());
        QVERIFY(asked.isValid());
        QVERIFY2(said.contains(text), qPrintable(said));
        QCOMPARE(shownOn->textFormat(), Qt::PlainText);
    }
    QVERIFY2(!wasOpened, "the file that a text names was opened");
#else
    QSKIP("there are no named pipes in a folder here");
#endif
}

void TestBadDocument::textThatTakesLong_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("tables in tables")
        << QStringLiteral("<table><tr><td>").repeated(28) + QStringLiteral("fire");
    QTest::newRow("a text without an end") << QStringLiteral("fire ").repeated(400000);
    QTest::newRow("a word without an end") << QString(2000000, QLatin1Char('x'));
    QTest::newRow("lists in lists") << QStringLiteral("<ul><li>").repeated(1000);
    QTest::newRow("the deepest lists, as often as possible")
        << (QStringLiteral("<ul><li>").repeated(deepestMarkup / 2) +
            QStringLiteral("</ul>").repeated(deepestMarkup / 2))
               .repeated(48);
    QTest::newRow("as many lines as possible")
        << QStringLiteral("<p>").repeated(longestShownText / 3);
    QTest::newRow("large letters") << QStringLiteral("<span style=\"font-size:999px\">") +
                                          QString(longestShownText - 100, QLatin1Char('W'));
    QTest::newRow("letters of many parts")
        << QStringLiteral("x") + QString(longestShownText, QChar(0x0301));
}

// Each is painted within a tenth of a second or so; the limit leaves room for a busy machine.
void TestBadDocument::textThatTakesLong()
{
    QFETCH(QString, text);
    NewsWorld world;
    world.publish({Documents::news(QStringLiteral("homenews"), QStringLiteral("Title"), text),
                   Documents::news(QStringLiteral("news"), text, QStringLiteral("Text"))});
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    window.ui->serverButtonsGroup->hide();
    const QLabel *const labels[] = {window.ui->homeNewsDescription, window.ui->titleNewsBig};
    for (const QLabel *label : labels) {
        window.setMenuState(label == labels[0] ? 0 : 1);
        QElapsedTimer clock;
        clock.start();
        (void)label->sizeHint();
        QVERIFY(!window.grab().isNull());
        VERIFY_RELATION(label->text().size(), <=, longestShownText);
        VERIFY_RELATION(clock.elapsed(), <, 5000);
    }
}

// What an operator may have used all along.
void TestBadDocument::textWithSimpleMarkup()
{
    const QString text = QStringLiteral("<span style=\"background-color:#ff0000; color:#ff0000\">"
                                        "Fair</span><br/><b>tonight</b>");
    NewsWorld world;
    world.publish({Documents::news(QStringLiteral("homenews"), QStringLiteral("Title"), text)});
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    const QLabel *const label = window.ui->homeNewsDescription;
    QCOMPARE(label->text(), text);
    QCOMPARE(label->textFormat(), Qt::AutoText);
    window.ui->serverButtonsGroup->hide();
    const QRect ground(label->mapTo(&window, QPoint()), label->size());
    const QImage picture = window.grab(ground).toImage();
    QVERIFY(picture.pixel(2, 10) == 0xffff0000);
}

QTEST_MAIN(TestBadDocument)
#include "tst_baddocument.moc"
