#include "base/luminance.h"

#include <cmath>

namespace
{
double linear(int part)
{
    const double value = part / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}
} // namespace

double luminance(int red, int green, int blue)
{
    return 0.2126 * linear(red) + 0.7152 * linear(green) + 0.0722 * linear(blue);
}
