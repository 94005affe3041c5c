#include "fetch/imagedownloader.h"

#include "base/pathsafety.h"
#include "base/plainname.h"
#include "fetch/filedownloader.h"
#include "fetch/oneperturn.h"

#include <QFile>
#include <QFileInfo>
#include <QFutureWatcher>
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

// Empty when it is larger than the file of any picture that is decoded.
QByteArray contentOf(const QString &fileName)
{
    constexpr int bytesOfPixel = 4;
    QFile file(fileName);
    return file.size() <= 2 * bytesOfPixel * largestPicture && file.open(QIODevice::ReadOnly)
               ? file.readAll()
               : QByteArray();
}

// The name may come from the document (a server's name). Only a plain one is asked for: another may
// be that of a picture in an installed game, or of another computer, to which the question alone
// would be a connection.
bool mayBeCacheFile(const QString &fileName)
{
    return isPlainName(fileName) && isFileOrFree(fileName);
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

// In the pool, one at a time: the largest take hundreds of megabytes on the way. In the format in
// which pictures are painted, for which the window's thread would have to convert it; but large
// ones stay as small as they are until it takes them, which may be after an archive was unpacked.
QImage decodedInTurn(const QByteArray &bytes)
{
    constexpr qint64 manyPixels = 4 * 1000 * 1000;
    static QMutex turn;
    const RoomInPool room;
    const QMutexLocker locker(&turn);
    QImage picture = decodedPicture(bytes);
    if (qint64(picture.width()) * picture.height() <= manyPixels) {
        picture = picture.convertToFormat(
            picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    }
    return picture;
}
} // namespace

qint64 ImageDownloader::s_pixels = 0;

QPixmap scaledToSize(const QPixmap &picture, QSize size, qreal pixelRatio)
{
    // The toolkit would complain on the console about scaling nothing.
    if (picture.isNull()) {
        return {};
    }
    // Elsewhere published sizes are no multiples of what is shown, and lines would come out uneven.
    const bool plain = qFuzzyCompare(pixelRatio, 1.0);
    QPixmap scaled = picture.scaled(size * pixelRatio, Qt::IgnoreAspectRatio,
                                    plain ? Qt::FastTransformation : Qt::SmoothTransformation);
    scaled.setDevicePixelRatio(pixelRatio);
    return scaled;
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
    s_pixels -= m_pixels;
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

// Decoding keeps the window waiting: pictures that arrive together are loaded one by one, and all
// but small ones are decoded elsewhere first.
void ImageDownloader::takeTurn()
{
    ++m_waiting;
    m_newestWaits = m_newestWaits || sender() == fd;
    if (newestTakesLong()) {
        decodeInPool(m_round);
        return;
    }
    OnePerTurn::take(this, [this, round = m_round] {
        // Another picture may have been asked for meanwhile, or this one loaded.
        if (round != m_round) {
            return;
        }
        // Behind an older answer the newest may have arrived.
        if (newestTakesLong()) {
            decodeInPool(round);
        } else {
            --m_waiting;
            loadData();
        }
    });
}

bool ImageDownloader::newestTakesLong() const
{
    return m_newestWaits && takesLongToDecode(fd->downloadedData());
}

// It still counts as waiting for its turn: whoever needs it at once decodes it at once.
void ImageDownloader::decodeInPool(int round)
{
    auto *watcher = new QFutureWatcher<QImage>(this);
    connect(watcher, &QFutureWatcher<QImage>::finished, this, [this, watcher, round] {
        watcher->deleteLater();
        OnePerTurn::take(this, [this, round, picture = watcher->result()] {
            if (round == m_round) {
                --m_waiting;
                show(picture);
            }
        });
    });
    watcher->setFuture(QtConcurrent::run(&decodedInTurn, fd->downloadedData()));
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
    show(decodedPicture(fd->downloadedData()));
}

void ImageDownloader::show(const QImage &picture)
{
    isDownloaded = true;
    m_newestWaits = false;
    if (px_orig == nullptr) {
        px_orig = new QPixmap;
    }
    keep(QPixmap::fromImage(picture));
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

// Into the original, which is there.
void ImageDownloader::keep(QPixmap picture)
{
    s_pixels -= std::exchange(m_pixels, 0);
    const qint64 pixels = qint64(picture.width()) * picture.height();
    if (s_pixels + pixels > mostPixels) {
        *px_orig = QPixmap();
        return;
    }
    s_pixels += pixels;
    m_pixels = pixels;
    *px_orig = std::move(picture);
}

void ImageDownloader::saveBuffer() const
{
    writeCacheFile(cacheFileName(), px_orig != nullptr ? px_orig->toImage() : QImage());
}

void ImageDownloader::writeCacheFileInPool(const QString &fileName, const QImage &picture)
{
    // One at a time: with a thread for each they would leave the window no processor. It is the
    // turn that is locked; picture and name are this call's own.
    const RoomInPool room;
    const QMutexLocker locker(&cacheTurn());
    writeCacheFile(fileName, picture);
}

QMutex &ImageDownloader::cacheTurn()
{
    static QMutex turn;
    return turn;
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
    if (!mayBeCacheFile(fileName)) {
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
    if (!enableLoadBuffer || !mayBeCacheFile(cacheFileName()) || !fileExists(cacheFileName())) {
        return;
    }
    // kept: a previous original is dropped without being freed; a logo button may still show it.
    // By its name a cache file may be another's: an archive that broke off, called like a server.
    px_orig = new QPixmap;
    m_pixels = 0;
    keep(QPixmap::fromImage(decodedPicture(contentOf(cacheFileName()))));
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
    label->setPixmap(scaledToSize(picture, label->size(), label->devicePixelRatioF()));
}
