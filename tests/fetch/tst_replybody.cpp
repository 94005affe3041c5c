#include "fetch/networkaccess.h"
#include "fetch/replybody.h"
#include "support/httpserver.h"
#include "support/packedbytes.h"
#include "support/texts.h"

#include <QNetworkReply>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace PackedBytes;
using Texts::text;

// Bodies as hosts pack them, and as they should not.
class TestReplyBody : public QObject
{
    Q_OBJECT

private slots:
    void bodyIsUnpacked_data();
    void bodyIsUnpacked();
    void brokenBodyGivesWhatCameBefore_data();
    void brokenBodyGivesWhatCameBefore();
    void bodyInBytesIsUnpacked();
    void givenUpBodyGivesNothing();
};

namespace
{
// A text that packs well, and is longer than what is unpacked at a time.
QByteArray story()
{
    QByteArray bytes;
    for (int number = 0; number < 20000; ++number) {
        bytes += QByteArray::number(number * 7919) + ' ';
    }
    return bytes;
}

struct Arrived {
    QByteArray bytes;
    bool broken = false;
    bool cutShort = false;
};

// Reads as much as there is, in pieces of an odd size, when all has arrived.
Arrived readWhole(HttpServer &server, const QString &path)
{
    NetworkAccess network;
    const std::unique_ptr<QNetworkReply> reply(
        network.get(QNetworkRequest(QUrl(server.url(path)))));
    QSignalSpy finished(reply.get(), &QNetworkReply::finished);
    if (!finished.wait(20000)) {
        return {};
    }
    ReplyBody body(reply.get());
    Arrived arrived;
    QByteArray piece(1021, '\0');
    for (qint64 count = 1; count > 0;) {
        count = body.read(piece.data(), piece.size());
        arrived.bytes += piece.left(static_cast<int>(count));
    }
    arrived.broken = body.isBroken();
    arrived.cutShort = body.isCutShort();
    return arrived;
}
} // namespace

void TestReplyBody::bodyIsUnpacked_data()
{
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<QByteArray>("encoding");
    QTest::addColumn<QByteArray>("expected");
    const QByteArray told = story();
    const QByteArray gzipped = pack(told, Gzip);
    const QByteArray deflated = pack(told, Deflate);
    QTest::newRow("as it is") << told << QByteArray() << told;
    QTest::newRow("gzip") << gzipped << QByteArray("gzip") << told;
    QTest::newRow("in capitals") << gzipped << QByteArray("GZIP") << told;
    QTest::newRow("deflate") << deflated << QByteArray("deflate") << told;
    QTest::newRow("bare deflate") << pack(told, Bare) << QByteArray("deflate") << told;
    QTest::newRow("the other one") << deflated << QByteArray("gzip") << told;
    QTest::newRow("something behind it") << deflated + "and more" << QByteArray("deflate") << told;
    QTest::newRow("so much behind it that a piece does not hold it")
        << deflated + QByteArray(300 * 1000, 'x') << QByteArray("deflate") << told;
    QTest::newRow("a second one behind it") << gzipped + gzipped << QByteArray("gzip") << told;
    QTest::newRow("nothing") << pack({}, Gzip) << QByteArray("gzip") << QByteArray();
    QTest::newRow("empty") << QByteArray() << QByteArray("gzip") << QByteArray();
    QTest::newRow("a way not asked for") << told << QByteArray("br") << told;
    QTest::newRow("twice") << gzipped << QByteArray("gzip, gzip") << gzipped;
}

void TestReplyBody::bodyIsUnpacked()
{
    QFETCH(QByteArray, sent);
    QFETCH(QByteArray, encoding);
    QFETCH(QByteArray, expected);
    HttpServer server;
    server.serveEncoded(text("body"), sent, encoding);
    const Arrived arrived = readWhole(server, text("body"));
    QCOMPARE(arrived.bytes, expected);
    QVERIFY(!arrived.broken);
    QVERIFY(!arrived.cutShort);
}

void TestReplyBody::brokenBodyGivesWhatCameBefore_data()
{
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<int>("atLeast");
    QTest::addColumn<bool>("broken");
    const QByteArray whole = pack(story(), Gzip);
    QByteArray spoiled = whole;
    spoiled.replace(whole.size() / 2, 64, QByteArray(64, '\xff'));
    QByteArray wrongSum = whole;
    wrongSum[whole.size() - 5] = static_cast<char>(wrongSum.at(whole.size() - 5) + 1);
    QTest::newRow("not packed at all") << QByteArray("<document>") << 0 << true;
    QTest::newRow("spoiled in the middle") << spoiled << 1000 << true;
    // So short that all of it is seen at once.
    QByteArray shortAndSpoiled = pack(story().left(5000), Gzip);
    shortAndSpoiled.replace(shortAndSpoiled.size() / 2, 64, QByteArray(64, '\xff'));
    QTest::newRow("short and spoiled") << shortAndSpoiled << 1000 << true;
    QTest::newRow("wrong sum") << wrongSum << static_cast<int>(story().size()) << true;
    QTest::newRow("cut") << whole.left(whole.size() / 2) << 1000 << false;
    QTest::newRow("cut before the sum")
        << whole.left(whole.size() - 8) << static_cast<int>(story().size()) << false;
    QTest::newRow("one byte") << whole.left(1) << 0 << false;
}

void TestReplyBody::brokenBodyGivesWhatCameBefore()
{
    QFETCH(QByteArray, sent);
    QFETCH(int, atLeast);
    QFETCH(bool, broken);
    HttpServer server;
    server.serveEncoded(text("body"), sent, "gzip");
    const Arrived arrived = readWhole(server, text("body"));
    QVERIFY(arrived.bytes.size() >= atLeast);
    QVERIFY(story().startsWith(arrived.bytes.left(atLeast)));
    QVERIFY(broken || story().startsWith(arrived.bytes));
    QCOMPARE(arrived.broken, broken);
    QVERIFY(arrived.cutShort);
}

// A slow host: what has come is unpacked when it has come.
void TestReplyBody::bodyInBytesIsUnpacked()
{
    HttpServer server;
    const QByteArray packed = pack(story(), Bare);
    server.serveHeld(text("body"), packed, 1);
    server.setEncoding(text("body"), "deflate");
    NetworkAccess network;
    const std::unique_ptr<QNetworkReply> reply(
        network.get(QNetworkRequest(QUrl(server.url(text("body"))))));
    ReplyBody body(reply.get());
    QSignalSpy finished(reply.get(), &QNetworkReply::finished);
    QByteArray piece(100, '\0');
    QTRY_VERIFY(reply->bytesAvailable() == 1);
    // By the first byte alone nobody can tell how it is packed.
    QCOMPARE(body.read(piece.data(), piece.size()), 0);
    server.release(text("body"));
    QVERIFY(finished.wait(20000));
    QCOMPARE(body.read(piece.data(), piece.size()), 100);
    QCOMPARE(piece, story().left(100));
}

void TestReplyBody::givenUpBodyGivesNothing()
{
    HttpServer server;
    server.serveHeld(text("body"), story(), 1000);
    NetworkAccess network;
    const std::unique_ptr<QNetworkReply> reply(
        network.get(QNetworkRequest(QUrl(server.url(text("body"))))));
    ReplyBody body(reply.get());
    QTRY_VERIFY(reply->bytesAvailable() > 0);
    reply->abort();
    QByteArray piece(100, '\0');
    QCOMPARE(body.read(piece.data(), piece.size()), 0);
}

QTEST_GUILESS_MAIN(TestReplyBody)
#include "tst_replybody.moc"
