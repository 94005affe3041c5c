#include "support/relation.h"
#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/qgraphicsgloweffect.h"
#include "window/testform.h"

#include <QGraphicsOpacityEffect>
#include <QImage>
#include <QPainter>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

// Glow and dimming of the watched buttons, by the events that the toolkit sends them.
class TestFeedback : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void exactlyTheseButtonsAreWatched();
    void unwatchedButtonsGetNothing_data();
    void unwatchedButtonsGetNothing();
    void feedback_data();
    void feedback();
    void disabledButtons_data();
    void disabledButtons();
    void enteringAgainReplacesTheGlow();
    void noGlowAfterAPressUntilEnteredAgain();
    void otherEventsChangeNothing();
    void realPointerGlowsDimsAndClicks();
    void glowDefaults();
    void glowSetters();
    void blurRadiusSetsTheExtent_data();
    void blurRadiusSetsTheExtent();
    void boundingRect_data();
    void boundingRect();
    void strengthZeroPaintsOnlyTheSource();
    void glowIsPaintedUnderTheSource();
    void nullPictureStaysNullAndTheEffectIsFreed();
    void withoutAnEffectThePictureComesBack();

private:
    QWidget *widget(const QString &name) const { return m_window->findChild<QWidget *>(name); }
    static bool send(QWidget *target, QEvent::Type type);
    static QString effectOf(const QWidget *target);

    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<testform> m_window;
    QStringList m_removed; // names of widgets whose effect went, in order
};

void TestFeedback::init()
{
    m_folder = std::make_unique<ScratchFolder>();
    m_window = std::make_unique<testform>();
}

void TestFeedback::cleanup()
{
    m_window.reset();
    m_folder.reset();
}

bool TestFeedback::send(QWidget *target, QEvent::Type type)
{
    if (type == QEvent::MouseButtonPress || type == QEvent::MouseButtonRelease) {
        // Outside the button's area, so that no click comes of it.
        QMouseEvent event(type, QPointF(-1000, -1000), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                          Qt::NoModifier);
        return QApplication::sendEvent(target, &event);
    }
    QEvent event(type);
    return QApplication::sendEvent(target, &event);
}

QString TestFeedback::effectOf(const QWidget *target)
{
    QGraphicsEffect *effect = target->graphicsEffect();
    if (effect == nullptr) {
        return QStringLiteral("none");
    }
    if (const auto *opacity = qobject_cast<QGraphicsOpacityEffect *>(effect)) {
        return QStringLiteral("opacity %1").arg(opacity->opacity());
    }
    if (const auto *glow = dynamic_cast<QGraphicsGlowEffect *>(effect)) {
        return QStringLiteral("glow %1 %2").arg(glow->strength()).arg(glow->blurRadius());
    }
    return QStringLiteral("something else");
}

void TestFeedback::exactlyTheseButtonsAreWatched()
{
    const QStringList expected =
        QStringLiteral("btnFacebook btnDiscord btnPlay btnPlay_2 btnDownload btnUpdate btnNews "
                       "btnHome btnNews_2 btnHome_2 btnNewsBig btnNewsMedium1 btnNewsMedium2 "
                       "btnNewsSmall1 btnNewsSmall2 btnNewsSmall3 btnRight btnLeft btnClose "
                       "btnFullscreen btnMinimize btnSelectServer")
            .split(QLatin1Char(' '));
    QCOMPARE(m_window->numButtonsList, expected.size());
    for (int i = 0; i < expected.size(); ++i) {
        QCOMPARE(m_window->btn_list[i]->objectName(), expected.at(i));
    }
}

void TestFeedback::unwatchedButtonsGetNothing_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"btnCloseIntro", "rememberCheckBox", "btnHomeNews", "btnClose_"}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

void TestFeedback::unwatchedButtonsGetNothing()
{
    QFETCH(QString, name);
    send(widget(name), QEvent::Enter);
    QCOMPARE(effectOf(widget(name)), QStringLiteral("none"));
    send(widget(name), QEvent::MouseButtonPress);
    QCOMPARE(effectOf(widget(name)), QStringLiteral("none"));
}

void TestFeedback::feedback_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("event");
    QTest::addColumn<QStringList>("targets");
    const auto row = [](const char *button, const char *glowing, const char *cleared,
                        const char *dimmed) {
        const auto one = [button](const char *what, QEvent::Type event, const char *targets) {
            QTest::addRow("%s %s", button, what)
                << QString::fromLatin1(button) << int(event)
                << QString::fromLatin1(targets).split(QLatin1Char(' '));
        };
        one("entered", QEvent::Enter, glowing);
        one("left", QEvent::Leave, cleared);
        one("pressed", QEvent::MouseButtonPress, dimmed);
        one("released", QEvent::MouseButtonRelease, dimmed);
    };
    row("btnNewsBig", "subtitleNewsBig", "titleNewsBig subtitleNewsBig", "btnNewsBig");
    row("btnNewsMedium1", "subtitleNewsMedium1", "titleNewsMedium1 subtitleNewsMedium1",
        "btnNewsMedium1");
    row("btnNewsMedium2", "subtitleNewsMedium2", "titleNewsMedium2 subtitleNewsMedium2",
        "btnNewsMedium2");
    row("btnNewsSmall1", "titleNewsSmall1", "titleNewsSmall1 subtitleNewsSmall1", "btnNewsSmall1");
    row("btnNewsSmall2", "titleNewsSmall2", "titleNewsSmall2 subtitleNewsSmall2", "btnNewsSmall2");
    row("btnNewsSmall3", "titleNewsSmall3", "titleNewsSmall3 subtitleNewsSmall3", "btnNewsSmall3");
    row("btnClose", "btnClose_", "btnClose_", "btnClose_");
    row("btnFullscreen", "btnFullscreen_", "btnFullscreen_", "btnFullscreen_");
    row("btnMinimize", "btnMinimize_", "btnMinimize_", "btnMinimize_");
    for (const char *itself : {"btnPlay", "btnUpdate", "btnFacebook", "btnDiscord", "btnPlay_2",
                               "btnDownload", "btnNews", "btnHome", "btnNews_2", "btnHome_2",
                               "btnRight", "btnLeft", "btnSelectServer"}) {
        row(itself, itself, itself, itself);
    }
}

// Every widget of the window carries an effect of its own beforehand where the event must remove
// one, and none where it must set one: only the targets may change, and in their order.
void TestFeedback::feedback()
{
    QFETCH(QString, button);
    QFETCH(int, event);
    QFETCH(QStringList, targets);
    const auto type = static_cast<QEvent::Type>(event);
    const bool removes = type == QEvent::Leave || type == QEvent::MouseButtonRelease;
    const QString wanted = removes                 ? QStringLiteral("none")
                           : type == QEvent::Enter ? QStringLiteral("glow 1 4")
                                                   : QStringLiteral("opacity 0.85");
    m_removed.clear();
    const auto all = m_window->findChildren<QWidget *>();
    if (removes) {
        for (QWidget *other : all) {
            auto *effect = new QGraphicsOpacityEffect;
            other->setGraphicsEffect(effect);
            const QString name = other->objectName();
            connect(effect, &QObject::destroyed, this, [this, name] { m_removed << name; });
        }
    }

    send(widget(button), type);

    QStringList touched;
    for (const QWidget *other : all) {
        if (targets.contains(other->objectName())) {
            QCOMPARE(effectOf(other), wanted);
        } else if ((other->graphicsEffect() != nullptr) != removes) {
            touched << other->objectName();
        }
    }
    QCOMPARE(touched, QStringList());
    if (removes) {
        QCOMPARE(m_removed, targets);
    } else {
        QEvent again(type);
        QVERIFY(!m_window->eventFilter(widget(button), &again));
    }
}

void TestFeedback::disabledButtons_data()
{
    QTest::addColumn<bool>("spared");
    QTest::newRow("btnPlay") << true;
    QTest::newRow("btnUpdate") << true;
    QTest::newRow("btnPlay_2") << false;
    QTest::newRow("btnDownload") << false;
    QTest::newRow("btnFacebook") << false;
}

void TestFeedback::disabledButtons()
{
    QFETCH(bool, spared);
    QWidget *button = widget(QLatin1String(QTest::currentDataTag()));
    button->setEnabled(false);
    send(button, QEvent::Enter);
    QCOMPARE(effectOf(button), spared ? QStringLiteral("none") : QStringLiteral("glow 1 4"));
    button->setGraphicsEffect(nullptr);
    send(button, QEvent::MouseButtonPress);
    QCOMPARE(effectOf(button), spared ? QStringLiteral("none") : QStringLiteral("opacity 0.85"));

    // Leaving and releasing remove whatever is there all the same.
    button->setGraphicsEffect(new QGraphicsOpacityEffect);
    send(button, QEvent::Leave);
    QCOMPARE(effectOf(button), QStringLiteral("none"));
    button->setGraphicsEffect(new QGraphicsOpacityEffect);
    send(button, QEvent::MouseButtonRelease);
    QCOMPARE(effectOf(button), QStringLiteral("none"));
}

void TestFeedback::enteringAgainReplacesTheGlow()
{
    QWidget *button = widget(QStringLiteral("btnRight"));
    send(button, QEvent::Enter);
    const QPointer<QGraphicsEffect> first = button->graphicsEffect();
    send(button, QEvent::Enter);
    QVERIFY(first.isNull());
    QCOMPARE(effectOf(button), QStringLiteral("glow 1 4"));
}

void TestFeedback::noGlowAfterAPressUntilEnteredAgain()
{
    QWidget *button = widget(QStringLiteral("btnRight"));
    send(button, QEvent::Enter);
    send(button, QEvent::MouseButtonPress);
    QCOMPARE(effectOf(button), QStringLiteral("opacity 0.85"));
    send(button, QEvent::MouseButtonRelease);
    QCOMPARE(effectOf(button), QStringLiteral("none"));
    send(button, QEvent::Leave);
    send(button, QEvent::Enter);
    QCOMPARE(effectOf(button), QStringLiteral("glow 1 4"));
}

void TestFeedback::otherEventsChangeNothing()
{
    QWidget *button = widget(QStringLiteral("btnRight"));
    for (const QEvent::Type type : {QEvent::FocusIn, QEvent::Show, QEvent::HoverEnter,
                                    QEvent::ToolTip, QEvent::EnabledChange}) {
        QEvent event(type);
        QVERIFY(!m_window->eventFilter(button, &event));
        QCOMPARE(effectOf(button), QStringLiteral("none"));
    }
    for (const QEvent::Type type : {QEvent::Enter, QEvent::Leave}) {
        QEvent event(type);
        QVERIFY(!m_window->eventFilter(button, &event));
    }
}

void TestFeedback::realPointerGlowsDimsAndClicks()
{
    m_window->ui->serverButtonsGroup->hide();
    QVERIFY(WindowDriver::show(*m_window));
    QWidget *button = widget(QStringLiteral("btnRight"));
    const QPoint middle = button->mapTo(m_window.get(), button->rect().center());
    QWindow *handle = m_window->windowHandle();

    QTest::mouseMove(handle, QPoint(300, 450));
    QTest::mouseMove(handle, middle);
    QTRY_COMPARE(effectOf(button), QStringLiteral("glow 1 4"));
    QTest::mousePress(handle, Qt::LeftButton, Qt::NoModifier, middle);
    QTRY_COMPARE(effectOf(button), QStringLiteral("opacity 0.85"));
    QTest::mouseRelease(handle, Qt::LeftButton, Qt::NoModifier, middle);
    QTRY_COMPARE(effectOf(button), QStringLiteral("none"));
    // The click went through to its slot.
    QTRY_COMPARE(m_window->slideState, 1);
}

void TestFeedback::glowDefaults()
{
    const QGraphicsGlowEffect glow;
    QCOMPARE(glow._extent, 5);
    QCOMPARE(glow.color(), QColor(255, 255, 255, 255));
    QCOMPARE(glow.strength(), 3);
    QCOMPARE(glow.blurRadius(), 5.0);
    QCOMPARE(glow.parent(), nullptr);
}

void TestFeedback::glowSetters()
{
    QGraphicsGlowEffect glow;
    glow.setColor(Qt::red);
    QCOMPARE(glow.color(), QColor(Qt::red));
    glow.setStrength(-2);
    QCOMPARE(glow.strength(), -2);
}

void TestFeedback::blurRadiusSetsTheExtent_data()
{
    QTest::addColumn<double>("radius");
    QTest::addColumn<int>("extent");
    QTest::newRow("whole") << 4.0 << 4;
    QTest::newRow("rounded up") << 4.2 << 5;
    QTest::newRow("none") << 0.0 << 0;
}

void TestFeedback::blurRadiusSetsTheExtent()
{
    QFETCH(double, radius);
    QFETCH(int, extent);
    QGraphicsGlowEffect glow;
    glow.setBlurRadius(radius);
    QCOMPARE(glow.blurRadius(), radius);
    QCOMPARE(glow._extent, extent);
}

void TestFeedback::boundingRect_data()
{
    QTest::addColumn<QRectF>("rect");
    QTest::addColumn<QRectF>("expected");
    QTest::newRow("fractions are cut") << QRectF(10.7, 5.2, 100.0, 20.0) << QRectF(6, 1, 108, 28);
    QTest::newRow("negative, toward zero")
        << QRectF(-1.5, 3.5, 10.9, 10.9) << QRectF(-5, 0, 18, 18);
    QTest::newRow("empty") << QRectF(0, 0, 0, 0) << QRectF(-4, -4, 8, 8);
}

void TestFeedback::boundingRect()
{
    QFETCH(QRectF, rect);
    QFETCH(QRectF, expected);
    QGraphicsGlowEffect glow;
    glow.setBlurRadius(4.0);
    QCOMPARE(glow.boundingRectFor(rect), expected);
}

namespace
{
// A red square in the middle of a black window, shown through the effect.
QImage painted(QGraphicsEffect *effect)
{
    QWidget window;
    window.setFixedSize(60, 60);
    QPalette black;
    black.setColor(QPalette::Window, Qt::black);
    window.setPalette(black);
    window.setAutoFillBackground(true);
    auto *square = new QWidget(&window);
    square->setGeometry(20, 20, 20, 20);
    QPalette red;
    red.setColor(QPalette::Window, Qt::red);
    square->setPalette(red);
    square->setAutoFillBackground(true);
    if (effect != nullptr) {
        square->setGraphicsEffect(effect);
    }
    return window.grab().toImage();
}
} // namespace

void TestFeedback::strengthZeroPaintsOnlyTheSource()
{
    for (const int strength : {0, -2}) {
        auto *glow = new QGraphicsGlowEffect;
        glow->setStrength(strength);
        QCOMPARE(painted(glow), painted(nullptr));
    }
}

void TestFeedback::glowIsPaintedUnderTheSource()
{
    auto *glow = new QGraphicsGlowEffect;
    glow->setStrength(1);
    glow->setBlurRadius(4.0);
    const QImage once = painted(glow);
    // Over the source nothing of the glow shows; beside it white shimmers through, grey and weaker
    // further out.
    QCOMPARE(once.pixelColor(30, 30), QColor(Qt::red));
    const QColor beside = once.pixelColor(19, 30);
    VERIFY_RELATION(beside.red(), >, 20);
    QCOMPARE(beside.blue(), beside.red());
    VERIFY_RELATION(once.pixelColor(17, 30).red(), <, beside.red());
    QCOMPARE(once.pixelColor(10, 30), QColor(Qt::black));

    auto *strong = new QGraphicsGlowEffect;
    strong->setStrength(3);
    strong->setBlurRadius(4.0);
    VERIFY_RELATION(painted(strong).pixelColor(19, 30).red(), >, beside.red());
}

void TestFeedback::nullPictureStaysNullAndTheEffectIsFreed()
{
    const QPointer<QGraphicsEffect> effect = new QGraphicsBlurEffect;
    QVERIFY(QGraphicsGlowEffect::applyEffectToPixmap(QPixmap(), effect, 3).isNull());
    QVERIFY(effect.isNull());
}

void TestFeedback::withoutAnEffectThePictureComesBack()
{
    QPixmap picture(10, 10);
    picture.fill(Qt::green);
    const QPixmap result = QGraphicsGlowEffect::applyEffectToPixmap(picture, nullptr, 3);
    QCOMPARE(result.toImage(), picture.toImage());

    const QPointer<QGraphicsEffect> effect = new QGraphicsBlurEffect;
    QCOMPARE(QGraphicsGlowEffect::applyEffectToPixmap(picture, effect, 3).size(), QSize(16, 16));
    QVERIFY(effect.isNull());
}

QTEST_MAIN(TestFeedback)
#include "tst_feedback.moc"
