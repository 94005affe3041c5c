#include "downloads.h"
#include "install/downloadmanager.h"
#include "support/archives.h"
#include "support/consolecapture.h"
#include "support/holdings.h"
#include "support/httpserver.h"
#include "support/packedbytes.h"
#include "support/relation.h"
#include "support/scratchfolder.h"

#include <QFileInfo>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

// Archives that a host packs once more for the way: what arrives is what it packed, and it piles up
// neither in memory nor in one turn of the event loop.
class TestPackedDownload : public QObject
{
    Q_OBJECT

private slots:
    void archiveIsUnpackedOnTheWay_data();
    void archiveIsUnpackedOnTheWay();
    void archiveThatCannotBeUnpackedFails_data();
    void archiveThatCannotBeUnpackedFails();
    void hugeArchiveTakesNoMemory();
    void hugeArchiveLeavesTurnsToTheWindow();
};

void TestPackedDownload::archiveIsUnpackedOnTheWay_data()
{
    QTest::addColumn<QByteArray>("archive");
    QTest::addColumn<int>("form");
    QTest::addColumn<QByteArray>("encoding");
    const QByteArray zeros(3 * 1000 * 1000, '\0');
    QTest::newRow("gzip") << randomBytes(300 * 1000) << int(PackedBytes::Gzip)
                          << QByteArray("gzip");
    QTest::newRow("gzip, small on the way")
        << zeros << int(PackedBytes::Gzip) << QByteArray("gzip");
    QTest::newRow("deflate") << randomBytes(300 * 1000) << int(PackedBytes::Deflate)
                             << QByteArray("deflate");
    QTest::newRow("bare deflate") << zeros << int(PackedBytes::Bare) << QByteArray("deflate");
}

void TestPackedDownload::archiveIsUnpackedOnTheWay()
{
    QFETCH(QByteArray, archive);
    QFETCH(int, form);
    QFETCH(QByteArray, encoding);
    const ScratchFolder folder;
    Archives::provideExtractorScript(recordingExtractor);
    HttpServer server;
    server.serveEncoded(text("client.zip"),
                        PackedBytes::pack(archive, static_cast<PackedBytes::Form>(form)), encoding);
    DownloadManager manager(nullptr, text("1.0.0"), text("Alpha/Official"));
    QSignalSpy progress(&manager, &DownloadManager::updateProgress);
    manager.append(QUrl(server.url(text("client.zip"))));
    QVERIFY(runToTheEnd(manager));
    QVERIFY(ScratchFolder::read(text("archive.seen")) == archive);
    // Of the way, whose length the server states.
    QCOMPARE(progress.constLast().at(1).toInt(), 100);
    QCOMPARE(manager.downloadedCount, 1);
}

void TestPackedDownload::archiveThatCannotBeUnpackedFails_data()
{
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<QByteArray>("error");
    const QByteArray whole = PackedBytes::pack(randomBytes(300 * 1000), PackedBytes::Gzip);
    const QByteArray broken("What the server packed for the way cannot be unpacked");
    QByteArray spoiled = whole;
    spoiled[whole.size() - 5] = static_cast<char>(spoiled.at(whole.size() - 5) + 1);
    QTest::newRow("a page") << QByteArray("<html>") << broken;
    QTest::newRow("a wrong sum") << spoiled << broken;
    // More than the network lets wait for anybody.
    QTest::newRow("megabytes of something else behind it")
        << whole + QByteArray(4 * 1024 * 1024, 'x') << broken;
    QTest::newRow("cut") << whole.left(whole.size() - 100)
                         << QByteArray("The server closed before the end");
}

void TestPackedDownload::archiveThatCannotBeUnpackedFails()
{
    QFETCH(QByteArray, sent);
    QFETCH(QByteArray, error);
    const ScratchFolder folder;
    Archives::provideExtractorScript(recordingExtractor);
    HttpServer server;
    server.serveEncoded(text("client.zip"), sent, "gzip");
    DownloadManager manager(nullptr, text("1.0.0"), text("Alpha/Official"));
    QSignalSpy ended(&manager, &DownloadManager::updateFinished);
    QByteArray err;
    {
        ConsoleCapture console;
        manager.append(QUrl(server.url(text("client.zip"))));
        QVERIFY(runToTheEnd(manager));
        err = console.err();
    }
    QCOMPARE(err, "Failed: " + error + '\n');
    QCOMPARE(ended.count(), 1);
    QCOMPARE(manager.downloadedCount, 0);
    QVERIFY(!QFileInfo::exists(text("arguments.txt")));
}

// A quarter of a megabyte for 258 MB of archive.
void TestPackedDownload::hugeArchiveTakesNoMemory()
{
    constexpr int packed = 256 * 1024;
    constexpr qint64 allowed = 16LL * 1024 * 1024;
    if (Holdings::memory() < 0) {
        QSKIP("memory cannot be measured here");
    }
    const ScratchFolder folder;
    HttpServer server;
    server.serveEncoded(text("client.zip"), PackedBytes::zeros(packed), "gzip");
    DownloadManager manager(nullptr, text("1.0.0"), text("Alpha/Official"));
    Holdings::forgetPeakOfMemory();
    const qint64 before = Holdings::memory();
    manager.append(QUrl(server.url(text("client.zip"))));
    QVERIFY(runToTheEnd(manager));
    VERIFY_RELATION(QFileInfo(text("client.zip")).size(), >, 1000LL * packed);
    VERIFY_RELATION(Holdings::peakOfMemory() - before, <, allowed);
}

// All of it has come when the first byte is unpacked, and the window still has its turns.
void TestPackedDownload::hugeArchiveLeavesTurnsToTheWindow()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serveHeld(text("client.zip"), PackedBytes::zeros(64 * 1024));
    server.setEncoding(text("client.zip"), "gzip");
    DownloadManager manager(nullptr, text("1.0.0"), text("Alpha/Official"));
    manager.append(QUrl(server.url(text("client.zip"))));
    QVERIFY(startWithoutTaking(manager) != nullptr);
    int turns = 0;
    QTimer window;
    connect(&window, &QTimer::timeout, this, [&turns] { ++turns; });
    connect(manager.currentDownload, &QNetworkReply::finished, this,
            [&window] { window.start(0); });
    server.release(text("client.zip"));
    QVERIFY(runToTheEnd(manager));
    VERIFY_RELATION(QFileInfo(text("client.zip")).size(), >, 1000LL * 64 * 1024);
    VERIFY_RELATION(turns, >=, 3);
}

QTEST_GUILESS_MAIN(TestPackedDownload)
#include "tst_packeddownload.moc"
