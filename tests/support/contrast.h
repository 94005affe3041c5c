#pragma once

#include "base/luminance.h"

#include <QColor>

#include <algorithm>

// The contrast ratio of WCAG 2.1, from 1 to 21.
namespace Contrast
{
inline double ratio(QRgb one, QRgb other)
{
    const double a = luminance(qRed(one), qGreen(one), qBlue(one));
    const double b = luminance(qRed(other), qGreen(other), qBlue(other));
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}
} // namespace Contrast
