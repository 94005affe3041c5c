#include "downloads.h"
#include "install/downloadmanager.h"
#include "install/receiveahead.h"
#include "support/archives.h"
#include "support/holdings.h"
#include "support/httpserver.h"
#include "support/relation.h"
#include "support/scratchfolder.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFile>
#include <QNetworkReply>
#include <QTest>
#include <QThread>

namespace
{
// Keeps the window from its turns for so many milliseconds.
void spin(qint64 milliseconds)
{
    QElapsedTimer time;
    time.start();
    while (!time.hasExpired(milliseconds)) {
        QThread::yieldCurrentThread();
    }
}
} // namespace

// In which turns of the event loop an archive reaches the disk, and how much of it waits meanwhile.
class TestDownloadTurns : public QObject
{
    Q_OBJECT

private slots:
    void aTurnTakesBytesForALimitedTime();
    void moreMayWaitForAWindowWithLongTurns();
    void bytesThatWaitForTheirTurnAtTheEnd();
    void memoryStaysBounded();
};

// A fast server or a slow disk must not keep the window from painting and answering.
void TestDownloadTurns::aTurnTakesBytesForALimitedTime()
{
    constexpr int held = 200 * 1000;
    const ScratchFolder folder;
    const QByteArray archive = randomBytes(held + 1);
    HttpServer server;
    server.serveHeld(text("client.zip"), archive, held);
    DownloadManager manager(nullptr, text("1.0.0"), text("Alpha/Official"));
    manager.append(QUrl(server.url(text("client.zip"))));
    QVERIFY(startWithoutTaking(manager) != nullptr);
    QTRY_COMPARE_WITH_TIMEOUT(manager.currentDownload->bytesAvailable(), qint64(held), 10000);

    // This turn has lasted long enough.
    manager.m_turnTime.start();
    manager.m_turnEnd.start(0, &manager);
    spin(50);
    manager.downloadReadyRead();
    QCOMPARE(manager.output.size(), qint64(0));
    // The next one goes on by itself.
    QTRY_COMPARE_WITH_TIMEOUT(manager.output.size(), qint64(held), 10000);
    // And nothing turns while nothing comes.
    QTRY_VERIFY_WITH_TIMEOUT(!manager.m_turnEnd.isActive(), 10000);

    server.release(text("client.zip"));
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(manager.downloadedCount, 1);
}

// A fast line would stand still while the window does something else.
void TestDownloadTurns::moreMayWaitForAWindowWithLongTurns()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serveLarge(text("client.zip"), 200 * ReceiveAhead::most);
    DownloadManager manager(nullptr, text("1.0.0"), text("Alpha/Official"));
    manager.append(QUrl(server.url(text("client.zip"))));
    // Of an archive before.
    manager.m_awayTime.start();
    QNetworkReply *reply = startWithoutTaking(manager);
    QVERIFY(reply != nullptr);
    // The network goes on when all that waits has been taken; on a busy machine the turn is over
    // before that.
    const auto takeTheRest = [&manager, reply] {
        manager.m_turnEnd.stop();
        (void)reply->readAll();
    };

    // How long the window was away from the first bytes says nothing.
    TRY_VERIFY_RELATION(reply->bytesAvailable(), >=, ReceiveAhead::least - ReceiveAhead::piece,
                        10000);
    manager.downloadReadyRead();
    QCOMPARE(reply->readBufferSize(), ReceiveAhead::least);
    takeTheRest();
    TRY_VERIFY_RELATION(reply->bytesAvailable(), >=, ReceiveAhead::least - ReceiveAhead::piece,
                        10000);

    spin(50);
    manager.downloadReadyRead();
    QCOMPARE(reply->readBufferSize(), ReceiveAhead::most);
    // That is how many arrive before the window comes again, and no more.
    takeTheRest();
    TRY_VERIFY_RELATION(reply->bytesAvailable(), >=, ReceiveAhead::most - ReceiveAhead::piece,
                        10000);
    VERIFY_RELATION(reply->bytesAvailable(), <=, ReceiveAhead::most + ReceiveAhead::piece);

    // For a window that comes at once again it is fewer; on a busy machine it takes several tries.
    for (int tries = 0; tries < 20 && reply->readBufferSize() == ReceiveAhead::most; ++tries) {
        takeTheRest();
        TRY_VERIFY_RELATION(reply->bytesAvailable(), >=, ReceiveAhead::most - ReceiveAhead::piece,
                            10000);
        manager.m_awayTime.start();
        manager.downloadReadyRead();
    }
    VERIFY_RELATION(reply->readBufferSize(), <, ReceiveAhead::most);
}

void TestDownloadTurns::bytesThatWaitForTheirTurnAtTheEnd()
{
    const ScratchFolder folder;
    const QByteArray archive = randomBytes(300 * 1000);
    Archives::provideExtractorScript(recordingExtractor);
    HttpServer server;
    server.serve(text("client.zip"), archive);
    DownloadManager manager(nullptr, text("1.0.0"), text("Alpha/Official"));
    manager.append(QUrl(server.url(text("client.zip"))));
    // Everything has come when the first bytes would be taken.
    QVERIFY(startWithoutTaking(manager) != nullptr);
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(ScratchFolder::read(text("archive.seen")), archive);
}

void TestDownloadTurns::memoryStaysBounded()
{
#ifdef Q_OS_LINUX
#if defined(__SANITIZE_ADDRESS__)
    QSKIP("the sanitizer keeps freed memory for a while, so the peak says nothing");
#endif
    constexpr qint64 size = 300LL * 1000 * 1000;
    constexpr qint64 allowed = 64LL * 1024 * 1024;
    const ScratchFolder folder;
    HttpServer server;
    server.serveLarge(text("client.zip"), size);
    Archives::provideExtractorScript("keep kept.zip");
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    Holdings::forgetPeakOfMemory();
    const qint64 before = Holdings::memory();
    QVERIFY(before > 0);

    // A slow disk: the launcher comes to nothing for a while, and all the time the server sends.
    // What it sends must wait in the network, not in the launcher's memory.
    bool busy = false;
    connect(&manager, &DownloadManager::updateProgress, this, [&] {
        if (busy) {
            return;
        }
        busy = true;
        QElapsedTimer waited;
        waited.start();
        while (!waited.hasExpired(1500) && Holdings::memory() - before < allowed) {
        }
    });
    manager.append(QUrl(server.url(text("client.zip"))));
    QSignalSpy finished(&manager, &DownloadManager::finished);
    QVERIFY(finished.wait(90000));
    QVERIFY(busy);
    const qint64 grown = Holdings::peakOfMemory() - before;
    QVERIFY2(grown < allowed, qPrintable(text("%1 bytes").arg(grown)));

    QFile kept(text("kept.zip"));
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.size(), size);
    QCryptographicHash keptSum(QCryptographicHash::Sha1);
    QVERIFY(keptSum.addData(&kept));
    QCryptographicHash sum(QCryptographicHash::Sha1);
    const QByteArray block(1000 * 1000, 'e');
    for (qint64 sent = 0; sent < size; sent += block.size()) {
        sum.addData(block);
    }
    QCOMPARE(keptSum.result(), sum.result());
#else
    QSKIP("measured on Linux, where the peak can be forgotten first");
#endif
}

QTEST_GUILESS_MAIN(TestDownloadTurns)
#include "tst_downloadturns.moc"
