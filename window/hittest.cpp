#include "window/hittest.h"

int HitTest::borderWidthAt(qreal pixelRatio)
{
    return qRound(borderWidth * pixelRatio);
}

// kept: each test overwrites the result of the earlier ones. In a window so narrow that bands
// overlap, right wins over left and top over bottom.
int HitTest::borderAt(const WindowRect &window, QPoint point, bool widthResizable,
                      bool heightResizable)
{
    const bool inLeft = point.x() >= window.left && point.x() < window.left + window.border;
    const bool inRight = point.x() >= window.right - window.border && point.x() < window.right;
    const bool inBottom = point.y() >= window.bottom - window.border && point.y() < window.bottom;
    const bool inTop = point.y() >= window.top && point.y() < window.top + window.border;

    int result = nothing;
    const auto overwrite = [&result](bool matches, int value) {
        if (matches) {
            result = value;
        }
    };
    overwrite(widthResizable && inLeft, left);
    overwrite(widthResizable && inRight, right);
    overwrite(heightResizable && inBottom, bottom);
    overwrite(heightResizable && inTop, top);
    if (widthResizable && heightResizable) {
        overwrite(inBottom && inLeft, bottomLeft);
        overwrite(inBottom && inRight, bottomRight);
        overwrite(inTop && inLeft, topLeft);
        overwrite(inTop && inRight, topRight);
    }
    return result;
}

HitTest::Answer HitTest::answer(const WindowRect &window, QPoint point, bool widthResizable,
                                bool heightResizable, const std::function<bool()> &overBareWindow)
{
    const int border = borderAt(window, point, widthResizable, heightResizable);
    if (border != nothing) {
        return {true, border};
    }
    return overBareWindow() ? Answer{true, caption} : Answer{false, nothing};
}

QPoint HitTest::unpackPoint(qintptr parameter)
{
    const auto signed16 = [](quintptr bits) {
        const auto value = static_cast<int>(bits & 0xFFFFU);
        return value < 0x8000 ? value : value - 0x10000;
    };
    const auto bits = static_cast<quintptr>(parameter);
    return {signed16(bits), signed16(bits >> 16U)};
}
