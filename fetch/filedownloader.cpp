#include "fetch/filedownloader.h"

#include "fetch/oneperturn.h"

#include <QNetworkReply>
#include <QNetworkRequest>

FileDownloader::FileDownloader(QUrl imageUrl, QObject *parent)
    : QObject(parent)
{
    connect(&m_WebCtrl, &QNetworkAccessManager::finished, this, &FileDownloader::fileDownloaded);
    // Default settings: redirects are not followed, the body of the redirect itself arrives.
    m_WebCtrl.get(QNetworkRequest(imageUrl));
}

FileDownloader::~FileDownloader() = default;

QByteArray FileDownloader::downloadedData() const
{
    return m_DownloadedData;
}

void FileDownloader::fileDownloaded(QNetworkReply *pReply)
{
    // kept: neither status nor error is looked at. Users of this class cope with an empty or
    // foreign body, so every outcome ends in the same signal.
    m_DownloadedData = pReply->readAll();
    pReply->deleteLater();
    emit downloaded();
    // Whoever asked keeps this object as long as the window is open. There is nothing more to
    // fetch, so the connection and the toolkit's thread behind it need not stay that long. Its end
    // is waited for, some milliseconds on a busy machine: not for several in one turn.
    OnePerTurn::take(this, [this] { m_WebCtrl.clearConnectionCache(); });
}
