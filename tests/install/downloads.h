#pragma once

#include "install/downloadmanager.h"
#include "support/texts.h"

#include <QByteArray>
#include <QNetworkReply>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QString>

// What the tests of the download manager share.

// One redraw of a bar whose size is known.
constexpr char redraw[] = "\\r\\[[#> ]{50}\\] [ 0-9]{3}% [0-9a-z.]+ (bytes/sec|kB/s|MB/s)     ";

// Orders for an extractor that notes how it is called and keeps what the archive was.
constexpr char recordingExtractor[] = "record arguments.txt\nkeep archive.seen";

using Texts::text;

inline QByteArray randomBytes(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator generator(20240229);
    for (char &byte : bytes) {
        byte = static_cast<char>(generator.generate() & 0xFFU);
    }
    return bytes;
}

// Runs the queue until it is empty; false when that takes too long.
inline bool runToTheEnd(DownloadManager &manager)
{
    QSignalSpy finished(&manager, &DownloadManager::finished);
    return finished.wait(30000);
}

// Starts the first queued download, and lets nobody take its bytes as they come. At once: whoever
// waits for the start of it may find that bytes were taken in the same turn.
inline QNetworkReply *startWithoutTaking(DownloadManager &manager)
{
    manager.startNextDownload();
    if (manager.currentDownload != nullptr) {
        QObject::disconnect(manager.currentDownload, &QNetworkReply::readyRead, &manager, nullptr);
    }
    return manager.currentDownload;
}
