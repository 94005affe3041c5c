#pragma once

#include "fetch/picturesize.h"

#include <QObject>
#include <QPointer>
#include <QSize>
#include <QString>
#include <QUrl>

class FileDownloader;
class QImage;
class QLabel;
class QMutex;
class QPixmap;

// The picture scaled to exactly this size, aspect ratio ignored, for a screen with so many pixels
// to each of the window's: not smoothed where that is one. An empty picture stays empty.
QPixmap scaledToSize(const QPixmap &picture, QSize size, qreal pixelRatio = 1);

// Fetches one picture, shows it on a label, keeps the unscaled original and caches it as
// <objectName>.png in the working directory. Failures are silent: bytes that are no picture, or a
// picture of unreasonable size, give an empty one.
class ImageDownloader : public QObject
{
    Q_OBJECT

public:
    // For a label, which is not owned and names the cache file. Throws std::invalid_argument when
    // there is no label. Made without a parent: the caller gives it an owner.
    ImageDownloader(QUrl pictureUrl, QLabel *pictureLabel);
    // For a picture that is shown elsewhere; name is that of the cache file.
    ImageDownloader(QUrl pictureUrl, QString name);
    // The cache file of a picture that has arrived is still written.
    ~ImageDownloader() override;

    // Starts the fetch; once the picture is loaded it only rescales it to the label's size. One
    // that has arrived and waits for its turn is not fetched again.
    void downloadImage();
    // Another picture for another label (or the same).
    void downloadNewImage(QUrl newUrl, QLabel *newLabel);
    // Loads a picture that has arrived and waits for its turn now; does nothing for any other.
    void loadArrived();
    // Shows the cached picture now and announces it; does nothing when there is no cache file.
    void loadBuffer();
    // Writes the original to the cache file.
    void saveBuffer() const;

    // The unscaled original, owned by this object; null until a picture was loaded.
    QPixmap *getOriginalPixmap() const { return px_orig; }

    // Whether loadBuffer() may read the cache file.
    void setEnableLoadBuffer(bool enable) { enableLoadBuffer = enable; }
    bool getEnableLoadBuffer() const { return enableLoadBuffer; }

    bool isDownloaded = false; // what a fetch brought has been loaded

signals:
    void loadedImage();

private slots:
    void loadData();

private:
    bool fileExists(QString path) const;
    QString cacheFileName() const;
    void fetch();
    void takeTurn();
    bool newestTakesLong() const;
    void decodeInPool(int round);
    void show(const QImage &picture);
    void keep(QPixmap picture);
    void showOnLabel(const QPixmap &picture);
    static QMutex &cacheTurn();
    static void writeCacheFile(const QString &fileName, const QImage &picture);
    static void writeArrivedInPool(const QString &fileName, const QByteArray &bytes);
    static void writeCacheFileInPool(const QString &fileName, const QImage &picture);

    QPointer<QLabel> label; // where the picture is shown; null for none, or when it is gone
    QString objectName;
    QPixmap *px = nullptr;      // display copy, from which the label is rescaled
    QPixmap *px_orig = nullptr; // unscaled original
    qint64 m_pixels = 0;        // of those counted below, in the original of now
    QUrl url;
    FileDownloader *fd = nullptr; // a child; the newest fetch
    int m_waiting = 0;            // fetches that have ended and wait for their turn
    bool m_newestWaits = false;   // the newest fetch is one of them
    int m_round = 0;              // grows when those that wait have nothing to do any more
    bool enableLoadBuffer = true;
    bool createdPixmap; // made for a label

    // In all originals together; the window's thread alone counts. One beyond the most is as one
    // that cannot be decoded: a document may name any number of pictures, of a few kilobytes each.
    static constexpr qint64 mostPixels = 4 * largestPicture;
    static qint64 s_pixels;
};
