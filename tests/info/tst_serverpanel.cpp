#include "fetch/imagedownloader.h"
#include "info/panelcolumns.h"
#include "info/serverbutton.h"
#include "info/world.h"
#include "support/relation.h"
#include "support/windowdriver.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <memory>

namespace
{
constexpr QRgb green = 0xFF00FF00;

QString nameOf(int server)
{
    return QStringLiteral("Server%1").arg(server, 2, 10, QLatin1Char('0'));
}

QString logoOf(int server)
{
    return nameOf(server) + QStringLiteral(".png");
}

// What a player does to the window: a border is dragged, full screen is entered or left.
enum class Step { Smallest, Larger, Design, FullScreen };

void take(testform &window, Step step)
{
    switch (step) {
    case Step::Smallest:
        window.customResize(487, 286);
        break;
    case Step::Larger:
        window.customResize(1200, 703);
        break;
    case Step::Design:
        window.customResize(974, 571);
        break;
    case Step::FullScreen:
        window.on_btnFullscreen_clicked();
        break;
    }
}

int inProportion(const testform &window, int length)
{
    return int(float(length) * float(window.prevWidth) / 974.0F);
}

QSize inProportion(const testform &window, QSize size)
{
    return {inProportion(window, size.width()), inProportion(window, size.height())};
}

// What of the panel cannot be used as it stands now, and why; an empty text for nothing. Each
// column has both kinds.
QString faultOf(const testform &window, QSize logo)
{
    const QRect panel = placeOf(window, window.ui->serverButtonsGroup);
    const QList<Column> columns = columnsOf(window);
    QList<QRect> places{placeOf(window, window.ui->btnCloseIntro),
                        placeOf(window, window.ui->rememberCheckBox)};
    for (int i = 0; i < columns.size(); ++i) {
        const Column &column = columns[i];
        const auto fault = [&window, i](const char *what, QSize size) {
            return QStringLiteral("column %1, window %2 x %3: %4, %5 x %6")
                .arg(i)
                .arg(window.width())
                .arg(window.height())
                .arg(QLatin1String(what))
                .arg(size.width())
                .arg(size.height());
        };
        for (const QPushButton *button : {column.upper, column.lower}) {
            if (button->size() != inProportion(window, QSize(196, 81))) {
                return fault("button", button->size());
            }
            if (window.childAt(placeOf(window, button).center()) != button) {
                return fault("button out of reach", button->size());
            }
        }
        const QSize room = inProportion(window, logo);
        const QSize picture = column.logo->icon().isNull() ? room : column.logo->iconSize();
        if (picture != room || column.logo->height() != room.height() ||
            column.logo->width() < room.width()) {
            return fault("logo", picture);
        }
        if (!column.logo->icon().isNull() &&
            column.logo->icon().pixmap(room).toImage().size() != room) {
            return fault("logo of another size", column.logo->icon().actualSize(room));
        }
        for (const QPushButton *button : {column.logo, column.upper, column.lower}) {
            const QRect place = placeOf(window, button);
            for (const QRect &other : qAsConst(places)) {
                if (place.intersects(other)) {
                    return fault("overlap", place.size());
                }
            }
            if (!panel.contains(place)) {
                return fault("outside", place.size());
            }
            places << place;
        }
    }
    return {};
}
} // namespace

// The selection panel at every size of the window.
class TestServerPanel : public QObject
{
    Q_OBJECT

private slots:
    void rescaleTakesTheColumnsSizes();
    void isUsableAfterEachStep_data();
    void isUsableAfterEachStep();
    void eachChoiceCanBeClicked();
    void logosMoveNoButton_data();
    void logosMoveNoButton();
    void newerLogoReplacesTheCachedAtEverySize();
    void manyServersStandSideBySide_data();
    void manyServersStandSideBySide();

private:
    // A shown window with so many servers; their logos are held back unless they are to arrive.
    enum class Logos { Arrive, Held };
    std::unique_ptr<testform> opened(World &world, int servers, Logos logos);
};

std::unique_ptr<testform> TestServerPanel::opened(World &world, int servers, Logos logos)
{
    QStringList elements;
    for (int i = 0; i < servers; ++i) {
        for (const char *kind : {"Official", "Beta"}) {
            elements << Documents::client(nameOf(i), QLatin1String(kind), QStringLiteral("2.0"));
        }
        const QByteArray picture = Documents::png(320, 150, green);
        if (logos == Logos::Arrive) {
            world.server.serve(logoOf(i), picture);
        } else {
            world.server.serveHeld(logoOf(i), picture);
        }
    }
    world.publish(elements);
    auto window = std::make_unique<testform>();
    const auto complete = [&window] {
        const auto &all = window->serverButtons;
        return std::all_of(all.begin(), all.end(), [](const ServerButton *server) {
            return server->getPixmap() != nullptr;
        });
    };
    if (!World::answered(*window) || !WindowDriver::show(*window) ||
        (logos == Logos::Arrive && !QTest::qWaitFor(complete, worldLimit))) {
        return nullptr;
    }
    QCoreApplication::processEvents();
    return window;
}

void TestServerPanel::rescaleTakesTheColumnsSizes()
{
    World world;
    const auto window = opened(world, 2, Logos::Arrive);
    QVERIFY(window != nullptr);
    for (const bool visible : {true, false}) {
        window->ui->serverButtonsGroup->setVisible(visible);
        window->customResize(visible ? 1200 : 974, visible ? 703 : 571);
        const auto columns = columnsOf(*window);
        for (const Column &column : columns) {
            QCOMPARE(column.logo->geometry(), QRect(0, 0, 0, 0));
            QCOMPARE(column.upper->geometry(), QRect(0, 0, 0, 0));
            QCOMPARE(column.lower->geometry(), QRect(0, 0, 0, 0));
            QCOMPARE(column.logo->iconSize(), QSize(0, 0));
            QCOMPARE(column.container->width(), 0);
        }
    }
}

void TestServerPanel::isUsableAfterEachStep_data()
{
    QTest::addColumn<int>("servers");
    QTest::addColumn<QSize>("logo");
    QTest::newRow("one server") << 1 << QSize(438, 205);
    QTest::newRow("two servers") << 2 << QSize(291, 136);
    QTest::newRow("three servers") << 3 << QSize(218, 102);
    QTest::newRow("four servers") << 4 << QSize(174, 81);
}

// Forty steps in a made-up order, with the panel open or closed meanwhile.
void TestServerPanel::isUsableAfterEachStep()
{
    QFETCH(int, servers);
    QFETCH(QSize, logo);
    World world;
    const auto window = opened(world, servers, Logos::Arrive);
    QVERIFY(window != nullptr);
    QCOMPARE(faultOf(*window, logo), QString());
    QRandomGenerator random(20250611);
    for (int i = 0; i < 40; ++i) {
        const bool closed = random.bounded(2) == 0;
        window->ui->serverButtonsGroup->setVisible(!closed);
        for (int steps = random.bounded(1, 4); steps > 0; --steps) {
            take(*window, Step(random.bounded(4)));
        }
        if (closed) {
            // Placed before it is seen.
            window->on_btnSelectServer_clicked();
        } else {
            QCoreApplication::processEvents();
        }
        QCOMPARE(faultOf(*window, logo), QString());
        // Nothing that comes later undoes it.
        QCoreApplication::processEvents();
        QCOMPARE(faultOf(*window, logo), QString());
    }
}

// As it was reported: choose, full screen, SELECT SERVER, choose, leave full screen, and so on.
void TestServerPanel::eachChoiceCanBeClicked()
{
    World world;
    const auto window = opened(world, 2, Logos::Arrive);
    QVERIFY(window != nullptr);
    const QList<Column> columns = columnsOf(*window);
    const Step steps[] = {Step::FullScreen, Step::FullScreen, Step::Smallest,   Step::Larger,
                          Step::FullScreen, Step::Smallest,   Step::FullScreen, Step::Design};
    int i = 0;
    for (const Step step : steps) {
        const Column &column = columns[i % 2];
        QPushButton *button = i / 2 % 2 == 0 ? column.upper : column.lower;
        window->selectedClientInfo = ClientInfo();
        QCOMPARE(WindowDriver::click(*window, *button), QString());
        QCOMPARE(window->selectedClientInfo.server, nameOf(i % 2));
        QCOMPARE(window->selectedClientInfo.client,
                 button == column.upper ? QStringLiteral("Official") : QStringLiteral("Beta"));
        take(*window, step);
        QCoreApplication::processEvents();
        QCOMPARE(WindowDriver::click(*window, QStringLiteral("btnSelectServer")), QString());
        ++i;
    }
}

void TestServerPanel::logosMoveNoButton_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("the design's size") << QSize(974, 571);
    QTest::newRow("the smallest size") << QSize(487, 286);
    QTest::newRow("a larger size") << QSize(1200, 703);
}

void TestServerPanel::logosMoveNoButton()
{
    QFETCH(QSize, size);
    World world;
    const auto window = opened(world, 3, Logos::Held);
    QVERIFY(window != nullptr);
    window->customResize(size.width(), size.height());
    QCoreApplication::processEvents();
    const QSize logo(218, 102);
    QCOMPARE(faultOf(*window, logo), QString());
    const auto places = [&window] {
        QList<QRect> all;
        const auto columns = columnsOf(*window);
        for (const Column &column : columns) {
            all << placeOf(*window, column.upper) << placeOf(*window, column.lower)
                << placeOf(*window, column.logo);
        }
        return all;
    };
    const QList<QRect> before = places();
    // In another order than they stand; the last never comes.
    for (const int i : {1, 0}) {
        world.server.release(logoOf(i));
        QTRY_VERIFY(window->serverButtons[nameOf(i)]->getPixmap() != nullptr);
        QCOMPARE(places(), before);
        QTRY_COMPARE(columnsOf(*window)[i].logo->iconSize(), inProportion(*window, logo));
        QCOMPARE(places(), before);
        QCOMPARE(faultOf(*window, logo), QString());
    }
}

void TestServerPanel::newerLogoReplacesTheCachedAtEverySize()
{
    World world;
    ScratchFolder::write(logoOf(0), Documents::png(8, 8, 0xFFFF0000));
    const auto window = opened(world, 1, Logos::Held);
    QVERIFY(window != nullptr);
    ServerButton *server = window->serverButtons[nameOf(0)];
    const QPushButton *logo = server->getButton();
    const auto colour = [logo] {
        return logo->icon().pixmap(logo->iconSize()).toImage().pixel(3, 3);
    };
    window->customResize(1200, 703);
    window->onServerSelect(nameOf(0) + QStringLiteral("|Official"));
    window->on_btnSelectServer_clicked();
    QCOMPARE(colour(), 0xFFFF0000);
    world.server.release(logoOf(0));
    QTRY_VERIFY(server->getImageDownloader()->isDownloaded);
    const QSize design(438, 205);
    QTRY_COMPARE(logo->iconSize(), inProportion(*window, design));
    QCOMPARE(colour(), green);
    window->customResize(974, 571);
    QCoreApplication::processEvents();
    QCOMPARE(logo->iconSize(), design);
    QCOMPARE(logo->icon().availableSizes(), QList<QSize>{design});
    QCOMPARE(colour(), green);
}

void TestServerPanel::manyServersStandSideBySide_data()
{
    QTest::addColumn<int>("servers");
    QTest::newRow("five, which are a little too many") << 5;
    QTest::newRow("twelve") << 12;
}

// The design has no room for more than four beside each other: their buttons are smaller, in their
// proportions, and each can be clicked.
void TestServerPanel::manyServersStandSideBySide()
{
    QFETCH(int, servers);
    World world;
    const auto window = opened(world, servers, Logos::Arrive);
    QVERIFY(window != nullptr);
    for (const QSize size : {QSize(974, 571), QSize(487, 286), QSize(1842, 1080)}) {
        window->customResize(size.width(), size.height());
        QCoreApplication::processEvents();
        QList<QRect> places;
        const auto columns = columnsOf(*window);
        for (const Column &column : columns) {
            for (const QPushButton *button : {column.logo, column.upper, column.lower}) {
                const QRect place = placeOf(*window, button);
                QVERIFY(window->rect().contains(place));
                QVERIFY(!place.isEmpty());
                for (const QRect &other : qAsConst(places)) {
                    QVERIFY(!place.intersects(other));
                }
                places << place;
                QCOMPARE(window->childAt(place.center()), button);
            }
            VERIFY_RELATION(qAbs(column.upper->height() - column.upper->width() * 81 / 196), <=, 2);
            VERIFY_RELATION(column.logo->iconSize().width(), <=, column.logo->width());
        }
    }
}

QTEST_MAIN(TestServerPanel)
#include "tst_serverpanel.moc"
