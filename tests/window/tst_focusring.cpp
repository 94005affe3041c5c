#include "support/contrast.h"
#include "support/relation.h"
#include "window/focusring.h"
#include "window/keyboardworld.h"

#include <QImage>

namespace
{
constexpr double enough = 3;

// The frame, while it is shown.
FocusRing *shownRing(const testform &window)
{
    const auto widgets = window.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget *widget : widgets) {
        auto *ring = dynamic_cast<FocusRing *>(widget);
        if (ring != nullptr && ring->isVisible()) {
            return ring;
        }
    }
    return nullptr;
}

QImage look(testform &window)
{
    return window.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

QRect placeOf(const QWidget *widget)
{
    return {widget->mapTo(widget->window(), QPoint()), widget->size()};
}

// The least of what the ring's best line reaches, over all places of its four sides: against what
// lies outside of it, and against the same place without it.
class Visibility
{
public:
    Visibility(const QImage &with, const QImage &without, QRect ring)
        : m_with(with)
        , m_without(without)
    {
        for (int x = ring.left() + 4; x <= ring.right() - 4; ++x) {
            look({x, ring.top()}, {0, 1});
            look({x, ring.bottom()}, {0, -1});
        }
        for (int y = ring.top() + 4; y <= ring.bottom() - 4; ++y) {
            look({ring.left(), y}, {1, 0});
            look({ring.right(), y}, {-1, 0});
        }
    }

    double outside = 21;
    double beneath = 21;

private:
    void look(QPoint place, QPoint inwards)
    {
        const QPoint beside = place - inwards;
        const QRgb ground = m_without.pixel(m_without.rect().contains(beside) ? beside : place);
        double againstOutside = 1;
        double againstBeneath = 1;
        for (int i = 0; i < 4; ++i, place += inwards) {
            const QRgb line = m_with.pixel(place);
            againstOutside = std::max(againstOutside, Contrast::ratio(line, ground));
            againstBeneath =
                std::max(againstBeneath, Contrast::ratio(line, m_without.pixel(place)));
        }
        outside = std::min(outside, againstOutside);
        beneath = std::min(beneath, againstBeneath);
    }

    const QImage &m_with;
    const QImage &m_without;
};
} // namespace

// What one sees of the keyboard's place.
class TestFocusRing : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_world = std::make_unique<KeyboardWorld>(); }
    void cleanup() { m_world.reset(); }
    void everyStopStandsOut_data();
    void everyStopStandsOut();
    void pointerGetsNone();
    void followsItsButton();
    void hidesWhileAnotherWindowHasTheKeyboard();
    void letsClicksThrough();
    void leavesTheFormsSheetsAlone();

private:
    std::unique_ptr<KeyboardWorld> m_world;
};

void TestFocusRing::everyStopStandsOut_data()
{
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<int>("tab");
    QTest::addColumn<QSize>("size");
    for (const QSize size : {QSize(974, 571), QSize(487, 286), QSize(1200, 703)}) {
        const auto add = [size](const char *where, const QByteArray &settings, int tab) {
            QTest::addRow("%s, %d x %d", where, size.width(), size.height())
                << settings << tab << size;
        };
        // Columns of a rescaled panel are the panel's own business.
        if (size.width() == 974) {
            add("panel", QByteArray(), 0);
        }
        add("HOME", KeyboardWorld::remembered(), 0);
        add("NEWS", KeyboardWorld::remembered(), 1);
    }
}

void TestFocusRing::everyStopStandsOut()
{
    QFETCH(QByteArray, settings);
    QFETCH(int, tab);
    QFETCH(QSize, size);
    QVERIFY(m_world->open(settings));
    testform &window = *m_world->window;
    window.setMenuState(tab);
    window.customResize(size.width(), size.height());
    const int stops = m_world->round().size();
    VERIFY_RELATION(stops, >, 5);
    for (int i = 0; i < stops; ++i) {
        const QByteArray name = m_world->focused().toUtf8();
        const QWidget *button = QApplication::focusWidget();
        FocusRing *ring = shownRing(window);
        QVERIFY2(ring != nullptr, name.constData());
        QCOMPARE(ring->geometry(), (placeOf(button) + QMargins(4, 4, 4, 4)) & window.rect());
        const QImage with = look(window);
        ring->hide();
        const QImage without = look(window);
        ring->show();
        const Visibility seen(with, without, ring->geometry());
        QVERIFY2(seen.outside >= enough, name.constData());
        QVERIFY2(seen.beneath >= enough, name.constData());
        m_world->press(Qt::Key_Tab);
    }
}

// For players with a mouse nothing has changed.
void TestFocusRing::pointerGetsNone()
{
    QVERIFY(m_world->open(KeyboardWorld::remembered()));
    testform &window = *m_world->window;
    QCOMPARE(WindowDriver::click(window, QStringLiteral("btnRight")), QString());
    QCOMPARE(m_world->focused(), QStringLiteral("btnRight"));
    QCOMPARE(shownRing(window), nullptr);
    m_world->press(Qt::Key_Tab);
    QVERIFY(shownRing(window) != nullptr);
    QCOMPARE(WindowDriver::click(window, QStringLiteral("btnLeft")), QString());
    QCOMPARE(shownRing(window), nullptr);
}

void TestFocusRing::followsItsButton()
{
    QVERIFY(m_world->open(KeyboardWorld::remembered()));
    testform &window = *m_world->window;
    QVERIFY(m_world->tabTo(QStringLiteral("btnDownload")));
    const QWidget *button = window.ui->btnDownload;
    for (const QSize size : {QSize(1200, 703), QSize(487, 286), QSize(974, 571)}) {
        window.customResize(size.width(), size.height());
        const FocusRing *ring = shownRing(window);
        QVERIFY(ring != nullptr);
        QCOMPARE(ring->geometry(), placeOf(button) + QMargins(4, 4, 4, 4));
    }
    // With what holds it.
    window.ui->contents->move(5, 40);
    QCOMPARE(shownRing(window)->geometry(), placeOf(button) + QMargins(4, 4, 4, 4));
}

void TestFocusRing::hidesWhileAnotherWindowHasTheKeyboard()
{
    QVERIFY(m_world->open(KeyboardWorld::remembered()));
    testform &window = *m_world->window;
    QVERIFY(m_world->tabTo(QStringLiteral("btnRight")));
    QVERIFY(shownRing(window) != nullptr);
    {
        QWidget other;
        QVERIFY(WindowDriver::show(other));
        other.activateWindow();
        QTRY_VERIFY(other.isActiveWindow());
        QCOMPARE(shownRing(window), nullptr);
    }
    window.activateWindow();
    QTRY_COMPARE(m_world->focused(), QStringLiteral("btnRight"));
    QVERIFY(shownRing(window) != nullptr);
}

void TestFocusRing::letsClicksThrough()
{
    QVERIFY(m_world->open(KeyboardWorld::remembered()));
    testform &window = *m_world->window;
    QVERIFY(m_world->tabTo(QStringLiteral("btnRight")));
    QVERIFY(shownRing(window) != nullptr);
    QCOMPARE(WindowDriver::click(window, QStringLiteral("btnRight")), QString());
    QCOMPARE(window.slideState, 1);
}

void TestFocusRing::leavesTheFormsSheetsAlone()
{
    QVERIFY(m_world->open());
    testform &window = *m_world->window;
    const auto sheets = [&window] {
        QStringList all{window.styleSheet()};
        const auto widgets = window.findChildren<QWidget *>();
        for (const QWidget *widget : widgets) {
            all << widget->objectName() + QLatin1Char(':') + widget->styleSheet();
        }
        all.sort();
        return all;
    };
    const QStringList before = sheets();
    m_world->round();
    QVERIFY(shownRing(window) != nullptr);
    QStringList after = sheets();
    QVERIFY(after.removeOne(QStringLiteral(":"))); // its own: none
    QCOMPARE(after, before);
}

QTEST_MAIN(TestFocusRing)
#include "tst_focusring.moc"
