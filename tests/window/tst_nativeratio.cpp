#include "nativewindowtest.h"
#include "support/pointer.h"

// The window's chrome on screens with more than one pixel to each of the window's own, as Windows
// knows it: whatever Windows asks and is told is in the screen's pixels.
class TestNativeRatio : public NativeWindowTest
{
    Q_OBJECT

private slots:
    void sizeOnTheScreen();
    void bordersKeepTheirWidth_data();
    void bordersKeepTheirWidth();
    void bareWindowIsCaption();
    void smallestSize();
    void moveOverABorderRescales();
    void fullScreenAndBack();
    void bareAreaDragsTheWindow();

private:
    LRESULT ask(int x, int y) const;
};

// The answer for a point of the screen.
LRESULT TestNativeRatio::ask(int x, int y) const
{
    return SendMessageW(handle(), WM_NCHITTEST, 0, MAKELPARAM(x, y));
}

void TestNativeRatio::sizeOnTheScreen()
{
    QCOMPARE(m_window->size(), QSize(974, 571));
    QCOMPARE(sizeOf(frame()), inPixels(QSize(974, 571)));
}

void TestNativeRatio::bordersKeepTheirWidth_data()
{
    // Bands of 8 pixels of the window: how many of them the point is inside, and how many pixels of
    // the screen further. Both count from the right or the bottom where the side says so.
    QTest::addColumn<bool>("fromRight");
    QTest::addColumn<bool>("fromBottom");
    QTest::addColumn<QPoint>("bands");
    QTest::addColumn<QPoint>("further");
    QTest::addColumn<int>("answer");
    const QPoint x(1, 0);
    const QPoint y(0, 1);
    const QPoint none;
    const QPoint half(0, 30);
    const QPoint across(30, 0);
    QTest::newRow("left, last") << false << false << x + half << -x << HTLEFT;
    QTest::newRow("beside left") << false << false << x + half << none << HTCLIENT;
    QTest::newRow("right, last") << true << false << x + half << -x << HTRIGHT;
    QTest::newRow("beside right") << true << false << x + half << none << HTCLIENT;
    QTest::newRow("top, last") << false << false << y + across << -y << HTTOP;
    QTest::newRow("below top") << false << false << y + across << none << HTCLIENT;
    QTest::newRow("bottom, last") << false << true << y + across << -y << HTBOTTOM;
    QTest::newRow("above bottom") << false << true << y + across << none << HTCLIENT;
    QTest::newRow("top left, innermost") << false << false << x + y << -x - y << HTTOPLEFT;
    QTest::newRow("top left, outermost") << false << false << none << none << HTTOPLEFT;
    QTest::newRow("top right, innermost") << true << false << x + y << -x - y << HTTOPRIGHT;
    QTest::newRow("top right, outermost") << true << false << none << none << HTTOPRIGHT;
    QTest::newRow("bottom left, innermost") << false << true << x + y << -x - y << HTBOTTOMLEFT;
    QTest::newRow("bottom right, innermost") << true << true << x + y << -x - y << HTBOTTOMRIGHT;
    QTest::newRow("bottom right, outermost") << true << true << none << none << HTBOTTOMRIGHT;
    QTest::newRow("beside the top left corner") << false << false << x + y << -y << HTTOP;
    QTest::newRow("below the top left corner") << false << false << x + y << -x << HTLEFT;
}

void TestNativeRatio::bordersKeepTheirWidth()
{
    QFETCH(bool, fromRight);
    QFETCH(bool, fromBottom);
    QFETCH(QPoint, bands);
    QFETCH(QPoint, further);
    // Over a child, so that the pointer's own place makes nothing the caption.
    QVERIFY(Pointer::moveTo(inPixels(m_window->mapToGlobal(QPoint(400, 300)))));
    const QPoint inside = inPixels(8 * bands) + further;
    const RECT window = frame();
    QTEST(int(ask(fromRight ? window.right - 1 - inside.x() : window.left + inside.x(),
                  fromBottom ? window.bottom - 1 - inside.y() : window.top + inside.y())),
          "answer");
}

void TestNativeRatio::bareWindowIsCaption()
{
    m_window->ui->mainwindow->resize(500, 571);
    const QPoint overChild = inPixels(m_window->mapToGlobal(QPoint(490, 300)));
    const QPoint overBareWindow = inPixels(m_window->mapToGlobal(QPoint(510, 300)));
    QVERIFY(Pointer::moveTo(overBareWindow));
    QCOMPARE(int(ask(overBareWindow.x(), overBareWindow.y())), HTCAPTION);
    QVERIFY(Pointer::moveTo(overChild));
    QCOMPARE(int(ask(overChild.x(), overChild.y())), HTCLIENT);
}

void TestNativeRatio::smallestSize()
{
    MINMAXINFO limits{};
    SendMessageW(handle(), WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits));
    QCOMPARE(QSize(int(limits.ptMinTrackSize.x), int(limits.ptMinTrackSize.y)),
             inPixels(QSize(487, 285)));
    m_window->customResize(487, 285);
    QTRY_COMPARE(sizeOf(frame()), inPixels(QSize(487, 285)));
}

// As after a border was dragged: the size is new, nothing is rescaled yet.
void TestNativeRatio::moveOverABorderRescales()
{
    const QSize dragged = inPixels(QSize(1200, 571));
    SetWindowPos(handle(), nullptr, 0, 0, dragged.width(), dragged.height(),
                 SWP_NOMOVE | SWP_NOZORDER);
    QTRY_COMPARE(m_window->size(), QSize(1200, 571));
    QCOMPARE(m_window->ui->backgroundImage->width(), 974);
    QCOMPARE(int(SendMessageW(handle(), WM_NCMOUSEMOVE, HTRIGHT, MAKELPARAM(0, 0))), 0);
    QCOMPARE(m_window->size(), QSize(1200, 703));
    QCOMPARE(m_window->ui->backgroundImage->width(), 1200);
    QTRY_COMPARE(sizeOf(frame()), inPixels(QSize(1200, 703)));
    // Nothing creeps: the size that comes back from the screen is the one that was asked for.
    SendMessageW(handle(), WM_NCMOUSEMOVE, HTRIGHT, MAKELPARAM(0, 0));
    QCOMPARE(m_window->size(), QSize(1200, 703));
}

void TestNativeRatio::fullScreenAndBack()
{
    const QSize screen(GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN));
    m_window->on_btnFullscreen_clicked();
    // As high as the screen, or as wide, and nowhere beyond it.
    const QSize shown = sizeOf(frame());
    QVERIFY(shown.width() <= screen.width());
    QVERIFY(shown.height() <= screen.height());
    QVERIFY(screen.height() - shown.height() < 2 * m_ratio);
    QCOMPARE(m_window->ui->backgroundImage->size(), m_window->size());
    m_window->on_btnFullscreen_clicked();
    QTRY_COMPARE(m_window->size(), QSize(974, 571));
    QTRY_COMPARE(m_window->pos(), QPoint(200, 150));
    QTRY_COMPARE(sizeOf(frame()), inPixels(QSize(974, 571)));
}

void TestNativeRatio::bareAreaDragsTheWindow()
{
    const QPoint grip = m_window->mapToGlobal(QPoint(600, 300));
    QVERIFY(Pointer::moveTo(inPixels(grip)));
    QVERIFY(Pointer::press());
    QTRY_COMPARE(m_window->mousePos, grip);
    QVERIFY(Pointer::moveTo(inPixels(grip + QPoint(100, -40))));
    QTRY_COMPARE(m_window->pos(), QPoint(300, 110));
    QVERIFY(Pointer::release());
}

QTEST_MAIN(TestNativeRatio)
#include "tst_nativeratio.moc"
