#pragma once

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QObject>
#include <QUrl>

class QNetworkReply;

// Fetches one small resource (document or picture) into memory. One object serves one fetch; it
// belongs to its parent and keeps the body until then.
class FileDownloader : public QObject
{
    Q_OBJECT

public:
    // Starts the GET at once. The reply can only finish in a later turn of the event loop, so a
    // connection made right after construction never misses the signal.
    explicit FileDownloader(QUrl imageUrl, QObject *parent = nullptr);
    ~FileDownloader() override;

    // The body received, in bytes; empty before downloaded() and often after a failure.
    QByteArray downloadedData() const;

signals:
    // Emitted once, whatever the outcome: success, HTTP error, redirect, no network.
    void downloaded();

private slots:
    void fileDownloaded(QNetworkReply *pReply);

private:
    QNetworkAccessManager m_WebCtrl;
    QByteArray m_DownloadedData;
};
