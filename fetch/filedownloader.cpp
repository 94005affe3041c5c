#include "fetch/filedownloader.h"

#include "base/localaddress.h"
#include "fetch/oneperturn.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>

namespace
{
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
    reply->setReadBufferSize(NetworkAccess::receiveBufferSize);
    m_body = std::make_unique<ReplyBody>(reply);
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
    if (m_received.size() >= largestBody || m_body->isBroken()) {
        reply->abort();
    }
}

// One piece after the other: what is packed tells its size by being unpacked.
void FileDownloader::takeReceivedBytes(QNetworkReply *reply)
{
    qint64 taken = 1;
    while (taken > 0 && m_received.size() < largestBody) {
        const qint64 before = m_received.size();
        const qint64 step = qMax(pieceSize, reply->bytesAvailable());
        m_received.resize(static_cast<int>(qMin(largestBody, before + step)));
        taken = m_body->read(m_received.data() + before, m_received.size() - before);
        m_received.resize(static_cast<int>(before + taken));
    }
}

void FileDownloader::fileDownloaded(QNetworkReply *pReply)
{
    // kept: neither status nor error is looked at. Users of this class cope with an empty or
    // foreign body, so every outcome ends in the same signal.
    takeReceivedBytes(pReply);
    m_body.reset();
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
