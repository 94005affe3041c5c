#include "fetch/networkaccess.h"
#include "support/httpserver.h"
#include "support/texts.h"

#include <QNetworkReply>
#include <QSignalSpy>
#include <QTest>
#include <QtNetwork/qtnetworkglobal.h>

#include <memory>

using Texts::text;

// What goes over the wire, and what does not, whatever a host asks for.
class TestNetworkAccess : public QObject
{
    Q_OBJECT

private slots:
    void requestIsTheToolkitsOwn();
    void noChallengeIsAnsweredByItself_data();
    void noChallengeIsAnsweredByItself();
    void nameInTheAddressIsForItsOperator();
    void nameInTheAddressBringsNoAccount_data();
    void nameInTheAddressBringsNoAccount();
};

namespace
{
std::unique_ptr<QNetworkReply> get(QNetworkAccessManager &network, const QUrl &url)
{
    std::unique_ptr<QNetworkReply> reply(network.get(QNetworkRequest(url)));
    QSignalSpy finished(reply.get(), &QNetworkReply::finished);
    return finished.wait(20000) ? std::move(reply) : nullptr;
}

QStringList answers(const HttpServer &server, const QString &path)
{
    QStringList found;
    for (const QStringList &request : server.headers(path)) {
        found << request.filter(text("authorization"), Qt::CaseInsensitive);
    }
    return found;
}
} // namespace

// Line for line: a host learns nothing of it, and sends what it always sent.
void TestNetworkAccess::requestIsTheToolkitsOwn()
{
    HttpServer server;
    server.serve(text("news.png"), "body");
    QNetworkAccessManager toolkit;
    NetworkAccess ours;
    QVERIFY(get(toolkit, QUrl(server.url(text("news.png")))) != nullptr);
    QVERIFY(get(ours, QUrl(server.url(text("news.png")))) != nullptr);
    const QList<QStringList> requests = server.headers(text("news.png"));
    QCOMPARE(requests.size(), 2);
    QVERIFY(requests.at(0).size() >= 4);
    QCOMPARE(requests.at(1), requests.at(0));
}

void TestNetworkAccess::noChallengeIsAnsweredByItself_data()
{
    QTest::addColumn<QList<QByteArray>>("challenges");
    QTest::newRow("account of the network") << QList<QByteArray>{"NTLM"};
    QTest::newRow("any account") << QList<QByteArray>{"Negotiate"};
    QTest::newRow("second step") << QList<QByteArray>{"NTLM TlRMTVNTUAACAAAAAAAAAA=="};
    QTest::newRow("the choice") << QList<QByteArray>{"Negotiate", "NTLM", "Basic realm=\"x\""};
    QTest::newRow("a password") << QList<QByteArray>{"Basic realm=\"x\""};
    QTest::newRow("a digest") << QList<QByteArray>{"Digest realm=\"x\", nonce=\"1\""};
}

void TestNetworkAccess::noChallengeIsAnsweredByItself()
{
    QFETCH(QList<QByteArray>, challenges);
    HttpServer server;
    server.serveChallenges(text("news.png"), challenges, "who are you");
    NetworkAccess network;
    const auto reply = get(network, QUrl(server.url(text("news.png"))));
    QVERIFY(reply != nullptr);
    QCOMPARE(answers(server, text("news.png")), QStringList());
    QCOMPARE(server.requests(text("news.png")), 1);
    QCOMPARE(reply->error(), QNetworkReply::AuthenticationRequiredError);
    // The body arrives as that of every error.
    QCOMPARE(reply->readAll(), QByteArray("who are you"));
}

void TestNetworkAccess::nameInTheAddressIsForItsOperator()
{
    HttpServer server;
    server.serveChallenges(text("client.zip"), {"Basic realm=\"testers\""}, "who are you");
    NetworkAccess network;
    QUrl url(server.url(text("client.zip")));
    url.setUserName(text("tester"));
    url.setPassword(text("word"));
    QVERIFY(get(network, url) != nullptr);
    QCOMPARE(answers(server, text("client.zip")).value(0),
             text("Authorization: Basic ") +
                 QString::fromLatin1(QByteArray("tester:word").toBase64()));
}

void TestNetworkAccess::nameInTheAddressBringsNoAccount_data()
{
    QTest::addColumn<QByteArray>("challenge");
    QTest::newRow("account of the network") << QByteArray("NTLM");
    QTest::newRow("any account") << QByteArray("Negotiate");
}

void TestNetworkAccess::nameInTheAddressBringsNoAccount()
{
    QFETCH(QByteArray, challenge);
#if QT_CONFIG(sspi)
    QSKIP("this toolkit was built with the system's single sign-on");
#endif
    HttpServer server;
    server.serveChallenges(text("client.zip"), {challenge}, "who are you");
    NetworkAccess network;
    QUrl url(server.url(text("client.zip")));
    url.setUserName(text("tester"));
    url.setPassword(text("word"));
    const std::unique_ptr<QNetworkReply> reply(network.get(QNetworkRequest(url)));
    // The toolkit goes on saying the first message of the old way as long as it is asked.
    QTRY_VERIFY_WITH_TIMEOUT(reply->isFinished() || server.requests(text("client.zip")) > 1, 20000);
    // It names nobody.
    const QStringList said = answers(server, text("client.zip"));
    for (const QString &answer : said) {
        QVERIFY2(answer.startsWith(text("Authorization: NTLM TlRMTVNTUAABAAAA")),
                 qPrintable(answer));
    }
}

QTEST_GUILESS_MAIN(TestNetworkAccess)
#include "tst_networkaccess.moc"
