#pragma once

#include <QByteArray>

// The largest picture that is decoded, in pixels: four times what a large screen shows, and with
// its copies still no burden for a small computer.
constexpr qint64 largestPicture = 32 * 1000 * 1000;

// Whether a picture, by what its first bytes say, has no more pixels than that. Bytes that tell no
// size pass.
bool isPictureOfReasonableSize(const QByteArray &bytes);
