#include "fetch/filedownloader.h"

#include "base/localaddress.h"
#include "fetch/oneperturn.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>

namespace
{
// What the toolkit keeps before it is taken over, in bytes. With a limit it reads on only when that
// has been done: of an encrypted answer 64 KiB at a time, which unpack to 64 MiB at worst. Over
// plain http it unpacks at once whatever the system has received.
constexpr qint64 receiveBufferSize = 1024 * 1024;
// What is worth taking over before the end.
constexpr qint64 pieceSize = 64 * 1024;
} // namespace

FileDownloader::FileDownloader(QUrl imageUrl, QObject *parent)
    : QObject(parent)
{
    if (!mayBeFetched(imageUrl)) {
        // Before there is a request: the toolkit opens a file at once, and may wait for it for
        // ever.
        QMetaObject::invokeMethod(this, &FileDownloader::downloaded, Qt::QueuedConnection);
        return;
    }
    // In a later turn: whoever answers downloaded() may delete this object, and with it the
    // manager, which is not done with itself while it says that a reply has finished.
    connect(&m_WebCtrl, &QNetworkAccessManager::finished, this, &FileDownloader::fileDownloaded,
            Qt::QueuedConnection);
    // Default settings: redirects are not followed, the body of the redirect itself arrives.
    QNetworkReply *const reply = m_WebCtrl.get(QNetworkRequest(imageUrl));
    reply->setReadBufferSize(receiveBufferSize);
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] { readyRead(reply); });
}

FileDownloader::~FileDownloader() = default;

QByteArray FileDownloader::downloadedData() const
{
    return m_DownloadedData;
}

void FileDownloader::readyRead(QNetworkReply *reply)
{
    if (reply->bytesAvailable() < pieceSize) {
        return;
    }
    takeReceivedBytes(reply);
    if (m_received.size() >= largestBody && reply->bytesAvailable() > 0) {
        reply->abort();
    }
}

void FileDownloader::takeReceivedBytes(QNetworkReply *reply)
{
    m_received += reply->read(qMin(reply->bytesAvailable(), largestBody - m_received.size()));
}

void FileDownloader::fileDownloaded(QNetworkReply *pReply)
{
    // kept: neither status nor error is looked at. Users of this class cope with an empty or
    // foreign body, so every outcome ends in the same signal.
    // Nothing can be read of a reply that was given up.
    if (pReply->isOpen()) {
        takeReceivedBytes(pReply);
    }
    m_DownloadedData.swap(m_received);
    pReply->deleteLater();
    const QPointer<FileDownloader> self(this);
    emit downloaded();
    if (self == nullptr) {
        return;
    }
    // Whoever asked keeps this object as long as the window is open. There is nothing more to
    // fetch, so the connection and the toolkit's thread behind it need not stay that long. Its end
    // is waited for, some milliseconds on a busy machine: not for several in one turn.
    OnePerTurn::take(this, [this] { m_WebCtrl.clearConnectionCache(); });
}
