#pragma once

#include <QByteArray>

class QImage;

// The largest picture that is decoded, in pixels: one of 8K with room around it. The largest take a
// second and 350 MB on the way.
constexpr qint64 largestPicture = 36 * 1000 * 1000;

// The longest file in bytes of a format whose pixels are written as letters or numbers.
constexpr int longestPictureOfLetters = 16 * 1000 * 1000;

// Whether a picture, by what can be told of it before it is decoded, has no more pixels than that,
// asks for no more memory than its file is large where it names a number of bytes, and takes no
// more work than such a picture needs: so many scans of a JPEG file, data of a GIF file for more
// pixels than it has, a long file of letters. Bytes that tell no size pass.
bool isPictureOfReasonableSize(const QByteArray &bytes);

// Whether decoding it may keep the window waiting for more than two milliseconds or so.
bool takesLongToDecode(const QByteArray &bytes);

// The picture, the first of several; an empty one when the bytes are none, or none of reasonable
// size. What does not belong to its looks is not unpacked.
QImage decodedPicture(const QByteArray &bytes);
