#include "stage.h"

#include <QCryptographicHash>
#include <QDir>
#include <QTextCodec>

namespace
{
const QString code = QStringLiteral("our-code");

QString sumOfBytes(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex());
}

Stage::Client closedBy(const QString &sum)
{
    Stage::Client client;
    client.auth = sum;
    return client;
}

// The launcher's restart after somebody has typed a code: written by one window, read by the next.
QString codeAfterRestart(const QString &typed)
{
    testform first;
    first.settings.auth = typed;
    first.writeSettings();
    const testform second;
    return second.settings.auth;
}
} // namespace

// Builds that are meant for a few, in the real window: shown to everybody, or to nobody.
class TestClosedBuilds : public QObject
{
    Q_OBJECT

private slots:
    void closedAsMeant();
    void openToAll_data();
    void openToAll();
    void authOfAContainer_data();
    void authOfAContainer();
    void attributeOfOtherLetters();
    void shownToNobody_data();
    void shownToNobody();
    void shownToWhoeverGuesses();
    void closedArchiveThatIsOpen();
    void archiveOfTwoCodes();
    void codeOfTheGuide();
    void barInTheCode();
    void codeBeyondAscii();
};

// The steps of the others without a fault: nobody sees the entry but who has the code.
void TestClosedBuilds::closedAsMeant()
{
    Stage stage;
    const QStringList elements{stage.element(closedBy(Documents::sumOf(code)))};
    QVERIFY(stage.load(elements));
    QCOMPARE(stage.ids(), QStringList());
    QVERIFY(stage.window->clientInfos.isEmpty());
    QVERIFY(stage.load(elements, code));
    QCOMPARE(stage.ids(), QStringList());
    QVERIFY(stage.window->clientInfos.contains(QStringLiteral("S")));
    QCOMPARE(codeAfterRestart(code), code);
}

void TestClosedBuilds::openToAll_data()
{
    QTest::addColumn<QString>("attribute");
    for (const char *name :
         {"Auth", "AUTH", "auht", "autth", "authcode", "auth-code", "password", "\xD0\xB0uth"}) {
        QTest::newRow(name) << QString::fromUtf8(name);
    }
    QTest::newRow("in a namespace") << QStringLiteral("xmlns:a='urn:a' a:auth");
}

void TestClosedBuilds::openToAll()
{
    QFETCH(QString, attribute);
    Stage stage;
    QString element = stage.element(closedBy(Documents::sumOf(code)));
    element.replace(QStringLiteral("auth="), attribute + QLatin1Char('='));
    QVERIFY(stage.load(QStringList{element}));
    QVERIFY(stage.warnedOf("auth-misspelled"));
    // The player has no code at all.
    QVERIFY(stage.window->settings.auth.isEmpty());
    QCOMPARE(stage.download(), QStringLiteral("Download finished: version 1.0"));
    QVERIFY(Stage::hasGame());
}

void TestClosedBuilds::authOfAContainer_data()
{
    QTest::addColumn<QString>("begin");
    QTest::addColumn<QString>("end");
    const QString attribute = QStringLiteral(" auth='%1'").arg(Documents::sumOf(code));
    QTest::newRow("around it") << QStringLiteral("<beta%1>").arg(attribute)
                               << QStringLiteral("</beta>");
    QTest::newRow("before it") << QStringLiteral("<auth>%1</auth>").arg(Documents::sumOf(code))
                               << QString();
}

void TestClosedBuilds::authOfAContainer()
{
    QFETCH(QString, begin);
    QFETCH(QString, end);
    Stage stage;
    QVERIFY(stage.load({begin, stage.ofServer(QStringLiteral("S")), end}));
    QVERIFY(stage.warnedOf("auth-elsewhere"));
    QCOMPARE(stage.window->clientInfos.keys(), QStringList{QStringLiteral("S")});
}

void TestClosedBuilds::attributeOfOtherLetters()
{
    Stage stage;
    QVERIFY(stage.load(
        QStringList{stage.ofServer(QStringLiteral("S"))
                        .replace(QStringLiteral("server="), QStringLiteral("Server="))}));
    QVERIFY(stage.warnedOf("attribute-misspelled"));
    QCOMPARE(stage.window->clientInfos.keys(), QStringList{QString()});
    QCOMPARE(stage.download(), QStringLiteral("Download failed"));
}

void TestClosedBuilds::shownToNobody_data()
{
    QTest::addColumn<QByteArray>("summed");
    QTest::addColumn<QByteArray>("id");
    const QByteArray other = "auth-of-other-text";
    QTest::newRow("a line end behind the code") << QByteArray("our-code\n") << other;
    QTest::newRow("a blank behind the code") << QByteArray("our-code ") << other;
    QTest::newRow("quotes around the code") << QByteArray("\"our-code\"") << other;
    QTest::newRow("another encoding") << QByteArray("o\0u\0r\0-\0c\0o\0d\0e\0", 16) << other;
    QTest::newRow("a line end alone") << QByteArray("\n") << QByteArray("auth-of-blank");
}

void TestClosedBuilds::shownToNobody()
{
    QFETCH(QByteArray, summed);
    QFETCH(QByteArray, id);
    Stage stage;
    QVERIFY(stage.load({stage.element(closedBy(sumOfBytes(summed)))}, code));
    QVERIFY(stage.warnedOf(id.constData()));
    QCOMPARE(stage.window->settings.auth, code);
    QVERIFY(stage.window->clientInfos.isEmpty());
}

void TestClosedBuilds::shownToWhoeverGuesses()
{
    Stage stage;
    Stage::Client client = closedBy(Documents::sumOf(QStringLiteral("ashenmoor")));
    client.server = QStringLiteral("Ashenmoor");
    QVERIFY(stage.load({stage.element(client)}));
    QVERIFY(stage.warnedOf("auth-guessable"));
    QVERIFY(stage.window->clientInfos.isEmpty());
    QVERIFY(stage.load({stage.element(client)}, client.server.toLower()));
    QVERIFY(stage.window->clientInfos.contains(client.server));
}

void TestClosedBuilds::closedArchiveThatIsOpen()
{
    Stage stage;
    Stage::Client beta = closedBy(Documents::sumOf(code));
    beta.kind = QStringLiteral("Beta");
    beta.version = QStringLiteral("2.0");
    // Whoever copies an entry and forgets the address.
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("S")), stage.element(beta)}));
    QVERIFY(stage.warnedOf("closed-archive-is-open"));
    stage.server.serve(QStringLiteral("files/client.zip"),
                       Archives::zip({{QStringLiteral("game.exe"), "the closed one"}}));
    QCOMPARE(stage.download(), QStringLiteral("Download finished: version 1.0"));
    QCOMPARE(ScratchFolder::read(QStringLiteral("S/Official/1.0/game.exe")),
             QByteArray("the closed one"));
}

// Locked with the first code, and offered to whoever has the second.
void TestClosedBuilds::archiveOfTwoCodes()
{
    Stage stage;
    stage.server.serve(QStringLiteral("files/client.zip"), Stage::game(code));
    const QString other = QStringLiteral("their-code");
    const QStringList elements{stage.element(closedBy(Documents::sumOf(code))),
                               stage.element(closedBy(Documents::sumOf(other)))};
    QVERIFY(stage.load(elements, code));
    QVERIFY(stage.warnedOf("archive-of-two-codes"));
    QCOMPARE(stage.download(), QStringLiteral("Download finished: version 1.0"));
    QVERIFY(QDir(QStringLiteral("S")).removeRecursively());
    QVERIFY(stage.load(elements, other));
    QCOMPARE(stage.download(), QStringLiteral("Download failed"));
    QVERIFY(!Stage::hasGame());

    // The same one release later.
    stage.setPrevious({elements.constFirst()});
    QVERIFY(stage.load({elements.constLast()}, other));
    QVERIFY(stage.warnedOf("archive-of-two-codes"));
    QCOMPARE(stage.download(), QStringLiteral("Download failed"));
}

void TestClosedBuilds::codeOfTheGuide()
{
    Stage stage;
    Stage::Client client = closedBy(Documents::sumOf(code));
    client.url = QStringLiteral("https://files.test/client.zip");
    QVERIFY(stage.load({stage.element(client)}, code));
    QVERIFY(stage.warnedOf("auth-guessable"));
    QVERIFY(stage.window->clientInfos.contains(client.server));
}

void TestClosedBuilds::barInTheCode()
{
    Stage stage;
    const QString typed = QStringLiteral("our|code");
    QVERIFY(stage.load({stage.element(closedBy(Documents::sumOf(typed)))}, typed));
    QVERIFY(stage.warnedOf("code-not-kept"));
    QCOMPARE(codeAfterRestart(typed), QStringLiteral("our"));
    QVERIFY(stage.window->clientInfos.isEmpty());
}

void TestClosedBuilds::codeBeyondAscii()
{
    Stage stage;
    const QString typed = QString::fromUtf8("\xD0\xBA\xD0\xBE\xD0\xB4");
    QVERIFY(stage.load({stage.element(closedBy(Documents::sumOf(typed)))}, typed));
    QVERIFY(stage.warnedOf("code-beyond-ascii"));
    // On a system whose encoding has no such letters.
    QTextCodec *const ours = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    const QString kept = codeAfterRestart(typed);
    QTextCodec::setCodecForLocale(ours);
    QCOMPARE(kept, QStringLiteral("???"));
}

QTEST_MAIN(TestClosedBuilds)
#include "tst_closedbuilds.moc"
