#include "fetch/picturesize.h"

#include <QBuffer>
#include <QImageReader>
#include <QSize>
#include <QtEndian>

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
} // namespace

bool isPictureOfReasonableSize(const QByteArray &bytes)
{
    if (!holdsItsIcons(bytes)) {
        return false;
    }
    QByteArray data = bytes;
    QBuffer buffer(&data);
    if (!buffer.open(QIODevice::ReadOnly)) {
        return false;
    }
    // The size as the header tells it, before anything is decoded.
    const QSize size = QImageReader(&buffer).size().expandedTo(screenOfGif(bytes));
    return !size.isValid() || qint64(size.width()) * size.height() <= largestPicture;
}
