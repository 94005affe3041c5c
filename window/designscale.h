#pragma once

#include <QSize>
#include <QString>

// The arithmetic of proportional scaling. All sizes in pixels; products are taken in single
// precision.
namespace DesignScale
{
// The ratio for a window dragged from its previous size to the target: that of the side which
// alone was changed, otherwise the smaller one.
float ratio(QSize design, QSize previous, QSize target);

// A design length at this ratio, cut toward zero.
int scaled(int length, float ratio);
// A side of the window at this ratio, rounded down.
int scaledWindowSide(int side, float ratio);

bool hasFont(const QString &styleSheet);
// The pixel size of a sheet's font, 0 where it cannot be read.
int fontSize(const QString &styleSheet);
// The font size at this ratio, rounded up and at least 1.
int scaledFontSize(int size, float ratio);
// The sheet with every font declaration set to this size.
QString withFontSize(const QString &styleSheet, int size);
} // namespace DesignScale
