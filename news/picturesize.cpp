#include "news/picturesize.h"

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
} // namespace

bool isPictureOfReasonableSize(const QByteArray &bytes)
{
    QByteArray data = bytes;
    QBuffer buffer(&data);
    if (!buffer.open(QIODevice::ReadOnly)) {
        return false;
    }
    // The size as the header tells it, before anything is decoded.
    const QSize size = QImageReader(&buffer).size().expandedTo(screenOfGif(bytes));
    return !size.isValid() || qint64(size.width()) * size.height() <= largestPicture;
}
