#include "fetch/imagedownloader.h"

#include "base/pathsafety.h"
#include "fetch/filedownloader.h"
#include "fetch/oneperturn.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QMutex>
#include <QMutexLocker>
#include <QPixmap>
#include <QThreadPool>
#include <QtConcurrent>

#include <stdexcept>
#include <utility>

namespace
{
QString nameOf(const QLabel *label)
{
    if (label == nullptr) {
        throw std::invalid_argument("a picture needs a label to be shown on");
    }
    return label->objectName();
}

// Empty when the bytes are no picture, or one too large to be meant well: a file of a few kilobytes
// can ask for gigabytes of memory.
QPixmap decoded(const QByteArray &bytes)
{
    return QPixmap::fromImage(decodedPicture(bytes));
}

// Empty when it is larger than the file of any picture that is decoded.
QByteArray contentOf(const QString &fileName)
{
    constexpr int bytesOfPixel = 4;
    QFile file(fileName);
    return file.size() <= 2 * bytesOfPixel * largestPicture && file.open(QIODevice::ReadOnly)
               ? file.readAll()
               : QByteArray();
}

// While it lives, the pool has room as if the thread it stands in were none of its own. Decoding a
// picture borrows the same pool, and waits for it: behind the writers, the window would stand still
// until the last of them has packed its picture.
class RoomInPool
{
public:
    RoomInPool() { QThreadPool::globalInstance()->releaseThread(); }
    ~RoomInPool() { QThreadPool::globalInstance()->reserveThread(); }
    Q_DISABLE_COPY_MOVE(RoomInPool)
};
} // namespace

QPixmap scaledToSize(const QPixmap &picture, QSize size)
{
    // The toolkit would complain on the console about scaling nothing.
    return picture.isNull() ? QPixmap()
                            : picture.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation);
}

ImageDownloader::ImageDownloader(QUrl pictureUrl, QLabel *pictureLabel)
    : label(pictureLabel)
    , objectName(nameOf(pictureLabel))
    , px(new QPixmap)
    , url(std::move(pictureUrl))
    , createdPixmap(true)
{
}

ImageDownloader::ImageDownloader(QUrl pictureUrl, QString name)
    : objectName(std::move(name))
    , url(std::move(pictureUrl))
    , createdPixmap(false)
{
}

// kept: px is not freed here. A downloader lives as long as the window, and so does its picture.
ImageDownloader::~ImageDownloader()
{
    if (m_newestWaits) {
        QtConcurrent::run(&ImageDownloader::writeArrivedInPool, cacheFileName(),
                          fd->downloadedData());
    }
    delete px_orig;
}

void ImageDownloader::downloadImage()
{
    if (!isDownloaded) {
        if (!m_newestWaits) {
            fetch();
        }
    } else if (label != nullptr && px != nullptr) {
        showOnLabel(*px);
    }
}

void ImageDownloader::fetch()
{
    m_newestWaits = false;
    fd = new FileDownloader(url, this);
    connect(fd, &FileDownloader::downloaded, this, &ImageDownloader::takeTurn);
}

// Decoding keeps the window waiting: pictures that arrive together are loaded one by one.
void ImageDownloader::takeTurn()
{
    ++m_waiting;
    m_newestWaits = m_newestWaits || sender() == fd;
    OnePerTurn::take(this, [this, round = m_round] {
        // Another picture may have been asked for meanwhile, or this one loaded.
        if (round == m_round) {
            --m_waiting;
            loadData();
        }
    });
}

void ImageDownloader::loadArrived()
{
    if (!m_newestWaits) {
        return;
    }
    const int round = ++m_round;
    // Each arrival is announced, and whoever hears of it may ask for another picture.
    for (int arrivals = std::exchange(m_waiting, 0); arrivals > 0 && round == m_round; --arrivals) {
        loadData();
    }
}

void ImageDownloader::downloadNewImage(QUrl newUrl, QLabel *newLabel)
{
    if ((isDownloaded || m_waiting > 0) && fd != nullptr) {
        disconnect(fd, &FileDownloader::downloaded, this, &ImageDownloader::takeTurn);
        ++m_round;
        m_waiting = 0;
        m_newestWaits = false;
        // Deleted in a later turn of the event loop: the caller may be answering loadedImage()
        // while the fetch is still emitting its own signal.
        fd->deleteLater();
        fd = nullptr;
    }
    isDownloaded = false;
    url = std::move(newUrl);
    label = newLabel;
    if (px == nullptr) {
        px = new QPixmap;
    }
    downloadImage();
}

void ImageDownloader::loadData()
{
    isDownloaded = true;
    m_newestWaits = false;
    if (px_orig == nullptr) {
        px_orig = new QPixmap;
    }
    *px_orig = decoded(fd->downloadedData());
    if (label != nullptr && px != nullptr) {
        // The same picture, decoded once: neither of the two is ever painted upon.
        *px = *px_orig;
        showOnLabel(*px);
    }
    // Fire and forget, with a name and a picture of its own: the pool's thread touches nothing
    // that this thread replaces or deletes meanwhile.
    QtConcurrent::run(&ImageDownloader::writeCacheFileInPool, cacheFileName(), px_orig->toImage());
    emit loadedImage();
}

void ImageDownloader::saveBuffer() const
{
    writeCacheFile(cacheFileName(), px_orig != nullptr ? px_orig->toImage() : QImage());
}

void ImageDownloader::writeCacheFileInPool(const QString &fileName, const QImage &picture)
{
    // One at a time: with a thread for each they would leave the window no processor. It is the
    // turn that is locked; picture and name are this call's own.
    static QMutex turn;
    const RoomInPool room;
    const QMutexLocker locker(&turn);
    writeCacheFile(fileName, picture);
}

// Nobody sees it any more, so it is decoded here as well.
void ImageDownloader::writeArrivedInPool(const QString &fileName, const QByteArray &bytes)
{
    writeCacheFileInPool(fileName, decodedPicture(bytes));
}

// The file is written in place, and no lock guards it: whoever calls saveBuffer() may write it at
// the same time as the pool does, and the next start fetches it anew anyway.
void ImageDownloader::writeCacheFile(const QString &fileName, const QImage &picture)
{
    // The name may come from the document (a server's name): it must not reach a picture of the
    // player's somewhere else on the disk.
    if (!isFileOfWorkingDirectory(fileName)) {
        return;
    }
    QFile file(fileName);
    if (file.open(QIODevice::WriteOnly)) {
        // An empty picture leaves an empty file.
        (void)picture.save(&file, "PNG");
    }
}

void ImageDownloader::loadBuffer()
{
    if (!enableLoadBuffer || !fileExists(cacheFileName())) {
        return;
    }
    // kept: a previous original is dropped without being freed; a logo button may still show it.
    // By its name a cache file may be another's: an archive that broke off, called like a server.
    px_orig = new QPixmap(decoded(contentOf(cacheFileName())));
    if (label != nullptr) {
        showOnLabel(*px_orig);
    }
    emit loadedImage();
}

bool ImageDownloader::fileExists(QString path) const
{
    return QFileInfo(path).isFile();
}

QString ImageDownloader::cacheFileName() const
{
    return objectName + QStringLiteral(".png");
}

void ImageDownloader::showOnLabel(const QPixmap &picture)
{
    label->setPixmap(scaledToSize(picture, label->size()));
}
