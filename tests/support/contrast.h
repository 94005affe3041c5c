#pragma once

#include <QColor>

#include <algorithm>
#include <cmath>

// How well one colour stands out from another, as WCAG 2.1 counts it: 1 for the same, 21 for black
// on white.
inline double contrast(QRgb one, QRgb other)
{
    const auto linear = [](int channel) {
        const double value = channel / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    const auto luminance = [linear](QRgb colour) {
        return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) +
               0.0722 * linear(qBlue(colour));
    };
    const double a = luminance(one);
    const double b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}
