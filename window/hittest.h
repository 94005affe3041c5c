#pragma once

#include <QPoint>

#include <functional>

// Which part of the frame a screen point of the frameless window belongs to, in the numbers that
// Windows uses for its non-client areas.
namespace HitTest
{
constexpr int nothing = 0;
constexpr int caption = 2;
constexpr int left = 10;
constexpr int right = 11;
constexpr int top = 12;
constexpr int topLeft = 13;
constexpr int topRight = 14;
constexpr int bottom = 15;
constexpr int bottomLeft = 16;
constexpr int bottomRight = 17;

// Width of the resize borders, in the window's own pixels.
constexpr int borderWidth = 8;
// The same in the screen's pixels, of which there are so many to one of the window's.
int borderWidthAt(qreal pixelRatio);

// Screen coordinates in pixels; left and top belong to the window, right and bottom do not.
struct WindowRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    int border = borderWidth; // width of the resize borders
};

// The border or corner at this point, or nothing; directions that cannot be resized have none.
int borderAt(const WindowRect &window, QPoint point, bool widthResizable, bool heightResizable);

struct Answer {
    bool handled; // false: the system decides, as for a point inside a child widget
    int result;
};

// The answer for a window that is not maximised: a border or corner, otherwise the caption where
// the pointer is over the bare window (asked only then).
Answer answer(const WindowRect &window, QPoint point, bool widthResizable, bool heightResizable,
              const std::function<bool()> &overBareWindow);

// The screen point packed into a message's parameter: x in the low 16 bits, y in the next 16, both
// signed, since monitors may lie left of or above the first one.
QPoint unpackPoint(qintptr parameter);
} // namespace HitTest
