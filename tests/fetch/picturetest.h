#pragma once

#include "fetch/imagedownloader.h"
#include "support/httpserver.h"
#include "support/scratchfolder.h"

#include <QBuffer>
#include <QImage>
#include <QLabel>
#include <QPixmap>
#include <QRgb>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

#include <memory>

// For tests of pictures that are fetched: each test function has a server, and a folder for the
// cache files, of its own.
class PictureTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<ScratchFolder>();
        m_server = std::make_unique<HttpServer>();
    }
    void cleanup()
    {
        m_server.reset();
        m_folder.reset();
    }

protected:
    static constexpr int limit = 10000; // milliseconds

    static constexpr QRgb red = 0xffff0000;
    static constexpr QRgb green = 0xff00ff00;

    class PictureLabel : public QLabel
    {
    public:
        explicit PictureLabel(QSize size, const char *name = "picture")
        {
            setObjectName(QLatin1String(name));
            resize(size);
        }
    };

    static QByteArray encoded(const QImage &image, const char *format, int quality = -1)
    {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, format, quality);
        return bytes;
    }

    // Every pixel unlike its neighbours, so that smoothing cannot hide.
    static QImage busyImage(int width, int height)
    {
        QImage image(width, height, QImage::Format_RGB32);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                image.setPixel(x, y, qRgb((x * 97) % 256, (y * 61) % 256, ((x + y) % 2) * 255));
            }
        }
        return image;
    }
    static QByteArray busyPicture(int width, int height)
    {
        return encoded(busyImage(width, height), "PNG");
    }

    // In the one format in which images are compared.
    static QImage plain(const QImage &image)
    {
        return image.convertToFormat(QImage::Format_ARGB32);
    }
    static QImage shownOn(const QLabel &label)
    {
        return plain(label.pixmap(Qt::ReturnByValue).toImage());
    }
    static QImage stretched(const QByteArray &picture, QSize size)
    {
        return plain(
            QImage::fromData(picture).scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation));
    }
    static QImage decoded(const QByteArray &picture) { return plain(QImage::fromData(picture)); }
    static QImage originalOf(const ImageDownloader &downloader)
    {
        return plain(downloader.getOriginalPixmap()->toImage());
    }

    static bool cacheIsWritten() { return QThreadPool::globalInstance()->waitForDone(limit); }

    // Downloads and waits for the picture and its cache file.
    static bool download(ImageDownloader &downloader)
    {
        QSignalSpy loaded(&downloader, &ImageDownloader::loadedImage);
        downloader.downloadImage();
        return loaded.wait(limit) && cacheIsWritten();
    }

    QString pictureUrl() const { return m_server->url(QStringLiteral("picture")); }
    QUrl url(const QByteArray &picture)
    {
        m_server->serve(QStringLiteral("picture"), picture);
        return QUrl(pictureUrl());
    }
    int requests() const { return m_server->requests(QStringLiteral("picture")); }

    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<HttpServer> m_server;
};
