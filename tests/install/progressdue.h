#pragma once

#include "install/downloadmanager.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QNetworkReply>

// The toolkit reports progress ten times a second at most, and a short answer on the loopback is
// over before the first report. This makes the manager's turn with the first bytes of its answer
// take so long that a report is due, as on a slow disk. Called before any byte has arrived; waits
// for the request to be sent. False when there is none.
inline bool takeTimeUntilProgressIsDue(DownloadManager &manager)
{
    const QDeadlineTimer deadline(5000);
    while (manager.currentDownload == nullptr && !deadline.hasExpired()) {
        QCoreApplication::processEvents();
    }
    if (manager.currentDownload == nullptr || manager.output.size() > 0) {
        return false;
    }
    QObject::connect(manager.currentDownload, &QNetworkReply::readyRead, qApp, [&manager] {
        while (manager.downloadTime.elapsed() < 300) {
        }
    });
    return true;
}
