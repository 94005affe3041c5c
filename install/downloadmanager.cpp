#include "install/downloadmanager.h"

#include "base/console.h"
#include "base/localaddress.h"
#include "base/pathsafety.h"
#include "base/plainname.h"
#include "fetch/replybody.h"
#include "install/extractor.h"
#include "install/receiveahead.h"
#include "install/removal.h"
#include "install/savefilename.h"
#include "install/speedtext.h"

#include <QDir>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QTimerEvent>

#include <array>
#include <utility>

namespace
{
constexpr std::size_t writeBlockSize = 128 * 1024;
// How long one turn of the event loop goes on taking bytes, in milliseconds; the rest waits in the
// buffer. With a fast server, or a slow disk, the window could neither paint nor answer otherwise.
constexpr qint64 longestTurn = 4;

QString encoded(const QUrl &url)
{
    return QString::fromLatin1(url.toEncoded());
}

// A version without a name is unpacked beside the others.
bool mayBeUnpackedInto(const QString &parentDir, const QString &version)
{
    return (parentDir.isEmpty() || isPlainWay(parentDir, 2)) &&
           (version.isEmpty() || isPlainName(version));
}
} // namespace

DownloadManager::DownloadManager(QObject *parent, QString version, QString parentDir,
                                 QString archivePassword)
    : QObject(parent)
    , clientVersion(std::move(version))
    , password(std::move(archivePassword))
    , dir(std::move(parentDir))
{
}

DownloadManager::~DownloadManager()
{
    // The reply goes down with the network manager and must not report to a half-destroyed object.
    if (currentDownload != nullptr) {
        currentDownload->disconnect(this);
    }
}

void DownloadManager::append(const QUrl &url)
{
    if (downloadQueue.isEmpty()) {
        QTimer::singleShot(0, this, &DownloadManager::startNextDownload);
    }
    downloadQueue.enqueue(url);
    ++totalCount;
}

void DownloadManager::append(const QStringList &urlList)
{
    for (const QString &url : urlList) {
        append(QUrl::fromEncoded(url.toLocal8Bit()));
    }
    if (downloadQueue.isEmpty()) {
        QTimer::singleShot(0, this, &DownloadManager::finished);
    }
}

QString DownloadManager::saveFileName(const QUrl &url)
{
    return freeSaveFileName(url);
}

void DownloadManager::startNextDownload()
{
    // A URL appended while another one is being fetched finds an empty queue and schedules a start
    // of its own. It waits for its turn: two downloads at once would write into one file.
    if (currentDownload != nullptr) {
        return;
    }
    if (downloadQueue.isEmpty()) {
        Console::out(QStringLiteral("%1/%2 files downloaded successfully\n")
                         .arg(downloadedCount)
                         .arg(totalCount));
        // This object stays until the window closes. The connection and the toolkit's thread behind
        // it need not: a player who clicks again gets another manager.
        manager.clearConnectionCache();
        emit finished();
        return;
    }

    const QUrl url = downloadQueue.dequeue();
    filename = saveFileName(url);
    const QString problem = openSaveFile();
    if (!problem.isEmpty()) {
        Console::error(QStringLiteral("Problem opening save file '%1' for download '%2': %3\n")
                           .arg(filename, encoded(url), problem));
        startNextDownload();
        return; // skip this download
    }
    m_bodyError.clear();
    m_transferEnded = false;
    m_awayTime.invalidate();
    if (!mayBeFetched(url)) {
        refuse(url);
        return;
    }

    // A request without attributes of its own: a redirect is not followed, it ends the download
    // with whatever body it carries.
    currentDownload = manager.get(QNetworkRequest(url));
    // Without a limit a fast server and a slow disk would fill the memory with the archive.
    currentDownload->setReadBufferSize(ReceiveAhead::least);
    m_body = std::make_unique<ReplyBody>(currentDownload);
    connect(currentDownload, &QNetworkReply::downloadProgress, this,
            &DownloadManager::downloadProgress);
    connect(currentDownload, &QNetworkReply::finished, this, &DownloadManager::downloadFinished);
    connect(currentDownload, &QNetworkReply::readyRead, this, &DownloadManager::downloadReadyRead);

    Console::out(QStringLiteral("Downloading %1...\n").arg(encoded(url)));
    downloadTime.start();
}

// Returns why the file of the chosen name could not be opened; empty when it is open.
QString DownloadManager::openSaveFile()
{
    QString refusal = whyNotSavedAs(filename);
    if (!refusal.isEmpty()) {
        return refusal;
    }
    // One that leads nowhere is no file that exists, and the archive would be written where it
    // leads.
    if (!isFileOrFree(filename)) {
        return QStringLiteral("The name is that of a link");
    }
    output.setFileName(filename);
    // Unbuffered: a block is on its way to the disk when its write returns, and errors show there.
    return output.open(QIODevice::WriteOnly | QIODevice::Unbuffered) ? QString()
                                                                     : output.errorString();
}

// As if the transfer had failed, before there is one: the toolkit opens a file at once, and may
// wait for it for ever.
void DownloadManager::refuse(const QUrl &url)
{
    output.close();
    Console::out(QStringLiteral("Downloading %1...\n").arg(encoded(url)));
    Console::error(QStringLiteral("Failed: Error opening %1: not a file of this computer\n")
                       .arg(encoded(url)));
    emit updateFinished();
    startNextDownload();
}

void DownloadManager::downloadProgress(qint64 bytesReceived, qint64 bytesTotal)
{
    progressBar.setStatus(bytesReceived, bytesTotal);
    progressBar.setMessage(
        speedText(bytesReceived, downloadTime.isValid() ? downloadTime.elapsed() : 0));
    progressBar.update();
    emit updateProgress(progressBar.getMessage(), progressBar.getProgress());
}

void DownloadManager::downloadReadyRead()
{
    takeTurn();
}

void DownloadManager::takeTurn()
{
    if (!m_turnEnd.isActive()) {
        m_turnEnd.start(0, this);
        m_turnTime.start();
        makeRoomForLongTurns();
    }
    const bool isAllTaken = takeReceivedBytes();
    m_awayTime.start();
    if (m_transferEnded) {
        if (isAllTaken) {
            end();
        }
    } else if (!m_bodyError.isEmpty()) {
        // A disk that takes no more ends the transfer; finished() follows at once.
        currentDownload->abort();
    }
}

// Once in a turn, before its first bytes are taken.
void DownloadManager::makeRoomForLongTurns()
{
    if (m_transferEnded || !m_awayTime.isValid()) {
        return;
    }
    const qint64 allowed = currentDownload->readBufferSize();
    const qint64 next =
        ReceiveAhead::next(allowed, currentDownload->bytesAvailable(), m_awayTime.elapsed());
    if (next != allowed) {
        currentDownload->setReadBufferSize(next);
    }
}

void DownloadManager::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_turnEnd.timerId()) {
        QObject::timerEvent(event);
        return;
    }
    m_turnEnd.stop();
    if (currentDownload != nullptr && m_moreToTake) {
        takeTurn();
    }
}

// Moves what has arrived into the file, until the turn is over. Returns whether that was all. A
// write that comes up short is an error of the download: unpacking a cut archive would leave a
// broken client that looks finished.
bool DownloadManager::takeReceivedBytes()
{
    // One for all downloads, which share the GUI thread: clearing a new one each time took 7 % of a
    // download's processor time.
    static std::array<char, writeBlockSize> block;
    m_moreToTake = false;
    while (m_bodyError.isEmpty()) {
        if (m_turnTime.hasExpired(longestTurn)) {
            // The buffer fills, and then the server waits.
            m_moreToTake = true;
            return false;
        }
        const qint64 count = m_body->read(block.data(), static_cast<qint64>(block.size()));
        if (m_body->isBroken()) {
            m_bodyError = QStringLiteral("What the server packed for the way cannot be unpacked");
        }
        if (count <= 0) {
            break;
        }
        writeBlock(block.data(), count);
    }
    return true;
}

void DownloadManager::writeBlock(const char *data, qint64 size)
{
    // A disk that fills up takes a part first; only the attempt after that names the reason.
    while (size > 0) {
        const qint64 written = output.write(data, size);
        if (written <= 0) {
            m_bodyError = output.errorString();
            return;
        }
        data += written;
        size -= written;
    }
}

void DownloadManager::downloadFinished()
{
    // A transfer given up while its bytes arrive may still report progress; nobody may hear of it
    // after the end.
    currentDownload->disconnect(this);
    m_transferEnded = true;
    // The limited buffer may still hold the end of the archive, and that may unpack to much.
    takeTurn();
}

void DownloadManager::end()
{
    m_turnEnd.stop();
    progressBar.clear();
    output.close();

    const QString error = whyFailed();
    m_body.reset();
    if (!error.isEmpty()) {
        Console::error(QStringLiteral("Failed: %1\n").arg(Console::harmless(error)));
    } else {
        Console::out(QStringLiteral("Succeeded.\n\n"));
        ++downloadedCount;
        install();
    }
    emit updateFinished();

    currentDownload->deleteLater();
    currentDownload = nullptr;
    startNextDownload();
}

// Empty when the archive is whole on the disk.
QString DownloadManager::whyFailed() const
{
    if (!m_bodyError.isEmpty()) {
        return m_bodyError;
    }
    if (currentDownload->error() != QNetworkReply::NoError) {
        return currentDownload->errorString();
    }
    return m_body->isCutShort() ? QStringLiteral("The server closed before the end") : QString();
}

// Unpacks the archive into the version directory and removes it. Blocks until the extractor ends.
void DownloadManager::install()
{
    const QString folder = (dir.isEmpty() ? QString() : dir + QLatin1Char('/')) + clientVersion;
    // A document may name a server or a version that leads elsewhere, out of the game's folder or
    // beside the launcher, where it looks for plug-ins; or no server at all. Nothing is unpacked
    // there, and the download counts as failed.
    if (!mayBeUnpackedInto(dir, clientVersion) || !wouldLieInsideWorkingDirectory(folder)) {
        (void)Removal::removeFile(filename);
        return;
    }
    // Server and client may be links of the player's, to another drive. Through one in the
    // version's place the archive would be unpacked over whatever lies there.
    if (!clientVersion.isEmpty() && !Removal::removeVersionLink(dir, clientVersion)) {
        (void)Removal::removeFile(filename);
        return;
    }
    const QDir workingDirectory = QDir::current();
    // The extractor's success is not known; whether a client is there is judged by its directory.
    (void)workingDirectory.mkpath(folder);

    const QString zipFile = QDir::toNativeSeparators(workingDirectory.absoluteFilePath(filename));
    const QString folderPath = QDir::toNativeSeparators(workingDirectory.absoluteFilePath(folder));
    Extractor::unpack(zipFile, folderPath, this, password);
    (void)Removal::removeFile(filename);
}
