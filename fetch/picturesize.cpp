#include "fetch/picturesize.h"

#include "fetch/pictureparts.h"
#include "fetch/pngdata.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QSize>
#include <QtEndian>

#include <algorithm>

namespace
{
// The size of the whole picture as the head of a GIF file tells it; the toolkit tells that of the
// first frame, and allocates this one.
QSize screenOfGif(const QByteArray &bytes)
{
    constexpr int head = 10; // signature, version, then two little-endian numbers
    if (bytes.size() < head || !bytes.startsWith("GIF8")) {
        return {};
    }
    return {qFromLittleEndian<quint16>(bytes.constData() + 6),
            qFromLittleEndian<quint16>(bytes.constData() + 8)};
}

// Whether the pictures within an icon file are as large as the file at most. The toolkit believes
// what the file says of them, and asks for as many bytes of memory before it reads one.
bool holdsItsIcons(const QByteArray &bytes)
{
    constexpr int head = 6;
    constexpr int entry = 16;
    constexpr int sizeInEntry = 8;
    const bool icon = bytes.startsWith(QByteArray::fromRawData("\0\0\1\0", 4)) ||
                      bytes.startsWith(QByteArray::fromRawData("\0\0\2\0", 4));
    if (!icon || bytes.size() < head) {
        return true;
    }
    const int count = qFromLittleEndian<quint16>(bytes.constData() + 4);
    for (int number = 0; number < count; ++number) {
        const int begin = head + number * entry;
        if (begin + entry > bytes.size() ||
            qFromLittleEndian<quint32>(bytes.constData() + begin + sizeInEntry) >
                static_cast<quint32>(bytes.size())) {
            return false;
        }
    }
    return true;
}

// The formats of letters take the decoder fifty times as long as bytes of others.
bool isOfLetters(const QByteArray &format, const QByteArray &bytes)
{
    const bool ofNumbers = bytes.size() > 1 && bytes.at(0) == 'P' && bytes.at(1) <= '3';
    return ofNumbers || format == "xbm" || format == "xpm";
}

// Progressive pictures have about ten scans. Going over the largest picture once takes 35 ms.
bool hasReasonableScans(const QByteArray &bytes, qint64 pixels)
{
    constexpr qint64 mostScans = 100;
    constexpr qint64 scansOfLargest = 16;
    const qint64 allowed = scansOfLargest * largestPicture / std::max<qint64>(pixels, 1);
    return scansOfJpeg(bytes) <= std::min(mostScans, allowed);
}

// What the decoder is given.
QByteArray essenceOf(const QByteArray &bytes)
{
    return withoutRestOfPng(withoutIconAround(bytes));
}

struct Head {
    QByteArray format;
    qint64 pixels = 0;
};

// As the picture's header tells it, before anything is decoded.
Head headOf(QByteArray essence)
{
    QBuffer buffer(&essence);
    if (!buffer.open(QIODevice::ReadOnly)) {
        return {};
    }
    QImageReader reader(&buffer);
    const QByteArray format = reader.format();
    const QSize size =
        reader.size().expandedTo(screenOfGif(essence)).expandedTo(sizeInIcon(essence));
    return {format, size.isValid() ? qint64(size.width()) * size.height() : 0};
}

bool isReasonable(const QByteArray &essence)
{
    const Head head = headOf(essence);
    return head.pixels <= largestPicture && hasReasonableScans(essence, head.pixels) &&
           pixelsInGif(essence) <= largestPicture && !unpacksBeyondItsRows(essence) &&
           (!isOfLetters(head.format, essence) || essence.size() <= longestPictureOfLetters);
}
} // namespace

bool isPictureOfReasonableSize(const QByteArray &bytes)
{
    if (!holdsItsIcons(bytes)) {
        return false;
    }
    return isReasonable(essenceOf(bytes));
}

bool takesLongToDecode(const QByteArray &bytes)
{
    constexpr int manyBytes = 64 * 1024;
    constexpr qint64 manyPixels = 32 * 1024;
    return bytes.size() > manyBytes ||
           headOf(essenceOf(bytes)).pixels * std::max(scansOfJpeg(bytes), 1) > manyPixels;
}

QImage decodedPicture(const QByteArray &bytes)
{
    const QByteArray essence = essenceOf(bytes);
    return holdsItsIcons(bytes) && isReasonable(essence) ? QImage::fromData(essence) : QImage();
}
