#pragma once

#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/screenscaling.h"
#include "window/testform.h"

#include <QTest>
#include <qt_windows.h>

#include <memory>

// For tests of the window as Windows knows it: each test function has a window of its own, shown
// away from the screen's corner, with nothing above its background.
class NativeWindowTest : public QObject
{
    Q_OBJECT

public:
    // Called by the toolkit's test main before the application object is made.
    static void initMain() { ScreenScaling::letToolkitScale(); }

private slots:
    void init()
    {
        m_folder = std::make_unique<ScratchFolder>();
        m_window = std::make_unique<testform>();
        m_window->ui->serverButtonsGroup->hide();
        QVERIFY(WindowDriver::show(*m_window));
        m_window->move(200, 150);
        QTRY_COMPARE(m_window->pos(), QPoint(200, 150));
        QCOMPARE(m_window->devicePixelRatioF(), m_ratio);
    }
    void cleanup()
    {
        m_window.reset();
        m_folder.reset();
    }

protected:
    // In the screen's pixels; all else is in the window's own.
    QSize inPixels(QSize size) const { return size * m_ratio; }
    QPoint inPixels(QPoint point) const { return point * m_ratio; }
    HWND handle() const { return reinterpret_cast<HWND>(m_window->winId()); }
    // On the screen, in pixels.
    RECT frame() const
    {
        RECT frame{};
        GetWindowRect(handle(), &frame);
        return frame;
    }

    static QSize sizeOf(const RECT &frame)
    {
        return {int(frame.right - frame.left), int(frame.bottom - frame.top)};
    }

    // The screen's pixels to one of the window's, as the test was registered for.
    qreal m_ratio =
        qEnvironmentVariable("EMBERWAKE_EXPECTED_RATIO", QStringLiteral("1")).toDouble();
    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<testform> m_window;
};
