#include "support/pointer.h"

#include <QCursor>
#include <QTest>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#else
#include <QProcess>
#endif

namespace
{
#ifdef Q_OS_WIN
bool warp(QPoint place)
{
    return SetCursorPos(place.x(), place.y()) != 0;
}

bool button(bool down)
{
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = down ? MOUSEEVENTF_LEFTDOWN : MOUSEEVENTF_LEFTUP;
    return SendInput(1, &input, sizeof input) == 1;
}

// The toolkit's own cursor counts in the window's pixels.
bool isAt(QPoint place)
{
    POINT now{};
    return GetCursorPos(&now) != 0 && QPoint(int(now.x), int(now.y)) == place;
}
#else
bool tool(const QStringList &arguments)
{
    return QProcess::execute(QStringLiteral("xdotool"), arguments) == 0;
}

bool warp(QPoint place)
{
    return tool(
        {QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())});
}

bool button(bool down)
{
    return tool(
        {down ? QStringLiteral("mousedown") : QStringLiteral("mouseup"), QStringLiteral("1")});
}

bool isAt(QPoint place)
{
    return QCursor::pos() == place;
}
#endif
} // namespace

bool Pointer::moveTo(QPoint place)
{
    return warp(place) && QTest::qWaitFor([place] { return isAt(place); });
}

bool Pointer::press()
{
    return button(true);
}

bool Pointer::release()
{
    return button(false);
}
