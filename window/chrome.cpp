// The frameless window's own chrome: resize borders, dragging, full screen, minimise.

#include "window/hittest.h"
#include "window/testform.h"

#include <QApplication>
#include <QCursor>
#include <QMouseEvent>
#include <QScreen>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#endif

#ifdef Q_OS_WIN
bool testform::nativeEvent(const QByteArray & /*eventType*/, void *message, long *result)
{
    const auto *native = static_cast<const MSG *>(message);
    // The pointer moves over a border again after it was dragged.
    if (native->message == WM_NCMOUSEMOVE) {
        customResize();
        return true;
    }
    if (native->message != WM_NCHITTEST || isMaximized()) {
        return false;
    }
    RECT frame{};
    GetWindowRect(reinterpret_cast<HWND>(winId()), &frame);
    const HitTest::Answer answer =
        HitTest::answer({int(frame.left), int(frame.top), int(frame.right), int(frame.bottom),
                         HitTest::borderWidthAt(devicePixelRatioF())},
                        HitTest::unpackPoint(native->lParam), minimumWidth() != maximumWidth(),
                        minimumHeight() != maximumHeight(),
                        [this] { return QApplication::widgetAt(QCursor::pos()) == this; });
    *result = answer.result;
    return answer.handled;
}
#else
bool testform::nativeEvent(const QByteArray & /*eventType*/, void * /*message*/, long * /*result*/)
{
    return false;
}
#endif

// Presses reach the window from wherever no button takes them, so that any such place drags it.
void testform::mousePressEvent(QMouseEvent *event)
{
    mousePos = event->globalPos();
    m_dragRatio = devicePixelRatioF();
    m_dragOrigin = screen()->geometry().topLeft();
}

void testform::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint position = event->globalPos();
    const qreal ratio = devicePixelRatioF();
    const QPoint origin = screen()->geometry().topLeft();
    // The toolkit counts from the corner of the window's screen, in that screen's measure: behind a
    // change of it the same place has another number, and the window would jump away.
    const bool sameMeasure =
        qFuzzyCompare(ratio, m_dragRatio) && (origin == m_dragOrigin || qFuzzyCompare(ratio, 1.0));
    if (sameMeasure || m_dragRatio == 0) {
        move(pos() + position - mousePos);
    }
    mousePos = position;
    m_dragRatio = ratio;
    m_dragOrigin = origin;
}

void testform::mouseReleaseEvent(QMouseEvent * /*event*/) {}

// A resize alone rescales nothing; the next move over a border does.
void testform::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
}

void testform::focusInEvent(QFocusEvent * /*event*/) {}

void testform::focusOutEvent(QFocusEvent * /*event*/) {}

void testform::on_btnFullscreen_clicked()
{
    if (isMax) {
        isMax = false;
        customResize(w_before_full, h_before_full);
        // kept: the toolkit's full-screen state is not left; only size and place are restored.
        move(x_before_full, y_before_full);
        return;
    }
    w_before_full = width();
    h_before_full = height();
    x_before_full = x();
    y_before_full = y();
    isMax = true;
    const bool wasFullScreen = isFullScreen();
    showFullScreen();
    const QSize full = screen()->size();
    const bool stillToGrow =
        !wasFullScreen && size() == QSize(prevWidth, prevHeight) && size() != full;
    if (stillToGrow) {
        // Window managers of X11 enlarge the window only after this call returned, and nothing
        // would rescale it then.
        customResize(full.width(), full.height());
    } else {
        customResize();
    }
}

void testform::on_btnMinimize_clicked()
{
    if (isMinimized()) {
        showNormal();
    } else {
        showMinimized();
    }
}
