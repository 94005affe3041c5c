#pragma once

#include "fetch/networkaccess.h"
#include "fetch/replybody.h"

#include <QByteArray>
#include <QObject>
#include <QUrl>

#include <memory>

class QNetworkReply;

// Fetches one small resource (document or picture) into memory. One object serves one fetch; it
// belongs to its parent and keeps the body until then.
class FileDownloader : public QObject
{
    Q_OBJECT

public:
    // In bytes, unpacked: more than any honest document or picture. An answer that goes on behind
    // it is given up.
    static constexpr qint64 largestBody = 32LL * 1024 * 1024;

    // Starts the GET at once. The reply can only finish in a later turn of the event loop, so a
    // connection made right after construction never misses the signal.
    explicit FileDownloader(QUrl imageUrl, QObject *parent = nullptr);
    ~FileDownloader() override;

    // The body received, in bytes, no more than the largest; empty before downloaded() and often
    // after a failure.
    QByteArray downloadedData() const;

signals:
    // Emitted once, whatever the outcome: success, HTTP error, redirect, no network, an answer
    // without end, an address that may not be fetched. Who answers it may delete this object.
    void downloaded();

private slots:
    void fileDownloaded(QNetworkReply *pReply);

private:
    void readyRead(QNetworkReply *reply);
    void takeReceivedBytes(QNetworkReply *reply);

    NetworkAccess m_WebCtrl;
    std::unique_ptr<ReplyBody> m_body; // of the reply, while there is one
    QByteArray m_DownloadedData;
    QByteArray m_received; // of the body so far
};
