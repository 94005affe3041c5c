#include "downloads.h"
#include "install/downloadmanager.h"
#include "progressdue.h"
#include "support/archives.h"
#include "support/consolecapture.h"
#include "support/httpserver.h"
#include "support/scratchfolder.h"

#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

// What a download tells the player and the console on its way.
class TestDownloadProgress : public QObject
{
    Q_OBJECT

private slots:
    void progressSignal_data();
    void progressSignal();
    void progressOfTheFirstMillisecond();
    void percentageWhileTheAnswerIsHeld();
    void withoutLengthTheBarMoves();
};

void TestDownloadProgress::progressSignal_data()
{
    QTest::addColumn<qint64>("received");
    QTest::addColumn<qint64>("total");
    QTest::addColumn<int>("percentage");
    QTest::addColumn<QString>("message"); // a regular expression
    QTest::addColumn<QString>("line");
    const QString speed = text("[0-9.]+ (bytes/sec|kB/s|MB/s)");
    QTest::newRow("a known size") << qint64(42) << qint64(100) << 42
                                  << text(" 42% ") + speed + text(" {5}")
                                  << text("\r\\[#{21} {29}\\]  42% ") + speed + text(" {5}");
    QTest::newRow("99 % ends in an arrow")
        << qint64(99) << qint64(100) << 99 << text(" 99% ") + speed + text(" {5}")
        << text("\r\\[#{49}>\\]  99% ") + speed + text(" {5}");
    QTest::newRow("100 % is a full bar")
        << qint64(100) << qint64(100) << 100 << text("100% ") + speed + text(" {5}")
        << text("\r\\[#{50}\\] 100% ") + speed + text(" {5}");
    QTest::newRow("an unknown size sends the moving bar")
        << qint64(5000) << qint64(-1) << 0 << text("\r\\[### {4}\\] {6}") + speed + text(" {6}")
        << text("\r\\[### {4}\\] {6}") + speed + text(" {6}");
}

void TestDownloadProgress::progressSignal()
{
    QFETCH(qint64, received);
    QFETCH(qint64, total);
    QFETCH(int, percentage);
    QFETCH(QString, message);
    QFETCH(QString, line);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy progress(&manager, &DownloadManager::updateProgress);
    manager.downloadTime.start();
    QTRY_VERIFY(manager.downloadTime.elapsed() > 0);
    QByteArray out;
    {
        ConsoleCapture console;
        manager.downloadProgress(received, total);
        out = console.out();
    }
    QCOMPARE(progress.count(), 1);
    const QString sent = progress.at(0).at(0).toString();
    const auto whole = [](const QString &pattern) {
        return QRegularExpression(text("\\A") + pattern + text("\\z"));
    };
    QVERIFY2(whole(message).match(sent).hasMatch(), qPrintable(sent));
    QVERIFY2(whole(line).match(QString::fromUtf8(out)).hasMatch(), out.constData());
    QCOMPARE(progress.at(0).at(1).toInt(), percentage);
}

// As often as it takes until the signal comes before the clock has moved on.
void TestDownloadProgress::progressOfTheFirstMillisecond()
{
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy progress(&manager, &DownloadManager::updateProgress);
    const auto seen = [&] {
        progress.clear();
        ConsoleCapture console;
        manager.downloadTime.start();
        manager.downloadProgress(7, 100);
        return progress.value(0).value(0).toString();
    };
    QTRY_COMPARE(seen(), text("  7% inf MB/s     "));
}

void TestDownloadProgress::percentageWhileTheAnswerIsHeld()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serveHeld(text("client.zip"), QByteArray(1000, 'x'), 420);
    Archives::provideExtractorScript(recordingExtractor);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QSignalSpy progress(&manager, &DownloadManager::updateProgress);
    manager.append(QUrl(server.url(text("client.zip"))));
    QVERIFY(takeTimeUntilProgressIsDue(manager));
    QTRY_VERIFY(!progress.isEmpty());
    QCOMPARE(progress.last().at(1).toInt(), 42);
    QVERIFY(progress.last().at(0).toString().startsWith(text(" 42% ")));
    QVERIFY(!QFile::exists(text("Alpha")));

    server.release(text("client.zip"));
    QVERIFY(runToTheEnd(manager));
    QCOMPARE(progress.last().at(1).toInt(), 100);
    QVERIFY(progress.last().at(0).toString().startsWith(text("100% ")));
}

void TestDownloadProgress::withoutLengthTheBarMoves()
{
    const ScratchFolder folder;
    HttpServer server;
    const QByteArray body = randomBytes(8 * 1024 * 1024);
    server.serveWithoutLength(text("client.zip"), body);
    Archives::provideExtractorScript(recordingExtractor);
    DownloadManager manager(nullptr, text("1.0"), text("Alpha/Official"));
    QStringList messages;
    QList<int> percentages;
    connect(&manager, &DownloadManager::updateProgress, this, [&](const QString &msg, int prog) {
        messages << msg;
        percentages << prog;
    });
    QByteArray out;
    {
        ConsoleCapture console;
        manager.append(QUrl(server.url(text("client.zip"))));
        // The body is larger than what is taken in unread, so it is still on its way then.
        QVERIFY(takeTimeUntilProgressIsDue(manager));
        runToTheEnd(manager);
        out = console.out();
    }
    QVERIFY(messages.size() >= 1);
    const QRegularExpression leftmost(
        text("\\A\r\\[### {4}\\] {6}[0-9.]+ (bytes/sec|kB/s|MB/s) {6}\\z"));
    QVERIFY2(leftmost.match(messages.constFirst()).hasMatch(), qPrintable(messages.constFirst()));
    QCOMPARE(percentages.constFirst(), 0);
    QVERIFY2(out.contains("...\n" + messages.constFirst().toUtf8()), out.constData());
    QCOMPARE(ScratchFolder::read(text("archive.seen")), body);
    QCOMPARE(manager.downloadedCount, 1);
}

QTEST_MAIN(TestDownloadProgress)
#include "tst_downloadprogress.moc"
