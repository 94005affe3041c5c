#include "news/picturesize.h"

#include <QBuffer>
#include <QImageReader>
#include <QSize>

bool isPictureOfReasonableSize(const QByteArray &bytes)
{
    QByteArray data = bytes;
    QBuffer buffer(&data);
    if (!buffer.open(QIODevice::ReadOnly)) {
        return false;
    }
    // The size as the header tells it, before anything is decoded.
    const QSize size = QImageReader(&buffer).size();
    return !size.isValid() || qint64(size.width()) * size.height() <= largestPicture;
}
