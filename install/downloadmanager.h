#pragma once

#include "fetch/networkaccess.h"
#include "install/textprogressbar.h"

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QObject>
#include <QQueue>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <memory>

class QNetworkReply;
class ReplyBody;

// Fetches client archives one after another into the working directory and unpacks each into its
// version directory. The window makes one for every click and keeps it until it closes.
class DownloadManager : public QObject
{
    Q_OBJECT

public:
    // parentDir: "<server>/<client>", relative; the version directory is made under it. An empty
    // password means none.
    DownloadManager(QObject *parent, QString version, QString parentDir,
                    QString archivePassword = {});
    // Gives up a download under way; what has arrived stays in the working directory.
    ~DownloadManager() override;

    // Queues one URL; the download starts in a later turn of the event loop.
    void append(const QUrl &url);
    // Queues each string as an encoded URL; an empty list only brings finished(), later.
    void append(const QStringList &urlList);
    // The name of the file in the working directory that the URL would be saved under now.
    QString saveFileName(const QUrl &url);

signals:
    // The queue has run empty.
    void finished();
    // One download has ended, well or not; not emitted for a URL whose file could not be opened.
    void updateFinished();
    // Text for the player, and the percentage (0 while the size is unknown).
    void updateProgress(QString msg, int prog);

protected:
    void timerEvent(QTimerEvent *event) override;

private slots:
    void startNextDownload();
    void downloadProgress(qint64 bytesReceived, qint64 bytesTotal);
    void downloadFinished();
    void downloadReadyRead();

private:
    QString openSaveFile();
    void refuse(const QUrl &url);
    void takeTurn();
    void makeRoomForLongTurns();
    bool takeReceivedBytes();
    void end();
    QString whyFailed() const;
    void writeBlock(const char *data, qint64 size);
    void install();

    NetworkAccess manager;
    QQueue<QUrl> downloadQueue;
    QNetworkReply *currentDownload = nullptr; // the manager's; deleted later when it has ended
    std::unique_ptr<ReplyBody> m_body;        // of the current download
    QFile output;
    QElapsedTimer downloadTime;
    QElapsedTimer m_turnTime; // since the first bytes of this turn of the event loop
    QBasicTimer m_turnEnd;    // runs from then to the next turn
    QElapsedTimer m_awayTime; // since a turn last took bytes; invalid before the first one
    TextProgressBar progressBar;
    QString filename;
    QString clientVersion;
    QString password;
    QString dir;
    int downloadedCount = 0;   // ended without error
    int totalCount = 0;        // ever appended
    bool m_moreToTake = false; // than one turn could
    bool m_transferEnded = false;
    QString m_bodyError; // why the archive is not whole on the disk; empty while it can be
};
