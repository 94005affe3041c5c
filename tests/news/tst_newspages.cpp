#include "fetch/imagedownloader.h"
#include "news/newsworld.h"
#include "support/consolecapture.h"
#include "support/messagelog.h"
#include "support/scratchfolder.h"
#include "support/urlcatcher.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QApplication>
#include <QChildEvent>
#include <QDesktopServices>
#include <QTest>
#include <QThreadPool>

#include <memory>

namespace
{
constexpr int limit = 15000; // milliseconds

// Whether the widget shows when its parents do.
bool isShown(const QWidget *widget)
{
    return !widget->isHidden();
}

// Which of the slides has its dot and its three labels shown, each as a digit; what belongs
// together shows the same digits.
QStringList shownSlides(const testform &window)
{
    QString active;
    QString passive;
    QString title;
    QString subtitle;
    QString image;
    const auto note = [](QString &digits, const QWidget *widget, int index) {
        if (isShown(widget)) {
            digits += QString::number(index);
        }
    };
    for (int i = 0; i < 3; ++i) {
        const NewsWorld::Item &item = NewsWorld::itemNumber(i);
        note(active, NewsWorld::labelOf(window, qPrintable(QStringLiteral("slide%1").arg(i + 1))),
             i);
        note(passive,
             NewsWorld::labelOf(window, qPrintable(QStringLiteral("slidePassive%1").arg(i + 1))),
             i);
        note(title, NewsWorld::labelOf(window, item.title), i);
        note(subtitle, NewsWorld::labelOf(window, item.subtitle), i);
        note(image, NewsWorld::labelOf(window, item.image), i);
    }
    return {active, passive, title, subtitle, image};
}

QStringList onlySlide(int index)
{
    const QString own = QString::number(index);
    return {own, QStringLiteral("012").remove(own), own, own, own};
}

// The six widgets of the tabs as "1" for shown and "0" for hidden: active headers, passive
// headers, pages, HOME before NEWS.
QString shownTabs(const testform &window)
{
    const Ui::testform &ui = *window.ui;
    QString digits;
    for (const QWidget *widget : {ui.btnHomeGroupActive, ui.btnNewsGroupActive, ui.btnHomeGroup,
                                  ui.btnNewsGroup, ui.contentHome, ui.contentNews}) {
        digits += isShown(widget) ? QLatin1Char('1') : QLatin1Char('0');
    }
    return digits;
}

const QString homeShown = QStringLiteral("100110");
const QString newsShown = QStringLiteral("011001");

// Catches addresses of no scheme: what the desktop's opener is handed for an empty text.
class EmptyUrlCatcher : public UrlCatcher
{
public:
    EmptyUrlCatcher() { QDesktopServices::setUrlHandler(QString(), this, "open"); }
    ~EmptyUrlCatcher() override { QDesktopServices::unsetUrlHandler(QString()); }
};

// Notes the address of each picture when its fetch begins. Which server sees its request first is
// up to the toolkit's threads.
class FetchLog : public QObject
{
    Q_OBJECT

public:
    FetchLog() { qApp->installEventFilter(this); }

    QStringList paths;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const auto *downloader = qobject_cast<const ImageDownloader *>(watched);
        if (event->type() == QEvent::ChildAdded && downloader != nullptr) {
            paths << downloader->url.path().mid(1);
        }
        return QObject::eventFilter(watched, event);
    }
};

bool documentIsApplied(testform &window)
{
    return QTest::qWaitFor([&] { return window.ui->labelConnecting->isHidden(); }, limit);
}

bool allPicturesAreThere(testform &window)
{
    for (const NewsWorld::Item &item : NewsWorld::items) {
        const ImageDownloader *const downloader = NewsWorld::itemOf(window, item).imageDownloader;
        if (downloader == nullptr || !downloader->isDownloaded) {
            return false;
        }
    }
    return QThreadPool::globalInstance()->waitForDone(limit);
}

void showWithoutPanel(testform &window)
{
    window.ui->serverButtonsGroup->hide();
    QVERIFY(WindowDriver::show(window));
}

QRgb colourOnScreen(testform &window, const QWidget &widget)
{
    const QPoint place = widget.mapTo(&window, QPoint(widget.width() / 2, widget.height() / 2));
    return window.grab().toImage().pixel(place);
}
} // namespace

// Tabs, slides and tiles in the real window.
class TestNewsPages : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void itemIsBoundToItsLabels_data();
    void itemIsBoundToItsLabels();
    void tileNames();
    void socialAddresses();
    void visibilityAfterConstruction();
    void bindingAgainShowsTheFirstSlide();

    void tab_data();
    void tab();
    void sameTabChangesNothing();
    void tabThatDoesNotExistHidesAll();
    void slide_data();
    void slide();
    void sameSlideChangesNothing_data();
    void sameSlideChangesNothing();
    void fullTurnAppliesTheSlideAgain();

    void arrowsTurnTheSlides_data();
    void arrowsTurnTheSlides();
    void headersSwitchTheTabs();
    void activeHeaderDoesNothing();
    void slideIsKeptBehindTheNewsTab();

    void clickOpensThePage_data();
    void clickOpensThePage();
    void socialButtonOpensItsPage_data();
    void socialButtonOpensItsPage();
    void clickBeforeTheDocumentOpensNothing_data();
    void clickBeforeTheDocumentOpensNothing();
    void itemsTheDocumentLacks();
    void addressIsReadTolerantly_data();
    void addressIsReadTolerantly();

    void outputLine_data();
    void outputLine();
    void outputLineFollowsTheDocument();
    void picturesAreRequestedInOrder();
    void bufferIsReadInOrder();
    void everyPictureIsSeenOnScreen();

private:
    std::unique_ptr<ScratchFolder> m_folder;
};

void TestNewsPages::init()
{
    m_folder = std::make_unique<ScratchFolder>();
}

void TestNewsPages::cleanup()
{
    m_folder.reset();
}

void addItemRows()
{
    QTest::addColumn<int>("number");
    for (int i = 0; i < NewsWorld::numItems; ++i) {
        QTest::newRow(NewsWorld::itemNumber(i).description) << i;
    }
}

void TestNewsPages::itemIsBoundToItsLabels_data()
{
    addItemRows();
}

void TestNewsPages::itemIsBoundToItsLabels()
{
    QFETCH(int, number);
    const NewsWorld::Item &expected = NewsWorld::itemNumber(number);
    testform window;
    const News &item = NewsWorld::itemOf(window, expected);
    QVERIFY(item.imageLabel != nullptr);
    QCOMPARE(item.imageLabel, NewsWorld::labelOf(window, expected.image));
    QVERIFY(item.labelTitle != nullptr);
    QCOMPARE(item.labelTitle, NewsWorld::labelOf(window, expected.title));
    QVERIFY(item.labelSubtitle != nullptr);
    QCOMPARE(item.labelSubtitle, NewsWorld::labelOf(window, expected.subtitle));
    QCOMPARE(item.fullyInitialized, false);
    QCOMPARE(item.toString(), QStringLiteral(", , , "));
    QCOMPARE(item.labelTitle->text(), QString());
    QCOMPARE(item.labelSubtitle->text(), QString());
}

void TestNewsPages::tileNames()
{
    QCOMPARE(int(IMAGE_NEWS_BIG), 0);
    QCOMPARE(int(IMAGE_NEWS_MEDIUM_1), 1);
    QCOMPARE(int(IMAGE_NEWS_MEDIUM_2), 2);
    QCOMPARE(int(IMAGE_NEWS_SMALL_1), 3);
    QCOMPARE(int(IMAGE_NEWS_SMALL_2), 4);
    QCOMPARE(int(IMAGE_NEWS_SMALL_3), 5);
}

void TestNewsPages::socialAddresses()
{
    const testform window;
    QCOMPARE(window.urlFacebook, QStringLiteral("https://community.emberwake.test/page"));
    QCOMPARE(window.urlDiscord, QStringLiteral("https://chat.emberwake.test/invite"));
}

void TestNewsPages::visibilityAfterConstruction()
{
    const testform window;
    QCOMPARE(window.menuState, 0);
    QCOMPARE(window.slideState, 0);
    QCOMPARE(shownTabs(window), homeShown);
    QCOMPARE(shownSlides(window), onlySlide(0));
    for (const NewsWorld::Item &item : NewsWorld::items) {
        if (!item.isSlide) {
            QVERIFY2(isShown(NewsWorld::labelOf(window, item.image)), item.image);
            QVERIFY2(isShown(NewsWorld::labelOf(window, item.title)), item.title);
            QVERIFY2(isShown(NewsWorld::labelOf(window, item.subtitle)), item.subtitle);
        }
    }
}

void TestNewsPages::bindingAgainShowsTheFirstSlide()
{
    testform window;
    window.setSlideState(2);
    window.ui->titleNewsBig->hide();
    window.news[0].title = QStringLiteral("older");
    window.homeNews[0].newsUrl = QStringLiteral("older");
    window.initNewsGui();
    QStringList expected = onlySlide(0);
    expected[0] = QStringLiteral("2"); // the dots are not its business
    expected[1] = QStringLiteral("01");
    QCOMPARE(shownSlides(window), expected);
    // Neither are the tiles' labels.
    QVERIFY(!isShown(window.ui->titleNewsBig));
    QVERIFY(isShown(window.ui->subtitleNewsBig));
    QCOMPARE(window.news[0].title, QString());
    QCOMPARE(window.homeNews[0].newsUrl, QString());
}

void TestNewsPages::tab_data()
{
    QTest::addColumn<QList<int>>("calls");
    QTest::addColumn<QString>("shown");
    QTest::newRow("NEWS") << QList<int>{1} << newsShown;
    QTest::newRow("NEWS and back to HOME") << QList<int>{1, 0} << homeShown;
    QTest::newRow("HOME at the start") << QList<int>{0} << homeShown;
    QTest::newRow("NEWS, HOME and NEWS again") << QList<int>{1, 0, 1} << newsShown;
}

void TestNewsPages::tab()
{
    QFETCH(QList<int>, calls);
    QFETCH(QString, shown);
    testform window;
    for (const int index : calls) {
        window.setMenuState(index);
    }
    QCOMPARE(shownTabs(window), shown);
    QCOMPARE(window.menuState, calls.last());
}

void TestNewsPages::sameTabChangesNothing()
{
    testform window;
    window.ui->contentHome->hide();
    window.ui->contentNews->show();
    window.ui->btnHomeGroupActive->hide();
    window.setMenuState(0);
    QCOMPARE(shownTabs(window), QStringLiteral("000101"));
    QCOMPARE(window.menuState, 0);

    window.setMenuState(1);
    QCOMPARE(shownTabs(window), newsShown);
    window.ui->btnNewsGroup->show();
    window.ui->contentNews->hide();
    window.setMenuState(1);
    QCOMPARE(shownTabs(window), QStringLiteral("011100"));
}

void TestNewsPages::tabThatDoesNotExistHidesAll()
{
    testform window;
    window.setMenuState(2);
    QCOMPARE(shownTabs(window), QStringLiteral("001100"));
    QCOMPARE(window.menuState, 2);
    window.setMenuState(0);
    QCOMPARE(shownTabs(window), homeShown);
}

void TestNewsPages::slide_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("call");
    QTest::addColumn<int>("shown");
    QTest::newRow("-1 from the first wraps to the last") << 0 << -1 << 2;
    QTest::newRow("3 from the last wraps to the first") << 2 << 3 << 0;
    QTest::newRow("-4 wraps twice, to the last") << 0 << -4 << 2;
    QTest::newRow("-3 is the first") << 1 << -3 << 0;
    QTest::newRow("-2 is the second") << 0 << -2 << 1;
    QTest::newRow("7 is the second") << 0 << 7 << 1;
    QTest::newRow("3 from the first stays on it") << 0 << 3 << 0;
    QTest::newRow("1 from the first") << 0 << 1 << 1;
    QTest::newRow("2 from the second") << 1 << 2 << 2;
    QTest::newRow("0 from the last") << 2 << 0 << 0;
    QTest::newRow("a far negative one") << 0 << -3001 << 2;
}

void TestNewsPages::slide()
{
    QFETCH(int, from);
    QFETCH(int, call);
    QFETCH(int, shown);
    testform window;
    window.setSlideState(from);
    QCOMPARE(shownSlides(window), onlySlide(from));
    window.setSlideState(call);
    QCOMPARE(window.slideState, shown);
    QCOMPARE(shownSlides(window), onlySlide(shown));
}

void TestNewsPages::sameSlideChangesNothing_data()
{
    QTest::addColumn<int>("index");
    QTest::newRow("the first") << 0;
    QTest::newRow("the second") << 1;
    QTest::newRow("the third") << 2;
}

void TestNewsPages::sameSlideChangesNothing()
{
    QFETCH(int, index);
    testform window;
    window.setSlideState(index);
    const int other = (index + 1) % 3;
    window.homeNews[index].labelTitle->hide();
    window.homeNews[other].imageLabel->show();
    window.activeSlides[index]->hide();
    window.passiveSlides[index]->show();
    const QStringList before = shownSlides(window);
    QVERIFY(before != onlySlide(index));
    window.setSlideState(index);
    QCOMPARE(shownSlides(window), before);
    QCOMPARE(window.slideState, index);
}

void TestNewsPages::fullTurnAppliesTheSlideAgain()
{
    testform window;
    window.homeNews[0].labelTitle->hide();
    window.homeNews[1].labelSubtitle->show();
    window.homeNews[2].imageLabel->show();
    window.activeSlides[0]->hide();
    window.passiveSlides[0]->show();
    QVERIFY(shownSlides(window) != onlySlide(0));
    window.setSlideState(3);
    QCOMPARE(shownSlides(window), onlySlide(0));
    QCOMPARE(window.slideState, 0);
}

void TestNewsPages::arrowsTurnTheSlides_data()
{
    QTest::addColumn<QString>("arrow");
    QTest::addColumn<QList<int>>("slides");
    QTest::newRow("to the right") << QStringLiteral("btnRight") << QList<int>{1, 2, 0, 1};
    QTest::newRow("to the left") << QStringLiteral("btnLeft") << QList<int>{2, 1, 0, 2};
}

void TestNewsPages::arrowsTurnTheSlides()
{
    QFETCH(QString, arrow);
    QFETCH(QList<int>, slides);
    testform window;
    showWithoutPanel(window);
    for (const int index : slides) {
        QCOMPARE(WindowDriver::click(window, arrow), QString());
        QCOMPARE(shownSlides(window), onlySlide(index));
        QCOMPARE(window.slideState, index);
    }
}

void TestNewsPages::headersSwitchTheTabs()
{
    testform window;
    showWithoutPanel(window);
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(WindowDriver::click(window, QStringLiteral("btnNews_2")), QString());
        QCOMPARE(shownTabs(window), newsShown);
        QVERIFY(window.ui->newsBig->isVisible());
        QVERIFY(!window.ui->btnRight->isVisible());
        QCOMPARE(WindowDriver::click(window, QStringLiteral("btnHome_2")), QString());
        QCOMPARE(shownTabs(window), homeShown);
        QVERIFY(!window.ui->newsBig->isVisible());
        QVERIFY(window.ui->btnRight->isVisible());
    }
}

void TestNewsPages::activeHeaderDoesNothing()
{
    testform window;
    showWithoutPanel(window);
    QCOMPARE(WindowDriver::click(window, QStringLiteral("btnHome")), QString());
    QCOMPARE(shownTabs(window), homeShown);
    window.setMenuState(1);
    QCOMPARE(WindowDriver::click(window, QStringLiteral("btnNews")), QString());
    QCOMPARE(shownTabs(window), newsShown);
    // The passive header of the shown tab is out of reach.
    QVERIFY(!WindowDriver::click(window, QStringLiteral("btnNews_2")).isEmpty());
}

void TestNewsPages::slideIsKeptBehindTheNewsTab()
{
    testform window;
    showWithoutPanel(window);
    QCOMPARE(WindowDriver::click(window, QStringLiteral("btnRight")), QString());
    QCOMPARE(WindowDriver::click(window, QStringLiteral("btnNews_2")), QString());
    QCOMPARE(window.slideState, 1);
    QVERIFY(!window.ui->homeNewsImageBackground2->isVisible());
    QCOMPARE(WindowDriver::click(window, QStringLiteral("btnHome_2")), QString());
    QCOMPARE(shownSlides(window), onlySlide(1));
    QVERIFY(window.ui->homeNewsImageBackground2->isVisible());
    QCOMPARE(WindowDriver::click(window, QStringLiteral("btnRight")), QString());
    QCOMPARE(window.slideState, 2);
}

// Brings the item to the front as a player would, and clicks it.
QString clickItem(testform &window, const NewsWorld::Item &item)
{
    if (item.isSlide) {
        for (int i = 0; i < item.index; ++i) {
            const QString refused = WindowDriver::click(window, QStringLiteral("btnRight"));
            if (!refused.isEmpty()) {
                return refused;
            }
        }
    } else {
        const QString refused = WindowDriver::click(window, QStringLiteral("btnNews_2"));
        if (!refused.isEmpty()) {
            return refused;
        }
    }
    return WindowDriver::click(window, QLatin1String(item.button));
}

void TestNewsPages::clickOpensThePage_data()
{
    addItemRows();
}

void TestNewsPages::clickOpensThePage()
{
    QFETCH(int, number);
    const NewsWorld::Item &item = NewsWorld::itemNumber(number);
    NewsWorld world;
    world.publish(world.elements());
    testform window;
    QVERIFY(documentIsApplied(window));
    showWithoutPanel(window);
    const UrlCatcher browser;
    QCOMPARE(clickItem(window, item), QString());
    QCOMPARE(browser.opened, QList<QUrl>{QUrl(NewsWorld::pageOf(item))});
}

void TestNewsPages::socialButtonOpensItsPage_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("page");
    QTest::newRow("community") << QStringLiteral("btnFacebook")
                               << QStringLiteral("https://community.emberwake.test/page");
    QTest::newRow("chat") << QStringLiteral("btnDiscord")
                          << QStringLiteral("https://chat.emberwake.test/invite");
}

void TestNewsPages::socialButtonOpensItsPage()
{
    QFETCH(QString, button);
    QFETCH(QString, page);
    testform window;
    showWithoutPanel(window);
    const UrlCatcher browser;
    QCOMPARE(WindowDriver::click(window, button), QString());
    QCOMPARE(browser.opened, QList<QUrl>{QUrl(page)});
}

void TestNewsPages::clickBeforeTheDocumentOpensNothing_data()
{
    addItemRows();
}

void TestNewsPages::clickBeforeTheDocumentOpensNothing()
{
    QFETCH(int, number);
    testform window;
    showWithoutPanel(window);
    ConsoleCapture console;
    const MessageLog log;
    const EmptyUrlCatcher browser;
    QCOMPARE(clickItem(window, NewsWorld::itemNumber(number)), QString());
    QCOMPARE(browser.opened.size(), 1);
    QVERIFY(browser.opened.first().isEmpty());
    QCOMPARE(MessageLog::messages(), QStringList());
    QCOMPARE(console.out() + console.err(), QByteArray());
}

void TestNewsPages::itemsTheDocumentLacks()
{
    NewsWorld world;
    const QStringList all = world.elements();
    world.publish({all[0], all[3]});
    testform window;
    window.setMenuState(1);
    showWithoutPanel(window);
    const QString sheet = window.ui->newsMedium1Background->styleSheet();
    const QImage placeholder = window.ui->newsMedium1Background->grab().toImage();
    QVERIFY(documentIsApplied(window));
    window.ui->serverButtonsGroup->hide();
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreThere(window), limit);

    QCOMPARE(window.ui->homeNewsTitle->text(), NewsWorld::titleOf(NewsWorld::itemNumber(0)));
    QCOMPARE(window.ui->titleNewsBig->text(), NewsWorld::titleOf(NewsWorld::itemNumber(3)));
    for (const int number : {1, 2, 4, 5, 6, 7, 8}) {
        const NewsWorld::Item &item = NewsWorld::itemNumber(number);
        QCOMPARE(NewsWorld::labelOf(window, item.title)->text(), QString());
        QCOMPARE(NewsWorld::labelOf(window, item.subtitle)->text(), QString());
    }
    QCOMPARE(window.ui->newsMedium1Background->styleSheet(), sheet);
    QCOMPARE(window.ui->newsMedium1Background->grab().toImage(), placeholder);

    const EmptyUrlCatcher browser;
    QCOMPARE(WindowDriver::click(window, QStringLiteral("btnNewsBig")), QString());
    QCOMPARE(WindowDriver::click(window, QStringLiteral("btnNewsMedium1")), QString());
    QCOMPARE(browser.opened,
             (QList<QUrl>{QUrl(NewsWorld::pageOf(NewsWorld::itemNumber(3))), QUrl()}));
}

void TestNewsPages::addressIsReadTolerantly_data()
{
    QTest::addColumn<QString>("clickUrl");
    QTest::addColumn<QByteArray>("opened");
    QTest::newRow("a blank is encoded") << QStringLiteral("https://news.emberwake.test/a page")
                                        << QByteArray("https://news.emberwake.test/a%20page");
    QTest::newRow("a percent sign that starts no code is encoded")
        << QStringLiteral("https://news.emberwake.test/100%")
        << QByteArray("https://news.emberwake.test/100%25");
    QTest::newRow("a code stays as it is")
        << QStringLiteral("https://news.emberwake.test/a%20b?c=d&e")
        << QByteArray("https://news.emberwake.test/a%20b?c=d&e");
}

void TestNewsPages::addressIsReadTolerantly()
{
    QFETCH(QString, clickUrl);
    QFETCH(QByteArray, opened);
    NewsWorld world;
    world.publish({Documents::news(QStringLiteral("homenews"), {}, {}, {}, clickUrl)});
    testform window;
    QVERIFY(documentIsApplied(window));
    showWithoutPanel(window);
    const UrlCatcher browser;
    QCOMPARE(WindowDriver::click(window, QStringLiteral("btnHomeNews")), QString());
    QCOMPARE(browser.opened.size(), 1);
    QCOMPARE(browser.opened.first().toEncoded(), opened);
}

void TestNewsPages::outputLine_data()
{
    QTest::addColumn<bool>("isBuffer");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("from the buffer") << true << QByteArray("loading news. with buffer:1\n");
    QTest::newRow("from the network") << false << QByteArray("loading news. with buffer:0\n");
}

void TestNewsPages::outputLine()
{
    QFETCH(bool, isBuffer);
    QFETCH(QByteArray, line);
    testform window;
    ConsoleCapture console;
    window.loadNews(isBuffer);
    QCOMPARE(console.out(), line);
    QCOMPARE(console.err(), QByteArray());
}

void TestNewsPages::outputLineFollowsTheDocument()
{
    NewsWorld world;
    world.publish(world.elements());
    testform window;
    const MessageLog log; // keeps the toolkit's own lines off the console
    ConsoleCapture console;
    QVERIFY(documentIsApplied(window));
    QCOMPARE(console.out(), QByteArray("launcher\nhomenews\nhomenews\nhomenews\nnews\nnews\nnews\n"
                                       "news\nnews\nnews\nloading news. with buffer:0\n"));
}

void TestNewsPages::picturesAreRequestedInOrder()
{
    NewsWorld world;
    world.publish(world.elements());
    testform window;
    const FetchLog fetches;
    QVERIFY(documentIsApplied(window));
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreThere(window), limit);
    QStringList expected;
    for (const NewsWorld::Item &item : NewsWorld::items) {
        expected << NewsWorld::path(item);
        QCOMPARE(world.pictures(item).requests(NewsWorld::path(item)), 1);
    }
    QCOMPARE(fetches.paths, expected);
}

void TestNewsPages::bufferIsReadInOrder()
{
    testform window;
    {
        const ConsoleCapture console;
        window.loadNews(true); // makes the downloaders; there is nothing to read yet
    }
    QStringList loaded;
    for (const NewsWorld::Item &item : NewsWorld::items) {
        ScratchFolder::write(NewsWorld::cacheFile(item), Documents::png(8, 6, item.colour));
        connect(NewsWorld::itemOf(window, item).imageDownloader, &ImageDownloader::loadedImage,
                this, [&loaded, &item] { loaded << NewsWorld::cacheFile(item); });
    }
    const ConsoleCapture console;
    window.loadNews(true);
    QCOMPARE(loaded, NewsWorld::cacheFiles());
}

void TestNewsPages::everyPictureIsSeenOnScreen()
{
    NewsWorld world;
    world.publish(world.elements());
    testform window;
    QVERIFY(documentIsApplied(window));
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreThere(window), limit);
    showWithoutPanel(window);
    for (const NewsWorld::Item &item : NewsWorld::items) {
        window.setMenuState(item.isSlide ? 0 : 1);
        if (item.isSlide) {
            window.setSlideState(item.index);
        }
        QVERIFY2(NewsWorld::labelOf(window, item.title)->isVisible(), item.title);
        QCOMPARE(NewsWorld::labelOf(window, item.title)->text(), NewsWorld::titleOf(item));
        QCOMPARE(NewsWorld::labelOf(window, item.subtitle)->text(), NewsWorld::subtitleOf(item));
        QCOMPARE(colourOnScreen(window, *NewsWorld::labelOf(window, item.image)), item.colour);
    }
}

QTEST_MAIN(TestNewsPages)
#include "tst_newspages.moc"
