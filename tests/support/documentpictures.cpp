// What of support/documents.h needs the toolkit's pictures.

#include "support/documents.h"

#include <QBuffer>
#include <QImage>

QByteArray Documents::png(int width, int height, unsigned int colour)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(colour);
    return png(image);
}

QByteArray Documents::png(const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG")) {
        qFatal("the picture cannot be encoded");
    }
    return bytes;
}
