#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QMouseEvent>
#include <QScreen>
#include <QTest>

#include <cmath>

// Dragging, full screen, minimise, and the handlers that do nothing.
class TestChrome : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void bareAreasDragTheWindow_data();
    void bareAreasDragTheWindow();
    void buttonsDoNotDrag();
    void positionsOfPressAreRounded();
    void pressAndMoveAreNotPassedOn();
    void releaseIsNotPassedOn();
    void resizeRescalesNothing();
    void fullScreenAndBack();
    void fullScreenAfterAResize();
    void fullScreenTakesTheSizeTheWindowHas();
    void minimizeAndRestore();
    void nativeMessagesAreNotTouchedHere();
    void smallestSize();

private:
    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<testform> m_window;
};

void TestChrome::init()
{
    m_folder = std::make_unique<ScratchFolder>();
    m_window = std::make_unique<testform>();
    m_window->ui->serverButtonsGroup->hide();
    QVERIFY(WindowDriver::show(*m_window));
}

void TestChrome::cleanup()
{
    m_window.reset();
    m_folder.reset();
}

namespace
{
void sendMouse(QWidget *target, QEvent::Type type, QPointF global,
               Qt::MouseButton button = Qt::LeftButton)
{
    QMouseEvent event(type, QPointF(1, 1), QPointF(1, 1), global, button, button, Qt::NoModifier);
    QApplication::sendEvent(target, &event);
}
} // namespace

void TestChrome::bareAreasDragTheWindow_data()
{
    QTest::addColumn<QString>("area");
    QTest::addColumn<int>("button");
    QTest::newRow("title strip") << QStringLiteral("_menubar") << int(Qt::LeftButton);
    QTest::newRow("background") << QStringLiteral("backgroundImage") << int(Qt::LeftButton);
    QTest::newRow("page") << QStringLiteral("contentHome") << int(Qt::LeftButton);
    QTest::newRow("text") << QStringLiteral("homeNewsTitle") << int(Qt::LeftButton);
    QTest::newRow("any button of the mouse") << QStringLiteral("_menubar") << int(Qt::RightButton);
}

void TestChrome::bareAreasDragTheWindow()
{
    QFETCH(QString, area);
    QFETCH(int, button);
    auto *target = m_window->findChild<QWidget *>(area);
    const QPoint before = m_window->pos();
    const auto mouse = static_cast<Qt::MouseButton>(button);
    sendMouse(target, QEvent::MouseButtonPress, {500, 300}, mouse);
    QCOMPARE(m_window->mousePos, QPoint(500, 300));
    sendMouse(target, QEvent::MouseMove, {530, 340}, mouse);
    sendMouse(target, QEvent::MouseMove, {520, 350}, mouse);
    QCOMPARE(m_window->pos(), before + QPoint(20, 50));
    QCOMPARE(m_window->mousePos, QPoint(520, 350));
}

void TestChrome::buttonsDoNotDrag()
{
    const QPoint before = m_window->pos();
    sendMouse(m_window->ui->btnRight, QEvent::MouseButtonPress, {500, 300});
    sendMouse(m_window->ui->btnRight, QEvent::MouseMove, {530, 340});
    QCOMPARE(m_window->pos(), before);
    QCOMPARE(m_window->mousePos, QPoint(0, 0));
}

void TestChrome::positionsOfPressAreRounded()
{
    sendMouse(m_window.get(), QEvent::MouseButtonPress, {499.6, 300.4});
    QCOMPARE(m_window->mousePos, QPoint(500, 300));
}

void TestChrome::releaseIsNotPassedOn()
{
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(1, 1), Qt::LeftButton, Qt::NoButton,
                        Qt::NoModifier);
    release.accept();
    m_window->mouseReleaseEvent(&release);
    // The base handler would ignore it.
    QVERIFY(release.isAccepted());
}

void TestChrome::resizeRescalesNothing()
{
    const QRect before = m_window->ui->btnNewsBig->geometry();
    m_window->resize(1300, 800);
    QTRY_COMPARE(m_window->size(), QSize(1300, 800));
    QCOMPARE(m_window->ui->btnNewsBig->geometry(), before);
    QCOMPARE(m_window->prevWidth, 974);
}

void TestChrome::fullScreenAndBack()
{
    QCOMPARE(m_window->screen()->size(), QSize(1920, 1080));
    m_window->move(120, 130);
    QTRY_COMPARE(m_window->pos(), QPoint(120, 130));
    QCOMPARE(WindowDriver::click(*m_window, QStringLiteral("btnFullscreen")), QString());
    QVERIFY(m_window->isMax);
    QCOMPARE(m_window->w_before_full, 974);
    QCOMPARE(m_window->h_before_full, 571);
    QCOMPARE(m_window->x_before_full, 120);
    QCOMPARE(m_window->y_before_full, 130);
    QVERIFY(!m_window->isMaximized());
    QCOMPARE(QSize(m_window->prevWidth, m_window->prevHeight), QSize(1842, 1080));
    QCOMPARE(m_window->ui->btnNewsBig->width(), int(559.0F * (1080.0F / 571.0F)));

    QCOMPARE(WindowDriver::click(*m_window, QStringLiteral("btnFullscreen")), QString());
    QVERIFY(!m_window->isMax);
    QCOMPARE(QSize(m_window->prevWidth, m_window->prevHeight), QSize(974, 571));
    QCOMPARE(m_window->size(), QSize(974, 571));
    QCOMPARE(m_window->pos(), QPoint(120, 130));
}

void TestChrome::fullScreenAfterAResize()
{
    m_window->customResize(1200, 571);
    m_window->on_btnFullscreen_clicked();
    QCOMPARE(m_window->w_before_full, 1200);
    m_window->on_btnFullscreen_clicked();
    // Both sides differ from the full-screen size, so the smaller ratio counts and costs a pixel.
    QCOMPARE(QSize(m_window->prevWidth, m_window->prevHeight), QSize(1199, 703));
}

namespace
{
// A window system that enlarges the window at once, as the players' does.
class EnlargeAtOnce : public QObject
{
    bool eventFilter(QObject *object, QEvent *event) override
    {
        auto *window = qobject_cast<QWidget *>(object);
        if (event->type() == QEvent::WindowStateChange && window != nullptr) {
            window->resize(1600, 900);
        }
        return false;
    }
};
} // namespace

void TestChrome::fullScreenTakesTheSizeTheWindowHas()
{
    EnlargeAtOnce system;
    m_window->installEventFilter(&system);
    m_window->on_btnFullscreen_clicked();
    // The screen is larger: only the window's own size counts.
    QCOMPARE(m_window->prevHeight, 900);
    QCOMPARE(m_window->prevWidth, int(std::floor(974.0F * (900.0F / 571.0F))));
}

void TestChrome::pressAndMoveAreNotPassedOn()
{
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseMove}) {
        QMouseEvent event(type, QPointF(1, 1), QPointF(1, 1), QPointF(10, 10), Qt::NoButton,
                          Qt::NoButton, Qt::NoModifier);
        event.accept();
        if (type == QEvent::MouseMove) {
            const QPoint before = m_window->pos();
            m_window->mousePos = QPoint(4, 7);
            m_window->mouseMoveEvent(&event);
            // No button is asked for.
            QCOMPARE(m_window->pos(), before + QPoint(6, 3));
        } else {
            m_window->mousePressEvent(&event);
        }
        // The base handler would ignore it.
        QVERIFY(event.isAccepted());
    }
}

void TestChrome::minimizeAndRestore()
{
    QCOMPARE(WindowDriver::click(*m_window, QStringLiteral("btnMinimize")), QString());
    QVERIFY(m_window->isMinimized());
    m_window->on_btnMinimize_clicked();
    QVERIFY(!m_window->isMinimized());
    QVERIFY(m_window->isVisible());
}

void TestChrome::nativeMessagesAreNotTouchedHere()
{
#ifdef Q_OS_WIN
    QSKIP("Windows messages are real there");
#endif
    long result = 4711;
    int message = 42;
    QVERIFY(!m_window->nativeEvent("windows_generic_MSG", &message, &result));
    QVERIFY(!m_window->nativeEvent("windows_generic_MSG", nullptr, nullptr));
    QCOMPARE(result, 4711L);
    QCOMPARE(message, 42);
}

void TestChrome::smallestSize()
{
    m_window->resize(10, 10);
    QCOMPARE(m_window->size(), QSize(487, 285));
}

QTEST_MAIN(TestChrome)
#include "tst_chrome.moc"
