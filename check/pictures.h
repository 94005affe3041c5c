#pragma once

#include "check/finding.h"

#include <QByteArray>
#include <QSize>

// At the design size, in pixels.
QSize shownSizeOfLogo();
QSize shownSizeOfSlide();
QSize shownSizeOfTile(int index);

// What there is to say of a picture that has arrived, for a place of this size; named says which it
// is.
Findings findingsOfPicture(const QByteArray &bytes, const QSize &shown, const Place &place,
                           const QString &named);
