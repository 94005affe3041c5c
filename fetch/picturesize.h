#pragma once

#include <QByteArray>

// The largest picture that is decoded, in pixels: twice what a large screen shows, and with
// its copies still no burden for a small computer.
constexpr qint64 largestPicture = 16 * 1000 * 1000;

// Whether a picture, by what its first bytes say, has no more pixels than that, and asks for no
// more memory than its file is large where it names a number of bytes. Bytes that tell no size
// pass.
bool isPictureOfReasonableSize(const QByteArray &bytes);
