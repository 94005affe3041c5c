#include "nativewindowtest.h"
#include "support/pointer.h"

// The window's own borders as Windows asks for them, by messages to the real window handle.
class TestNativeChrome : public NativeWindowTest
{
    Q_OBJECT

private slots:
    void hitTest_data();
    void hitTest();
    void hitTestLeftOfAndAboveTheFirstMonitor_data();
    void hitTestLeftOfAndAboveTheFirstMonitor();
    void overlappingBands_data();
    void overlappingBands();
    void directionThatCannotBeResized_data();
    void directionThatCannotBeResized();
    void bareWindowIsCaption();
    void maximizedWindowIsLeftToTheSystem();
    void fullScreenKeepsTheBorders();
    void moveOverABorderRescales();
    void otherMessagesAreLeftToTheSystem();

private:
    LRESULT ask(int x, int y) const;
};

namespace
{
// Not between -2 and 17: what Windows answers by itself when the window does not.
constexpr LRESULT client = HTCLIENT;
} // namespace

// The answer for a point of the screen.
LRESULT TestNativeChrome::ask(int x, int y) const
{
    return SendMessageW(handle(), WM_NCHITTEST, 0, MAKELPARAM(x, y));
}

void TestNativeChrome::hitTest_data()
{
    // Distances from the window's left or right, and from its top or bottom edge: 0 is the first
    // pixel inside, counted from the left or the top, -1 the last one, from the right or bottom.
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<int>("answer");
    QTest::newRow("left, first pixel") << 0 << 300 << HTLEFT;
    QTest::newRow("left, last pixel") << 7 << 300 << HTLEFT;
    QTest::newRow("right of the left band") << 8 << 300 << int(client);
    QTest::newRow("right, last pixel") << -1 << 300 << HTRIGHT;
    QTest::newRow("right, first pixel") << -8 << 300 << HTRIGHT;
    QTest::newRow("left of the right band") << -9 << 300 << int(client);
    QTest::newRow("top, first pixel") << 300 << 0 << HTTOP;
    QTest::newRow("top, last pixel") << 300 << 7 << HTTOP;
    QTest::newRow("below the top band") << 300 << 8 << int(client);
    QTest::newRow("bottom, last pixel") << 300 << -1 << HTBOTTOM;
    QTest::newRow("bottom, first pixel") << 300 << -8 << HTBOTTOM;
    QTest::newRow("above the bottom band") << 300 << -9 << int(client);
    QTest::newRow("top left, outermost") << 0 << 0 << HTTOPLEFT;
    QTest::newRow("top left, 3 pixels inside") << 3 << 3 << HTTOPLEFT;
    QTest::newRow("top left, innermost") << 7 << 7 << HTTOPLEFT;
    QTest::newRow("top right, outermost") << -1 << 0 << HTTOPRIGHT;
    QTest::newRow("top right, innermost") << -8 << 7 << HTTOPRIGHT;
    QTest::newRow("bottom left, outermost") << 0 << -1 << HTBOTTOMLEFT;
    QTest::newRow("bottom left, innermost") << 7 << -8 << HTBOTTOMLEFT;
    QTest::newRow("bottom right, outermost") << -1 << -1 << HTBOTTOMRIGHT;
    QTest::newRow("bottom right, innermost") << -8 << -8 << HTBOTTOMRIGHT;
    QTest::newRow("beside the top left corner") << 8 << 3 << HTTOP;
    QTest::newRow("below the top left corner") << 3 << 8 << HTLEFT;
    QTest::newRow("inside a child") << 400 << 300 << int(client);
}

void TestNativeChrome::hitTest()
{
    QFETCH(int, x);
    QFETCH(int, y);
    // Over a child, so that the pointer's own place makes nothing the caption.
    QVERIFY(Pointer::moveTo(m_window->mapToGlobal(QPoint(400, 300))));
    const RECT window = frame();
    QCOMPARE(window.right - window.left, 974L);
    QCOMPARE(window.bottom - window.top, 571L);
    QTEST(int(ask((x < 0 ? window.right : window.left) + x,
                  (y < 0 ? window.bottom : window.top) + y)),
          "answer");
}

void TestNativeChrome::hitTestLeftOfAndAboveTheFirstMonitor_data()
{
    QTest::addColumn<QPoint>("place"); // of the window
    QTest::addColumn<QPoint>("asked");
    QTest::addColumn<int>("answer");
    QTest::newRow("left border at -200") << QPoint(-200, 100) << QPoint(-200, 400) << HTLEFT;
    QTest::newRow("bottom border left of the monitor")
        << QPoint(-200, 100) << QPoint(-100, 670) << HTBOTTOM;
    QTest::newRow("top border above it") << QPoint(100, -200) << QPoint(400, -195) << HTTOP;
    QTest::newRow("the corner between") << QPoint(-50, -60) << QPoint(-47, -57) << HTTOPLEFT;
    // The same 16 bits, read as unsigned, would be far right of the window.
    QTest::newRow("right border at -1") << QPoint(-974, 100) << QPoint(-1, 400) << HTRIGHT;
}

void TestNativeChrome::hitTestLeftOfAndAboveTheFirstMonitor()
{
    QFETCH(QPoint, place);
    QFETCH(QPoint, asked);
    SetWindowPos(handle(), nullptr, place.x(), place.y(), 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    const RECT window = frame();
    QCOMPARE(QPoint(int(window.left), int(window.top)), place);
    QTEST(int(ask(asked.x(), asked.y())), "answer");
}

void TestNativeChrome::overlappingBands_data()
{
    QTest::addColumn<QPoint>("inside");
    QTest::addColumn<int>("answer");
    // A window of 12 by 10 pixels: bands of 8 overlap in the columns 4 to 7 and the rows 2 to 7.
    QTest::newRow("all four: the corner tried last wins") << QPoint(5, 5) << HTTOPRIGHT;
    QTest::newRow("left, top and bottom") << QPoint(1, 5) << HTTOPLEFT;
    QTest::newRow("right, top and bottom") << QPoint(10, 5) << HTTOPRIGHT;
    QTest::newRow("left, right and top") << QPoint(5, 0) << HTTOPRIGHT;
    QTest::newRow("left, right and bottom") << QPoint(5, 9) << HTBOTTOMRIGHT;
    QTest::newRow("left and bottom only") << QPoint(0, 9) << HTBOTTOMLEFT;
}

void TestNativeChrome::overlappingBands()
{
    QFETCH(QPoint, inside);
    m_window->setMinimumSize(0, 0);
    m_window->resize(12, 10);
    QTRY_COMPARE(frame().right - frame().left, 12L);
    QTRY_COMPARE(frame().bottom - frame().top, 10L);
    const RECT window = frame();
    QTEST(int(ask(window.left + inside.x(), window.top + inside.y())), "answer");
}

void TestNativeChrome::directionThatCannotBeResized_data()
{
    QTest::addColumn<bool>("fixedWidth");
    QTest::addColumn<bool>("fixedHeight");
    QTest::addColumn<QPoint>("inside");
    QTest::addColumn<int>("answer");
    QTest::newRow("fixed width: no left border") << true << false << QPoint(2, 300) << int(client);
    QTest::newRow("fixed width: the corner is only top") << true << false << QPoint(2, 2) << HTTOP;
    QTest::newRow("fixed height: no top border") << false << true << QPoint(300, 2) << int(client);
    QTest::newRow("fixed height: the corner is only left")
        << false << true << QPoint(2, 2) << HTLEFT;
    QTest::newRow("fixed in both: no corner") << true << true << QPoint(2, 2) << int(client);
}

void TestNativeChrome::directionThatCannotBeResized()
{
    QFETCH(bool, fixedWidth);
    QFETCH(bool, fixedHeight);
    QFETCH(QPoint, inside);
    QVERIFY(Pointer::moveTo(m_window->mapToGlobal(QPoint(400, 300))));
    if (fixedWidth) {
        m_window->setFixedWidth(974);
    }
    if (fixedHeight) {
        m_window->setFixedHeight(571);
    }
    const RECT window = frame();
    QTEST(int(ask(window.left + inside.x(), window.top + inside.y())), "answer");
}

// It is the pointer that decides, not the point asked for.
void TestNativeChrome::bareWindowIsCaption()
{
    m_window->ui->mainwindow->resize(500, 571);
    const RECT window = frame();
    const QPoint overChild = m_window->mapToGlobal(QPoint(300, 300));
    const QPoint overBareWindow = m_window->mapToGlobal(QPoint(700, 300));
    QVERIFY(Pointer::moveTo(overBareWindow));
    QCOMPARE(int(ask(overBareWindow.x(), overBareWindow.y())), HTCAPTION);
    QCOMPARE(int(ask(overChild.x(), overChild.y())), HTCAPTION);
    QCOMPARE(int(ask(window.left + 2, overChild.y())), HTLEFT);
    QVERIFY(Pointer::moveTo(overChild));
    QCOMPARE(int(ask(overChild.x(), overChild.y())), int(client));
}

void TestNativeChrome::maximizedWindowIsLeftToTheSystem()
{
    QVERIFY(Pointer::moveTo(m_window->mapToGlobal(QPoint(400, 300))));
    m_window->showMaximized();
    QTRY_VERIFY(m_window->isMaximized());
    QTRY_VERIFY(IsZoomed(handle()) != 0);
    const RECT window = frame();
    for (const QPoint inside : {QPoint(0, 300), QPoint(300, 0), QPoint(3, 3), QPoint(-1, 300)}) {
        const int left = int(inside.x() < 0 ? window.right : window.left);
        QCOMPARE(int(ask(left + inside.x(), int(window.top) + inside.y())), int(client));
    }
}

void TestNativeChrome::fullScreenKeepsTheBorders()
{
    m_window->on_btnFullscreen_clicked();
    QVERIFY(!m_window->isMaximized());
    const RECT window = frame();
    QCOMPARE(QSize(int(window.right - window.left), int(window.bottom - window.top)),
             QSize(1842, 1080));
    QCOMPARE(int(ask(window.left + 3, window.top + 300)), HTLEFT);
    QCOMPARE(int(ask(window.right - 1, window.bottom - 1)), HTBOTTOMRIGHT);
}

// As after a border was dragged: the size is new, nothing is rescaled yet.
void TestNativeChrome::moveOverABorderRescales()
{
    SetWindowPos(handle(), nullptr, 0, 0, 1200, 571, SWP_NOMOVE | SWP_NOZORDER);
    QTRY_COMPARE(m_window->size(), QSize(1200, 571));
    QCOMPARE(m_window->ui->backgroundImage->width(), 974);
    // Handled, so that Windows gets no answer of its own; what a handled message answers is 0.
    QCOMPARE(int(SendMessageW(handle(), WM_NCMOUSEMOVE, HTRIGHT, MAKELPARAM(1399, 400))), 0);
    QCOMPARE(m_window->size(), QSize(1200, 703));
    QCOMPARE(m_window->ui->backgroundImage->width(), 1200);
    QTRY_COMPARE(frame().bottom - frame().top, 703L);
}

void TestNativeChrome::otherMessagesAreLeftToTheSystem()
{
    MSG message{};
    message.hwnd = handle();
    // One beside each of the two, what carries a place as well, and one that nobody knows.
    for (const UINT number :
         {UINT(WM_NCCREATE), UINT(WM_NCCALCSIZE), UINT(WM_NCPAINT), UINT(WM_MOUSEMOVE),
          UINT(WM_NCLBUTTONDOWN), UINT(WM_NCMOUSELEAVE), UINT(WM_NCHITTEST) - 1, UINT(WM_APP)}) {
        message.message = number;
        long result = 4711;
        QVERIFY(!m_window->nativeEvent("windows_generic_MSG", &message, &result));
        QCOMPARE(result, 4711L);
    }
    message.message = WM_NCMOUSEMOVE;
    long result = 4711;
    QVERIFY(m_window->nativeEvent(QByteArray(), &message, &result));
    QCOMPARE(result, 4711L);
}

QTEST_MAIN(TestNativeChrome)
#include "tst_nativechrome.moc"
