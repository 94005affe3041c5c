#include "info/serverbutton.h"
#include "info/world.h"
#include "support/consolecapture.h"
#include "support/links.h"
#include "support/localencoding.h"
#include "support/messagelog.h"
#include "support/testsettings.h"
#include "support/urlcatcher.h"
#include "support/windowdriver.h"
#include "ui_testform.h"

#include <QLayout>
#include <QMessageBox>
#include <QScopeGuard>
#include <QTest>
#include <QThreadPool>

#ifndef Q_OS_WIN
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace
{
const QString launcherXml = QStringLiteral("launcher.xml");
const QString offlineTxt = QStringLiteral("offline.txt");

QString officialOf(const QString &server, const QString &version = QStringLiteral("1.0"))
{
    return Documents::client(server, QStringLiteral("Official"), version);
}

QStringList serversOf(const testform &window)
{
    QStringList names = window.clientInfos.keys();
    names.sort();
    return names;
}

// The number of columns of the panel; -1 when none was built.
int columnsOf(const testform &window)
{
    const QLayout *row = window.ui->serverButtonsGroup->layout();
    return row != nullptr ? row->count() : -1;
}

bool pictureOf(const QLabel *label)
{
    return !label->pixmap(Qt::ReturnByValue).isNull();
}

// How the fetch goes wrong, or what is odd about its body.
enum class Fault {
    None,
    Refused,
    NotFound,
    ServerError,
    Redirected,
    Dropped,
};
} // namespace
Q_DECLARE_METATYPE(Fault)

// The launcher document as the window takes it: the offline copy, the console, the labels, the
// client table, and every kind of document that is none.
class TestLauncherDocument : public QObject
{
    Q_OBJECT

private slots:
    void bodyIsCopied_data();
    void bodyIsCopied();
    void copyIsNotWrittenThroughALink();
    void copyIsNotWrittenIntoAPipe();
    void copyThatCannotBeWrittenIsNoHindrance();
    void everyStartElementIsNamedOnStandardOutput();
    void brokenElementIsReportedAndWhatCameBeforeIsKept_data();
    void brokenElementIsReportedAndWhatCameBeforeIsKept();
    void outdatedLauncherWarnsOpensTheWebsiteAndQuitsAfterApplying_data();
    void outdatedLauncherWarnsOpensTheWebsiteAndQuitsAfterApplying();
    void currentLauncherDoesNotWarn_data();
    void currentLauncherDoesNotWarn();
    void authDecidesWhatIsOffered_data();
    void authDecidesWhatIsOffered();
    void lastOfTwoEntriesWins();
    void entriesOfOneServerStandTogether();
    void textsReachTheirLabels();
    void titlesBeyondAscii_data();
    void titlesBeyondAscii();
    void tenthNewsElementIsNotRead();
    void surplusSlidesAndTilesAreIgnored_data();
    void surplusSlidesAndTilesAreIgnored();
    void clientsAfterTheNinthAreLost();
    void offlineCopyCanBeLoaded_data();
    void offlineCopyCanBeLoaded();
    void missingOfflineCopyLoadsNothing_data();
    void missingOfflineCopyLoadsNothing();
    void trimStringRemovesOneQuestionMark();
    void emptyBodyLeavesTheWindowConnecting_data();
    void emptyBodyLeavesTheWindowConnecting();
    void strangeDocuments_data();
    void strangeDocuments();
    void redirectTargetIsNotAsked();
    void documentOfTwentyMegabytes_data();
    void documentOfTwentyMegabytes();
};

void TestLauncherDocument::bodyIsCopied_data()
{
    QTest::addColumn<QByteArray>("before"); // null: no file
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("after");
    const QByteArray document = Documents::launcher({officialOf(QStringLiteral("Alpha"))});
    const QByteArray longer(document.size() + 20, 'x');
    const QByteArray umlaut = "<launcher name=\"\xC3\xBC\xE2\x82\xAC\"/>";

    QTest::newRow("an absent file is created") << QByteArray() << document << document;
    QTest::newRow("a shorter text is overwritten") << QByteArray("old") << document << document;
    QTest::newRow("the tail of a longer text stays")
        << longer << document << document + QByteArray(20, 'x');
    QTest::newRow("an empty body creates the file empty")
        << QByteArray() << QByteArray() << QByteArray("");
    QTest::newRow("an empty body leaves the file as it was")
        << QByteArray("old") << QByteArray() << QByteArray("old");
    QTest::newRow("only what comes before a NUL byte is written")
        << QByteArray("0123456789") << QByteArray("abc\0def", 7) << QByteArray("abc3456789");
    QTest::newRow("letters beyond ASCII in the local encoding")
        << QByteArray() << umlaut << LocalEncoding::bytes(QString::fromUtf8(umlaut));
    QTest::newRow("line ends stay as they are")
        << QByteArray() << QByteArray("<a>\r\n\n</a>") << QByteArray("<a>\r\n\n</a>");
}

void TestLauncherDocument::bodyIsCopied()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, after);
    World world;
    world.server.serve(launcherXml, body);
    if (!before.isNull()) {
        ScratchFolder::write(offlineTxt, before);
    }
    testform window;
    QVERIFY(World::answered(window));
    QVERIFY(QFile::exists(offlineTxt));
    QCOMPARE(ScratchFolder::read(offlineTxt), after);
}

// The player, or somebody else, may have put one there: what it leads to is no copy of ours.
void TestLauncherDocument::copyIsNotWrittenThroughALink()
{
    World world;
    world.publish({officialOf(QStringLiteral("Alpha"))});
    ScratchFolder::write(QStringLiteral("../letter.txt"), "mine");
    MAKE_LINK(QStringLiteral("../letter.txt"), offlineTxt);
    testform window;
    QVERIFY(World::answered(window));
    QCOMPARE(columnsOf(window), 1);
    QCOMPARE(ScratchFolder::read(QStringLiteral("../letter.txt")), QByteArray("mine"));
}

void TestLauncherDocument::copyIsNotWrittenIntoAPipe()
{
#ifdef Q_OS_WIN
    QSKIP("pipes have no place in a folder here");
#else
    World world;
    // More than a pipe takes before somebody reads.
    world.publish({officialOf(QStringLiteral("Alpha")),
                   QStringLiteral("<!-- %1 -->").arg(QString(100000, QLatin1Char('x')))});
    QCOMPARE(mkfifo("offline.txt", 0600), 0);
    // The writer finds a reader, who reads nothing: it would wait for ever for room.
    const int reader = open("offline.txt", O_RDONLY | O_NONBLOCK);
    const auto close = qScopeGuard([reader] { ::close(reader); });
    testform window;
    QVERIFY(World::answered(window));
    QCOMPARE(columnsOf(window), 1);
    char byte = 0;
    QCOMPARE(read(reader, &byte, 1), ssize_t(0));
#endif
}

void TestLauncherDocument::copyThatCannotBeWrittenIsNoHindrance()
{
    World world;
    world.publish({officialOf(QStringLiteral("Alpha"))});
    ScratchFolder::write(QStringLiteral("offline.txt/within"), "mine");
    testform window;
    QVERIFY(World::answered(window));
    QCOMPARE(serversOf(window), QStringList{QStringLiteral("Alpha")});
    QCOMPARE(columnsOf(window), 1);
    QCOMPARE(ScratchFolder::read(QStringLiteral("offline.txt/within")), QByteArray("mine"));
}

void TestLauncherDocument::everyStartElementIsNamedOnStandardOutput()
{
    World world;
    world.publish({officialOf(QStringLiteral("Alpha")),
                   QStringLiteral("<weather><rain/></weather>"),
                   Documents::news(QStringLiteral("homenews"), QStringLiteral("t")),
                   Documents::news(QStringLiteral("news"), QStringLiteral("t"))});
    QByteArray out;
    QByteArray err;
    {
        const MessageLog log; // the toolkit's own messages would stand between
        ConsoleCapture console;
        testform window;
        (void)World::answered(window);
        out = console.out();
        err = console.err();
    }
    QCOMPARE(out, QByteArray("launcher\nclient\nweather\nrain\nhomenews\nnews\n"
                             "loading news. with buffer:0\n"));
    QCOMPARE(err, QByteArray());
}

void TestLauncherDocument::brokenElementIsReportedAndWhatCameBeforeIsKept_data()
{
    QTest::addColumn<QString>("element");
    QTest::addColumn<QByteArray>("line");
    const QByteArray client = "ERROR: CLIENT: BROKEN XML FILE\n";
    const QByteArray news = "ERROR: HOMENEWS: BROKEN XML FILE\n";
    QTest::newRow("a client without version")
        << QStringLiteral("<client server=\"B\" name=\"Official\" url=\"u\"/>") << client;
    QTest::newRow("a client without url")
        << QStringLiteral("<client server=\"B\" name=\"Official\" version=\"1\"/>") << client;
    QTest::newRow("a slide without title")
        << QStringLiteral("<homenews id=\"1\" description=\"\" imageUrl=\"\" clickUrl=\"\"/>")
        << news;
    QTest::newRow("a tile without id, reported like a slide")
        << QStringLiteral("<news title=\"\" description=\"\" imageUrl=\"\" clickUrl=\"\"/>")
        << news;
}

void TestLauncherDocument::brokenElementIsReportedAndWhatCameBeforeIsKept()
{
    QFETCH(QString, element);
    QFETCH(QByteArray, line);
    World world;
    world.publish({officialOf(QStringLiteral("Alpha")),
                   Documents::news(QStringLiteral("news"), QStringLiteral("First")), element,
                   officialOf(QStringLiteral("Bravo")),
                   Documents::news(QStringLiteral("news"), QStringLiteral("Second"))});
    QByteArray out;
    QByteArray err;
    QStringList servers;
    int columns = 0;
    bool connecting = true;
    QStringList titles;
    {
        const MessageLog log;
        ConsoleCapture console;
        testform window;
        (void)World::answered(window);
        out = console.out();
        err = console.err();
        servers = serversOf(window);
        columns = columnsOf(window);
        connecting = !window.ui->labelConnecting->isHidden();
        titles << window.ui->titleNewsBig->text() << window.ui->titleNewsMedium1->text();
    }
    QCOMPARE(err, line);
    QCOMPARE(servers, QStringList{QStringLiteral("Alpha")});
    QCOMPARE(columns, 1);
    QVERIFY(!connecting);
    QCOMPARE(titles, (QStringList{QStringLiteral("First"), QString()}));
    // The element's name is still printed, and the news are started.
    QCOMPARE(out.count('\n'), 5);
    QVERIFY(out.endsWith("\nloading news. with buffer:0\n"));
}

void TestLauncherDocument::outdatedLauncherWarnsOpensTheWebsiteAndQuitsAfterApplying_data()
{
    QTest::addColumn<QString>("more");
    QTest::newRow("said once") << QString();
    QTest::newRow("said many times") << QStringLiteral("<launcher version='3'/>").repeated(20);
}

void TestLauncherDocument::outdatedLauncherWarnsOpensTheWebsiteAndQuitsAfterApplying()
{
    QFETCH(QString, more);
    World world;
    // Held until the program's own event loop runs, which is the one that ends.
    world.server.serveHeld(
        launcherXml,
        Documents::launcher({officialOf(QStringLiteral("Alpha")), more,
                             Documents::news(QStringLiteral("news"), QStringLiteral("Title"))},
                            QStringLiteral("2")));
    const UrlCatcher desktop;
    testform window;
    QVERIFY(WindowDriver::show(window));

    QString title;
    QString text;
    QMessageBox::StandardButtons buttons;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    bool hasParent = true;
    bool readOn = true;
    const auto answered = WindowDriver::answerNextDialog([&](QDialog &dialog) {
        if (const auto *box = qobject_cast<QMessageBox *>(&dialog)) {
            title = box->windowTitle();
            text = box->text();
            buttons = box->standardButtons();
            icon = box->icon();
            hasParent = box->parent() != nullptr;
        }
        // The box comes before the rest of the document and before the website.
        readOn = !window.clientInfos.isEmpty() || !desktop.opened.isEmpty();
        dialog.accept();
    });
    // A second box would hold the loop until this ends it.
    QTimer::singleShot(worldLimit, &window, [] { QApplication::exit(-2); });
    world.server.release(launcherXml);
    QCOMPARE(QApplication::exec(), 0);

    QVERIFY(*answered);
    QCOMPARE(title, QStringLiteral("Warning"));
    QCOMPARE(text, QStringLiteral("You current launcher is outdated! Please download a new one!"));
    QCOMPARE(buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(icon, QMessageBox::Warning);
    QVERIFY(!hasParent);
    QVERIFY(!readOn);
    QCOMPARE(desktop.opened, QList<QUrl>{QUrl(testform::WEBSITE_URL)});
    // All was applied before the program ended.
    QCOMPARE(serversOf(window), QStringList{QStringLiteral("Alpha")});
    QCOMPARE(columnsOf(window), 1);
    QCOMPARE(window.ui->titleNewsBig->text(), QStringLiteral("Title"));
    QVERIFY(window.ui->labelConnecting->isHidden());
    QVERIFY(!QFile::exists(QStringLiteral("settings.txt")));
}

void TestLauncherDocument::currentLauncherDoesNotWarn_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::newRow("the same version") << QByteArray("<launcher version=\"1\">");
    QTest::newRow("an earlier version") << QByteArray("<launcher version=\"0\">");
    QTest::newRow("a negative version") << QByteArray("<launcher version=\"-2\">");
    QTest::newRow("no version") << QByteArray("<launcher>");
    QTest::newRow("a version that is no number") << QByteArray("<launcher version=\"2.0\">");
}

void TestLauncherDocument::currentLauncherDoesNotWarn()
{
    QFETCH(QByteArray, start);
    World world;
    world.server.serve(launcherXml,
                       start + officialOf(QStringLiteral("Alpha")).toUtf8() + "</launcher>");
    const UrlCatcher desktop;
    const DialogGuard dialogs;
    testform window;
    QVERIFY(World::answered(window));
    QCOMPARE(dialogs.titles, QStringList());
    QCOMPARE(desktop.opened, QList<QUrl>());
    QCOMPARE(serversOf(window), QStringList{QStringLiteral("Alpha")});
}

void TestLauncherDocument::authDecidesWhatIsOffered_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("sum");
    QTest::addColumn<bool>("offered");
    const QString code = QStringLiteral("ember code");
    const QString sum = Documents::sumOf(code);
    QTest::newRow("the sum of the code") << code << sum << true;
    QTest::newRow("the sum in upper case") << code << sum.toUpper() << true;
    QTest::newRow("the sum of another code") << QStringLiteral("other") << sum << false;
    QTest::newRow("no code set") << QString() << sum << false;
    QTest::newRow("no code set, and the sum of nothing")
        << QString() << QStringLiteral("DA39A3EE5E6B4B0D3255BFEF95601890AFD80709") << true;
    QTest::newRow("a code beyond ASCII")
        << QString::fromUtf8("\xC3\x84") << Documents::sumOf(QString::fromUtf8("\xC3\x84")) << true;
}

void TestLauncherDocument::authDecidesWhatIsOffered()
{
    QFETCH(QString, code);
    QFETCH(QString, sum);
    QFETCH(bool, offered);
    World world;
    world.publish({officialOf(QStringLiteral("Alpha")),
                   Documents::client(QStringLiteral("Secret"), QStringLiteral("Beta"),
                                     QStringLiteral("1.0"), QStringLiteral("u"), sum)});
    ScratchFolder::write(QStringLiteral("settings.txt"),
                         LocalEncoding::bytes(QStringLiteral("||true|") + code));
    testform window;
    QByteArray err;
    {
        ConsoleCapture console;
        (void)World::answered(window);
        err = console.err();
    }
    // A hidden entry leaves no trace: no server, no column, no logo, no word.
    QStringList servers{QStringLiteral("Alpha")};
    if (offered) {
        servers << QStringLiteral("Secret");
    }
    QCOMPARE(serversOf(window), servers);
    QCOMPARE(columnsOf(window), servers.size());
    QCOMPARE(window.serverButtons.contains(QStringLiteral("Secret")), offered);
    QCOMPARE(err, QByteArray());
    if (offered) {
        const ClientInfo info =
            window.clientInfos[QStringLiteral("Secret")][QStringLiteral("Beta")];
        QCOMPARE(info.auth, sum);
    }
    // The first logo is asked for in either case, and the other only when offered.
    QTRY_COMPARE(world.server.requests(QStringLiteral("Alpha.png")), 1);
    QTRY_COMPARE(world.server.requests(QStringLiteral("Secret.png")), offered ? 1 : 0);
}

void TestLauncherDocument::lastOfTwoEntriesWins()
{
    World world;
    world.publish(
        {Documents::client(QStringLiteral("Alpha"), QStringLiteral("Beta"), QStringLiteral("1.0"),
                           QStringLiteral("http://a/"), Documents::sumOf(QString())),
         Documents::client(QStringLiteral("Alpha"), QStringLiteral("Beta"), QStringLiteral("0.9"),
                           QStringLiteral("http://b/"))});
    testform window;
    QVERIFY(World::answered(window));
    QCOMPARE(serversOf(window), QStringList{QStringLiteral("Alpha")});
    const auto clients = window.clientInfos.value(QStringLiteral("Alpha"));
    QCOMPARE(clients.size(), 1);
    const ClientInfo info = clients.value(QStringLiteral("Beta"));
    QCOMPARE(info.version, QStringLiteral("0.9"));
    QCOMPARE(info.url, QStringLiteral("http://b/"));
    QCOMPARE(info.auth, QString());
}

void TestLauncherDocument::entriesOfOneServerStandTogether()
{
    World world;
    world.publish({Documents::client(QStringLiteral("Alpha"), QStringLiteral("Official"),
                                     QStringLiteral("1.0"), QStringLiteral("http://a/")),
                   Documents::client(QStringLiteral("Alpha"), QStringLiteral("Beta"),
                                     QStringLiteral("2.0"), QStringLiteral("http://b/")),
                   Documents::client(QStringLiteral("Alpha"), QStringLiteral("Nightly"),
                                     QStringLiteral("3.0"), QStringLiteral("http://c/"))});
    testform window;
    QVERIFY(World::answered(window));
    QCOMPARE(columnsOf(window), 1);
    const auto clients = window.clientInfos.value(QStringLiteral("Alpha"));
    QCOMPARE(clients.size(), 3);
    const ClientInfo beta = clients.value(QStringLiteral("Beta"));
    QCOMPARE(beta.server, QStringLiteral("Alpha"));
    QCOMPARE(beta.client, QStringLiteral("Beta"));
    QCOMPARE(beta.version, QStringLiteral("2.0"));
    QCOMPARE(beta.url, QStringLiteral("http://b/"));
    QCOMPARE(clients.value(QStringLiteral("Nightly")).version, QStringLiteral("3.0"));
}

void TestLauncherDocument::textsReachTheirLabels()
{
    World world;
    QStringList elements;
    for (int i = 1; i <= 3; ++i) {
        elements << Documents::news(QStringLiteral("homenews"), QStringLiteral("Slide %1").arg(i),
                                    QStringLiteral("Of slide %1").arg(i),
                                    world.server.url(QStringLiteral("slide%1").arg(i)),
                                    QStringLiteral("http://pages.test/slide%1").arg(i));
    }
    for (int i = 1; i <= 6; ++i) {
        elements << Documents::news(QStringLiteral("news"), QStringLiteral("Tile %1").arg(i),
                                    QStringLiteral("Of tile %1").arg(i), QString(),
                                    QStringLiteral("http://pages.test/tile%1").arg(i));
    }
    world.publish(elements);
    testform window;
    QVERIFY(World::answered(window));

    const Ui::testform &ui = *window.ui;
    const QList<QLabel *> labels{
        ui.homeNewsTitle,    ui.homeNewsDescription,  ui.homeNewsTitle2,   ui.homeNewsDescription2,
        ui.homeNewsTitle3,   ui.homeNewsDescription3, ui.titleNewsBig,     ui.subtitleNewsBig,
        ui.titleNewsMedium1, ui.subtitleNewsMedium1,  ui.titleNewsMedium2, ui.subtitleNewsMedium2,
        ui.titleNewsSmall1,  ui.subtitleNewsSmall1,   ui.titleNewsSmall2,  ui.subtitleNewsSmall2,
        ui.titleNewsSmall3,  ui.subtitleNewsSmall3};
    QStringList shown;
    for (const QLabel *label : labels) {
        shown << label->text();
    }
    QStringList expected;
    for (int i = 1; i <= 3; ++i) {
        expected << QStringLiteral("Slide %1").arg(i) << QStringLiteral("Of slide %1").arg(i);
    }
    for (int i = 1; i <= 6; ++i) {
        expected << QStringLiteral("Tile %1").arg(i) << QStringLiteral("Of tile %1").arg(i);
    }
    QCOMPARE(shown, expected);

    for (int i = 0; i < 3; ++i) {
        QCOMPARE(window.homeNews[i].title, QStringLiteral("Slide %1").arg(i + 1));
        QCOMPARE(window.homeNews[i].description, QStringLiteral("Of slide %1").arg(i + 1));
        QCOMPARE(window.homeNews[i].imageUrl,
                 world.server.url(QStringLiteral("slide%1").arg(i + 1)));
        QCOMPARE(window.homeNews[i].newsUrl,
                 QStringLiteral("http://pages.test/slide%1").arg(i + 1));
    }
    for (int i = 0; i < 6; ++i) {
        QCOMPARE(window.news[i].title, QStringLiteral("Tile %1").arg(i + 1));
        QCOMPARE(window.news[i].newsUrl, QStringLiteral("http://pages.test/tile%1").arg(i + 1));
    }
    // And their pictures are asked for.
    QTRY_COMPARE(world.server.requests(QStringLiteral("slide1")), 1);
    QTRY_COMPARE(world.server.requests(QStringLiteral("slide3")), 1);
}

void TestLauncherDocument::titlesBeyondAscii_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("onSlide");
    QTest::addColumn<QString>("onTile");
    QTest::newRow("an accented letter is lost on a slide alone")
        << QString::fromUcs4(U"Caf\u00E9s") << QString::fromUcs4(U"Caf\uFFFDs")
        << QString::fromUcs4(U"Caf\u00E9s");
    QTest::newRow("a first letter beyond Latin-1 goes from a slide alone")
        << QString::fromUcs4(U"\u0416ar") << QStringLiteral("ar") << QString::fromUcs4(U"\u0416ar");
    QTest::newRow("a later letter beyond Latin-1 is a question mark on a slide alone")
        << QString::fromUcs4(U"a\u0416r") << QStringLiteral("a?r")
        << QString::fromUcs4(U"a\u0416r");
    QTest::newRow("a first question mark goes from both")
        << QStringLiteral("?Who") << QStringLiteral("Who") << QStringLiteral("Who");
    QTest::newRow("only one question mark goes")
        << QStringLiteral("??") << QStringLiteral("?") << QStringLiteral("?");
}

void TestLauncherDocument::titlesBeyondAscii()
{
    QFETCH(QString, title);
    QFETCH(QString, onSlide);
    QFETCH(QString, onTile);
    World world;
    // The description takes the same road as the title.
    world.publish({Documents::news(QStringLiteral("homenews"), title, title),
                   Documents::news(QStringLiteral("news"), title, title)});
    testform window;
    QVERIFY(World::answered(window));
    QCOMPARE(window.ui->homeNewsTitle->text(), onSlide);
    QCOMPARE(window.ui->homeNewsDescription->text(), onSlide);
    QCOMPARE(window.ui->titleNewsBig->text(), onTile);
    QCOMPARE(window.ui->subtitleNewsBig->text(), onTile);
}

void TestLauncherDocument::tenthNewsElementIsNotRead()
{
    World world;
    QStringList elements;
    for (int i = 0; i < 4; ++i) {
        elements << Documents::news(QStringLiteral("homenews"), QStringLiteral("S"));
    }
    for (int i = 1; i <= 6; ++i) {
        elements << Documents::news(QStringLiteral("news"), QStringLiteral("T%1").arg(i));
    }
    world.publish(elements);
    testform window;
    QVERIFY(World::answered(window));
    QCOMPARE(window.ui->titleNewsSmall2->text(), QStringLiteral("T5"));
    QCOMPARE(window.ui->titleNewsSmall3->text(), QString());
    QCOMPARE(window.news[5].title, QString());
}

void TestLauncherDocument::surplusSlidesAndTilesAreIgnored_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("nine slides") << QStringLiteral("homenews");
    QTest::newRow("nine tiles") << QStringLiteral("news");
}

void TestLauncherDocument::surplusSlidesAndTilesAreIgnored()
{
    QFETCH(QString, kind);
    World world;
    QStringList elements;
    for (int i = 1; i <= 9; ++i) {
        elements << Documents::news(kind, QString::number(i));
    }
    world.publish(elements);
    testform window;
    QVERIFY(World::answered(window));
    const bool isSlide = kind == QStringLiteral("homenews");
    QStringList shown;
    for (const News &item : window.homeNews) {
        shown << item.labelTitle->text();
    }
    for (const News &item : window.news) {
        shown << item.labelTitle->text();
    }
    const QStringList none{QString(), QString(), QString()};
    const QStringList first{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")};
    const QStringList second{QStringLiteral("4"), QStringLiteral("5"), QStringLiteral("6")};
    QCOMPARE(shown, isSlide ? first + none + none : none + first + second);
    QVERIFY(window.ui->labelConnecting->isHidden());
}

void TestLauncherDocument::clientsAfterTheNinthAreLost()
{
    World world;
    QStringList elements{officialOf(QStringLiteral("Alpha"))};
    for (int i = 0; i < 9; ++i) {
        elements << Documents::news(QStringLiteral("news"), QStringLiteral("T"));
    }
    elements << officialOf(QStringLiteral("Bravo"));
    world.publish(elements);
    testform window;
    QVERIFY(World::answered(window));
    QCOMPARE(serversOf(window), QStringList{QStringLiteral("Alpha")});
}

void TestLauncherDocument::offlineCopyCanBeLoaded_data()
{
    QTest::addColumn<bool>("byName");
    QTest::newRow("through the slot") << true;
    QTest::newRow("through loadBuffer") << false;
}

void TestLauncherDocument::offlineCopyCanBeLoaded()
{
    QFETCH(bool, byName);
    World world;
    world.server.serve(launcherXml, QByteArray());
    world.server.serve(QStringLiteral("picture"), Documents::png(20, 10, 0x00FF00));
    testform window;
    QVERIFY(World::answered(window));
    QCOMPARE(columnsOf(window), -1);

    const QByteArray document = Documents::launcher(
        {officialOf(QStringLiteral("Alpha")),
         Documents::news(QStringLiteral("homenews"), QStringLiteral("Title"), QString(),
                         world.server.url(QStringLiteral("picture"))),
         Documents::news(QStringLiteral("news"), QString::fromUtf8("\xC3\x84"))});
    ScratchFolder::write(offlineTxt, LocalEncoding::bytes(QString::fromUtf8(document)));
    ScratchFolder::write(QStringLiteral("homeNewsImageBackground.png"),
                         Documents::png(4, 4, 0xFF0000));
    QByteArray out;
    bool invoked = true;
    {
        const MessageLog log;
        ConsoleCapture console;
        if (byName) {
            invoked = QMetaObject::invokeMethod(&window, "loadInfo", Q_ARG(bool, true));
        } else {
            window.loadBuffer();
        }
        out = console.out();
    }
    QVERIFY(invoked);
    QCOMPARE(out, QByteArray("launcher\nclient\nhomenews\nnews\nloading news. with buffer:1\n"));
    QCOMPARE(serversOf(window), QStringList{QStringLiteral("Alpha")});
    QCOMPARE(columnsOf(window), 1);
    QVERIFY(window.ui->labelConnecting->isHidden());
    QCOMPARE(window.ui->titleNewsBig->text(), QString::fromUtf8("\xC3\x84"));
    QCOMPARE(ScratchFolder::read(offlineTxt), LocalEncoding::bytes(QString::fromUtf8(document)));

    // The slide's picture comes from its file; the logo is fetched as ever.
    QVERIFY(pictureOf(window.ui->homeNewsImageBackground));
    QTRY_COMPARE(world.server.requests(QStringLiteral("Alpha.png")), 1);
    QCOMPARE(world.server.requests(QStringLiteral("picture")), 0);
}

void TestLauncherDocument::missingOfflineCopyLoadsNothing_data()
{
    QTest::addColumn<QString>("instead");
    QTest::newRow("there is none") << QString();
    QTest::newRow("an empty file") << offlineTxt;
    QTest::newRow("a folder of its name") << QStringLiteral("offline.txt/within");
}

void TestLauncherDocument::missingOfflineCopyLoadsNothing()
{
    QFETCH(QString, instead);
    World world;
    world.server.serve(launcherXml, QByteArray());
    testform window;
    QVERIFY(World::answered(window));
    QVERIFY(QFile::remove(offlineTxt));
    if (!instead.isEmpty()) {
        ScratchFolder::write(instead);
    }
    const QStringList before = ScratchFolder::tree();
    QByteArray out;
    {
        ConsoleCapture console;
        window.loadInfo(true);
        out = console.out();
    }
    QCOMPARE(out, QByteArray());
    QCOMPARE(columnsOf(window), -1);
    QVERIFY(!window.ui->labelConnecting->isHidden());
    QCOMPARE(ScratchFolder::tree(), before);
}

void TestLauncherDocument::trimStringRemovesOneQuestionMark()
{
    const World world;
    testform window;
    QCOMPARE(window.trimString(QStringLiteral("?a?")), QStringLiteral("a?"));
    QCOMPARE(window.trimString(QStringLiteral("??a")), QStringLiteral("?a"));
    QCOMPARE(window.trimString(QStringLiteral("a?")), QStringLiteral("a?"));
    QCOMPARE(window.trimString(QString()), QString());
}

void TestLauncherDocument::emptyBodyLeavesTheWindowConnecting_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("an empty document") << Fault::None << QByteArray();
    QTest::newRow("a document that starts with NUL")
        << Fault::None << QByteArray("\0<client/>", 10);
    QTest::newRow("a refused connection") << Fault::Refused << QByteArray();
    QTest::newRow("not found") << Fault::NotFound << QByteArray();
    QTest::newRow("a server error") << Fault::ServerError << QByteArray();
    QTest::newRow("a redirect") << Fault::Redirected << QByteArray();
    QTest::newRow("a connection dropped before the body") << Fault::Dropped << QByteArray();
}

namespace
{
void arrange(World &world, Fault fault, const QByteArray &body)
{
    switch (fault) {
    case Fault::None:
        world.server.serve(launcherXml, body);
        return;
    case Fault::Refused:
        TestSettings::setBaseUrl(QString::fromLatin1(TestSettings::nobodyListens));
        return;
    case Fault::NotFound:
        world.server.serve(launcherXml, body, 404);
        return;
    case Fault::ServerError:
        world.server.serve(launcherXml, body, 500);
        return;
    case Fault::Redirected:
        world.server.serve(QStringLiteral("elsewhere.xml"),
                           Documents::launcher({officialOf(QStringLiteral("Elsewhere"))}));
        world.server.redirect(launcherXml, world.server.url(QStringLiteral("elsewhere.xml")), body);
        return;
    case Fault::Dropped:
        world.server.serveCut(launcherXml, body + QByteArray(1000, ' '), body.size());
        return;
    }
}
} // namespace

void TestLauncherDocument::emptyBodyLeavesTheWindowConnecting()
{
    QFETCH(Fault, fault);
    QFETCH(QByteArray, body);
    World world;
    arrange(world, fault, body);
    ScratchFolder::write(QStringLiteral("settings.txt"), "Alpha|Official|true|");
    const QStringList outside = world.folder.treeOutside();
    const DialogGuard dialogs;
    testform window;
    QByteArray out;
    QByteArray err;
    {
        const MessageLog log;
        ConsoleCapture console;
        (void)WindowDriver::show(window);
        // Showing the window turns the event loop, so the answer may be there already.
        const auto hasAnswer = [] { return QFile::exists(offlineTxt); };
        (void)QTest::qWaitFor(hasAnswer, worldLimit);
        out = console.out();
        err = console.err();
    }
    QCOMPARE(ScratchFolder::tree(), (QStringList{offlineTxt, QStringLiteral("settings.txt")}));
    QCOMPARE(ScratchFolder::read(offlineTxt), QByteArray());
    QCOMPARE(out, QByteArray());
    QCOMPARE(err, QByteArray());
    QVERIFY(window.ui->labelConnecting->isVisible());
    QVERIFY(window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(columnsOf(window), -1);
    QCOMPARE(window.ui->serverButtonsGroup->findChildren<QGroupBox *>().size(), 0);
    QCOMPARE(window.selectedClientInfo.server, QString());
    QCOMPARE(dialogs.titles, QStringList());
    QCOMPARE(world.folder.treeOutside(), outside);
    // The window still answers.
    QCOMPARE(WindowDriver::click(window, QStringLiteral("rememberCheckBox")), QString());
    QVERIFY(!window.settings.rememberSettings);
}

void TestLauncherDocument::strangeDocuments_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QStringList>("servers");
    const QByteArray alpha = officialOf(QStringLiteral("Alpha")).toUtf8();
    const QByteArray bravo = officialOf(QStringLiteral("Bravo")).toUtf8();
    const QStringList none;
    const QStringList onlyAlpha{QStringLiteral("Alpha")};
    const QStringList both{QStringLiteral("Alpha"), QStringLiteral("Bravo")};
    const QByteArray page = "<!DOCTYPE html><html><body><h1>Sorry</h1><p>No.<br></body></html>";

    QTest::newRow("what follows a NUL byte is not seen")
        << Fault::None << "<launcher>" + alpha + QByteArray(1, '\0') + bravo + "</launcher>"
        << onlyAlpha;
    QTest::newRow("NUL bytes throughout")
        << Fault::None << "<launcher>" + QByteArray(100, '\0') + alpha + "</launcher>" << none;
    QTest::newRow("plain words") << Fault::None << QByteArray("Service unavailable") << none;
    QTest::newRow("random bytes") << Fault::None
                                  << QByteArray("\xFF\xFE\x01\x89PNG\r\n\x1A<<&;", 14) << none;
    QTest::newRow("a web page") << Fault::None << page << none;
    QTest::newRow("XML cut in the middle of an element")
        << Fault::None << "<launcher>" + alpha + bravo.left(30) << onlyAlpha;
    QTest::newRow("XML without its end") << Fault::None << "<launcher>" + alpha + bravo << both;
    QTest::newRow("XML broken between two clients")
        << Fault::None << "<launcher>" + alpha + "<&>" + bravo + "</launcher>" << onlyAlpha;
    QTest::newRow("unknown elements around and between")
        << Fault::None << "<a><b/>" + alpha + "<c d=\"e\">f" + bravo + "</c></a>" << both;
    QTest::newRow("a client without its required attributes")
        << Fault::None << "<launcher>" + alpha + "<client/>" + bravo + "</launcher>" << onlyAlpha;
    QTest::newRow("a document without clients") << Fault::None << QByteArray("<launcher/>") << none;
    QTest::newRow("entities that multiply")
        << Fault::None
        << "<!DOCTYPE x [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
           "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d "
           "\"&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;\"><!ENTITY e \"&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;\">]>"
           "<launcher>" +
               alpha + "&e;&e;&e;&e;&e;&e;&e;&e;&e;" + bravo + "</launcher>"
        << none;
    QTest::newRow("not found, with a page") << Fault::NotFound << page << none;
    QTest::newRow("not found, with a document")
        << Fault::NotFound << "<launcher>" + alpha + "</launcher>" << onlyAlpha;
    QTest::newRow("a server error, with a page") << Fault::ServerError << page << none;
    QTest::newRow("a redirect, with a page") << Fault::Redirected << page << none;
    QTest::newRow("a connection dropped in mid-body")
        << Fault::Dropped << "<launcher>" + alpha << onlyAlpha;
}

void TestLauncherDocument::strangeDocuments()
{
    QFETCH(Fault, fault);
    QFETCH(QByteArray, body);
    QFETCH(QStringList, servers);
    World world;
    arrange(world, fault, body);
    const QStringList outside = world.folder.treeOutside();
    const DialogGuard dialogs;
    testform window;
    QVERIFY(World::answered(window));
    QVERIFY(WindowDriver::show(window));

    // Whatever was read is applied: the panel stands, if need be without columns.
    QCOMPARE(serversOf(window), servers);
    QCOMPARE(columnsOf(window), servers.size());
    QVERIFY(window.ui->labelConnecting->isHidden());
    QVERIFY(window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(dialogs.titles, QStringList());
    for (const QString &server : servers) {
        QTRY_VERIFY(window.serverButtons[server]->getPixmap() != nullptr);
    }

    QThreadPool::globalInstance()->waitForDone();
    QStringList files;
    for (const QString &server : servers) {
        files << server + QStringLiteral(".png");
    }
    files << offlineTxt;
    for (const QString &name : ScratchFolder::tree()) {
        // Every picture of the news is asked for, and its cache file written, as always.
        if (!name.contains(QStringLiteral("ews"))) {
            QVERIFY2(files.removeOne(name), qPrintable(name));
        }
    }
    QCOMPARE(files, QStringList());
    QCOMPARE(world.folder.treeOutside(), outside);
    QCOMPARE(WindowDriver::click(window, QStringLiteral("rememberCheckBox")), QString());
    QVERIFY(!window.settings.rememberSettings);
}

void TestLauncherDocument::redirectTargetIsNotAsked()
{
    World world;
    const QByteArray own = Documents::launcher({officialOf(QStringLiteral("Alpha"))});
    arrange(world, Fault::Redirected, own);
    testform window;
    QVERIFY(World::answered(window));
    // The body of the redirect itself counts.
    QCOMPARE(serversOf(window), QStringList{QStringLiteral("Alpha")});
    QTRY_COMPARE(world.server.requests(QStringLiteral("Alpha.png")), 1);
    QCOMPARE(world.server.requests(QStringLiteral("elsewhere.xml")), 0);
}

void TestLauncherDocument::documentOfTwentyMegabytes_data()
{
    QTest::addColumn<QByteArray>("filling");
    constexpr int size = 20 * 1024 * 1024;
    const QByteArray element = "<item><part name=\"" + QByteArray(3000, 'e') + "\"/></item>\n";
    QTest::newRow("of unknown elements") << element.repeated(size / element.size() + 1);
    QTest::newRow("of text") << QByteArray(size, 'e');
    QTest::newRow("of one comment") << "<!--" + QByteArray(size, 'e') + "-->";
    QTest::newRow("of one title") << "<news id=\"1\" title=\"" + QByteArray(size, 'e') +
                                         "\" description=\"d\" imageUrl=\"\" clickUrl=\"\"/>";
    QTest::newRow("of one attribute") << "<item name=\"" + QByteArray(size, 'e') + "\"/>";
}

void TestLauncherDocument::documentOfTwentyMegabytes()
{
    QFETCH(QByteArray, filling);
    World world;
    const QByteArray document = "<launcher version=\"1\">" +
                                officialOf(QStringLiteral("Alpha")).toUtf8() + filling +
                                officialOf(QStringLiteral("Bravo")).toUtf8() + "</launcher>";
    world.server.serve(launcherXml, document);
    const QStringList outside = world.folder.treeOutside();
    testform window;
    {
        ConsoleCapture console; // the names would fill the log
        (void)World::answered(window, 60000);
    }
    QCOMPARE(serversOf(window), (QStringList{QStringLiteral("Alpha"), QStringLiteral("Bravo")}));
    QCOMPARE(columnsOf(window), 2);
    QCOMPARE(ScratchFolder::read(offlineTxt), document);
    QCOMPARE(world.folder.treeOutside(), outside);
    // The window shows and answers.
    QVERIFY(WindowDriver::show(window));
    QCOMPARE(WindowDriver::click(window, QStringLiteral("rememberCheckBox")), QString());
    QVERIFY(!window.settings.rememberSettings);
}

QTEST_MAIN(TestLauncherDocument)
#include "tst_launcherdocument.moc"
