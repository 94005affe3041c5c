#include "window/designscale.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace
{
const QString &fontMark()
{
    static const QString mark = QStringLiteral("font:");
    return mark;
}

float product(int length, float ratio)
{
    return static_cast<float>(length) * ratio;
}
} // namespace

float DesignScale::ratio(QSize design, QSize previous, QSize target)
{
    const float ratioWidth =
        static_cast<float>(target.width()) / static_cast<float>(design.width());
    const float ratioHeight =
        static_cast<float>(target.height()) / static_cast<float>(design.height());
    if (target.height() == previous.height()) {
        return ratioWidth;
    }
    if (target.width() == previous.width()) {
        return ratioHeight;
    }
    return std::min(ratioHeight, ratioWidth);
}

int DesignScale::scaled(int length, float ratio)
{
    return static_cast<int>(product(length, ratio));
}

int DesignScale::scaledWindowSide(int side, float ratio)
{
    return static_cast<int>(std::floor(product(side, ratio)));
}

bool DesignScale::hasFont(const QString &styleSheet)
{
    return styleSheet.contains(fontMark());
}

// kept: the number is expected exactly one blank behind the colon, and the first "px" of the whole
// sheet ends it. Sheets are written to fit; one that is not ends at a font of 1 pixel.
int DesignScale::fontSize(const QString &styleSheet)
{
    constexpr int markLength = 6; // with the blank
    const int mark = styleSheet.indexOf(fontMark());
    const int unit = styleSheet.indexOf(QStringLiteral("px"));
    return styleSheet.midRef(mark + markLength, unit - mark - markLength).toInt();
}

int DesignScale::scaledFontSize(int size, float ratio)
{
    return std::max(1, static_cast<int>(std::ceil(product(size, ratio))));
}

QString DesignScale::withFontSize(const QString &styleSheet, int size)
{
    static const QRegularExpression font(QStringLiteral("(font: )[0123456789]*(px[^;]*;)"));
    // With two groups the toolkit reads "\\1" and a digit as the first group and that digit.
    return QString(styleSheet)
        .replace(font, QStringLiteral("\\1") + QString::number(size) + QStringLiteral("\\2"));
}
