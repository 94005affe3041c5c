#include "info/serverbutton.h"
#include "info/serverpanel.h"
#include "install/downloadmanager.h"
#include "stage.h"
#include "support/urlcatcher.h"

#include <QDir>
#include <QTextCodec>

namespace
{
const QString finished = QStringLiteral("Download finished: version 1.0");
const QString failed = QStringLiteral("Download failed");

// Where the button in this row of each column stands in the window, from left to right.
QVector<QRect> placesOf(const Stage &stage, int columns, int row)
{
    QVector<QRect> places;
    for (int column = 0; column < columns; ++column) {
        const QPushButton *button = stage.button(column, row);
        places << QRect(button->mapTo(stage.window.get(), QPoint()), button->size());
    }
    return places;
}

// A new start of the launcher in the same folder.
void restart(Stage &stage)
{
    stage.window.reset();
    stage.window = std::make_unique<testform>();
    QVERIFY(PublishedWorld::answered(*stage.window));
}
} // namespace

// Names and addresses that are not what they look like, in the real window.
class TestNameWarnings : public QObject
{
    Q_OBJECT

private slots:
    void logoOfAnotherAddress_data();
    void logoOfAnotherAddress();
    void serverNamedLikeAFile();
    void sideBySide_data();
    void sideBySide();
    void anotherServerThanItSeems_data();
    void anotherServerThanItSeems();
    void serversThatLookTheSame();
    void choiceThatIsNotRemembered();
    void addressThatIsAnother_data();
    void addressThatIsAnother();
    void archiveOfALongName();
    void archiveOfAnOddName();
    void addressThatExpires();
    void pageInPlaceOfAnArchive();
    void passwordThatEverybodyReads();
    void archiveOnTheOwnMachine();
    void archiveOfAnotherServer();
    void archiveOfAnotherVersion();
    void pageThatIsAnArchive();
};

void TestNameWarnings::logoOfAnotherAddress_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("asked");
    QTest::newRow("plain") << QStringLiteral("S 1") << QString();
    QTest::newRow("a number sign") << QStringLiteral("S#1") << QStringLiteral("S");
    QTest::newRow("a percent sign") << QStringLiteral("S%41") << QStringLiteral("SA.png");
}

void TestNameWarnings::logoOfAnotherAddress()
{
    QFETCH(QString, server);
    QFETCH(QString, asked);
    Stage stage;
    stage.server.serve(server + QStringLiteral(".png"), Documents::png(4, 4, 0));
    QVERIFY(stage.load({stage.ofServer(server)}));
    QCOMPARE(stage.warnedOf("logo-address"), !asked.isEmpty());
    ServerButton *button = stage.window->serverButtons.value(server);
    QTRY_VERIFY(button->getPixmap() != nullptr);
    QCOMPARE(button->getPixmap()->isNull(), !asked.isEmpty());
    if (!asked.isEmpty()) {
        QCOMPARE(stage.server.requests(asked), 1);
    }
}

void TestNameWarnings::serverNamedLikeAFile()
{
    Stage stage;
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("settings.txt"))}));
    QVERIFY(stage.warnedOf("name-taken"));
    QCOMPARE(stage.download(), failed);
    QVERIFY(!Stage::hasGame());
}

void TestNameWarnings::sideBySide_data()
{
    QTest::addColumn<int>("servers");
    QTest::addColumn<bool>("fit");
    QTest::newRow("four") << 4 << true;
    QTest::newRow("five") << 5 << false;
    QTest::newRow("seven") << 7 << false;
}

void TestNameWarnings::sideBySide()
{
    QFETCH(int, servers);
    QFETCH(bool, fit);
    Stage stage;
    QStringList elements;
    for (int i = 0; i < servers; ++i) {
        elements << stage.ofServer(QStringLiteral("S%1").arg(i));
    }
    QVERIFY(stage.load(elements));
    QCOMPARE(stage.warnedOf("crowded-panel"), !fit);
    stage.window->show();
    QTRY_VERIFY(stage.window->ui->serverButtonsGroup->isVisible());
    QTRY_VERIFY(placesOf(stage, servers, 1).constLast().left() > stage.window->width() / 2);
    // Each in its own column, whole, and apart from the next; of the full size where they fit.
    bool whole = true;
    const QVector<QRect> places = placesOf(stage, servers, 1);
    for (int i = 0; i < servers; ++i) {
        whole = whole && stage.button(i, 1)->parentWidget()->width() >= places.at(i).width();
        whole = whole && (i == 0 || !places.at(i).intersects(places.at(i - 1)));
        whole = whole && stage.window->rect().contains(places.at(i));
    }
    QVERIFY(whole);
    QCOMPARE(places.constFirst().size() == ServerPanel::clientButtonSize, fit);
}

void TestNameWarnings::anotherServerThanItSeems_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("now");
    QTest::addColumn<QByteArray>("id");
    const auto row = [](const char *name, const char *before, const char *now, const char *id) {
        QTest::newRow(name) << QString::fromUtf8(before) << QString::fromUtf8(now)
                            << QByteArray(id);
    };
    row("the same", "Ash", "Ash", "");
    row("a blank of no width", "Ash", "Ash\xE2\x80\x8B", "invisible-character");
    row("a no-break blank", "Old Ash",
        "Old\xC2\xA0"
        "Ash",
        "invisible-character");
    row("a Cyrillic letter", "Ash", "\xD0\x90sh", "look-alike-letters");
    row("a blank in front", "Ash", " Ash", "odd-blanks");
    row("two blanks", "Old Ash", "Old  Ash", "odd-blanks");
    row("an accent of its own", "Caf\xC3\xA9", "Cafe\xCC\x81", "decomposed-letters");
}

// The player's choice, the installed game and the logo belong to the name that was meant.
void TestNameWarnings::anotherServerThanItSeems()
{
    QFETCH(QString, before);
    QFETCH(QString, now);
    QFETCH(QByteArray, id);
    Stage stage;
    stage.server.serve(before + QStringLiteral(".png"), Documents::png(4, 4, 0));
    QVERIFY(stage.load({stage.ofServer(before)}));
    QCOMPARE(stage.download(), finished);
    QVERIFY(stage.load({stage.ofServer(now)}));
    QVERIFY(id.isEmpty() || stage.warnedOf(id.constData()));
    QTRY_VERIFY(stage.window->serverButtons.value(now)->getPixmap() != nullptr);
    QCOMPARE(stage.window->serverButtons.value(now)->getPixmap()->isNull(), !id.isEmpty());
    stage.button(0, 1)->click();
    QCOMPARE(stage.colour(), id.isEmpty() ? QStringLiteral("green") : QStringLiteral("red"));
}

void TestNameWarnings::serversThatLookTheSame()
{
    Stage stage;
    const QString latin = QStringLiteral("Aop");
    const QString cyrillic = QString::fromUtf8("\xD0\x90\xD0\xBE\xD1\x80");
    Stage::Client beta;
    beta.server = cyrillic;
    beta.kind = QStringLiteral("Beta");
    QVERIFY(stage.load({stage.ofServer(latin), stage.element(beta)}));
    QVERIFY(stage.warnedOf("look-alike-servers"));
    // Two columns, where one with both buttons is meant.
    QCOMPARE(stage.window->ui->serverButtonsGroup->layout()->count(), 2);
}

void TestNameWarnings::choiceThatIsNotRemembered()
{
    Stage stage;
    const QString server = QString::fromUtf8("\xD0\x96");
    QTextCodec *const ours = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    QVERIFY(stage.load({stage.ofServer(server)}));
    QVERIFY(stage.warnedOf("name-beyond-ascii"));
    stage.button(0, 1)->click();
    restart(stage);
    QVERIFY(stage.window->ui->serverButtonsGroup->isHidden());

    // On a system whose encoding has no such letter.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    stage.window->onServerSelect(server + QStringLiteral("|Official"));
    restart(stage);
    QTextCodec::setCodecForLocale(ours);
    QVERIFY(!stage.window->ui->serverButtonsGroup->isHidden());
}

void TestNameWarnings::addressThatIsAnother_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QByteArray>("id");
    const QString none;
    QTest::newRow("as it is") << none << none << QByteArray();
    QTest::newRow("a blank behind it")
        << none << QStringLiteral(" ") << QByteArray("blank-around-address");
    QTest::newRow("a line end before it")
        << QStringLiteral("\n") << none << QByteArray("blank-around-address");
    QTest::newRow("a blank of no width behind it")
        << none << QString(QChar(0x200B)) << QByteArray("invisible-character");
}

void TestNameWarnings::addressThatIsAnother()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(QByteArray, id);
    Stage stage;
    QVERIFY(stage.load({stage.ofUrl(before + stage.archive() + after)}));
    QVERIFY(id.isEmpty() || stage.warnedOf(id.constData()));
    QCOMPARE(stage.download(), id.isEmpty() ? finished : failed);
}

void TestNameWarnings::archiveOfALongName()
{
    Stage stage;
    const QString path =
        QStringLiteral("files/") + QString(252, QLatin1Char('a')) + QStringLiteral(".zip");
    stage.server.serve(path, Stage::game());
    QVERIFY(stage.load({stage.ofUrl(stage.server.url(path))}));
    QVERIFY(stage.warnedOf("archive-name-too-long"));
    stage.button(0, 1)->click();
    stage.window->on_btnDownload_clicked();
    QTRY_VERIFY(stage.window->downloadManager->downloadQueue.isEmpty());
    QCOMPARE(stage.window->downloadManager->currentDownload, nullptr);
    QCOMPARE(stage.server.requests(path), 0);
    QVERIFY(!Stage::hasGame());
}

void TestNameWarnings::archiveOfAnOddName()
{
    Stage stage;
    const QString path = QStringLiteral("files/a%20b.zip");
    stage.server.serveHeld(path, Stage::game(), 10);
    const QString address = stage.server.url(QStringLiteral("files/a%2520b.zip"));
    QVERIFY(stage.load({stage.ofUrl(address)}));
    QVERIFY(stage.warnedOf("archive-name-odd"));
    stage.button(0, 1)->click();
    stage.window->on_btnDownload_clicked();
    QTRY_VERIFY(QFile::exists(QStringLiteral("a%20b.zip")));
}

void TestNameWarnings::addressThatExpires()
{
    Stage stage;
    const QString address = stage.archive() + QStringLiteral("?Expires=1&Signature=ab");
    QVERIFY(stage.load({stage.ofUrl(address)}));
    QVERIFY(stage.warnedOf("address-expires"));
    QCOMPARE(stage.download(), finished);
    // The server's answer afterwards, to another player; the document is the same.
    QVERIFY(QDir(QStringLiteral("S")).removeRecursively());
    stage.server.serve(QStringLiteral("files/client.zip"), "expired", 403);
    QCOMPARE(stage.download(), failed);
}

void TestNameWarnings::pageInPlaceOfAnArchive()
{
    Stage stage;
    stage.server.serve(QStringLiteral("files/blob/client.zip"), "<!DOCTYPE html>");
    QVERIFY(stage.load({stage.ofUrl(stage.server.url(QStringLiteral("files/blob/client.zip")))}));
    QVERIFY(stage.warnedOf("page-address"));
    QCOMPARE(stage.download(), failed);
    QVERIFY(!Stage::hasGame());
}

void TestNameWarnings::passwordThatEverybodyReads()
{
    Stage stage;
    QString address = stage.archive();
    address.replace(QStringLiteral("://"), QStringLiteral("://studio:secret@"));
    QVERIFY(stage.load({stage.ofUrl(address)}));
    QVERIFY(stage.warnedOf("password-in-address"));
    // In every player's folder.
    QVERIFY(ScratchFolder::read(QStringLiteral("offline.txt")).contains("studio:secret@"));
}

// The operator's web server for a try, which no player has.
void TestNameWarnings::archiveOnTheOwnMachine()
{
    Stage stage;
    const QString left =
        stage.ofUrl(QUrl(stage.archive()).resolved(QUrl(QStringLiteral("/left.zip"))).toString());
    Stage::Client other;
    other.server = QStringLiteral("T");
    other.url = QStringLiteral("https://files.example/client.zip");
    QVERIFY(stage.load({left, stage.element(other)}));
    QVERIFY(stage.warnedOf("private-address"));
    QCOMPARE(stage.download(), failed);
    // All of a try is fine.
    QVERIFY(stage.load({left}));
    QCOMPARE(stage.ids(), QStringList());
}

void TestNameWarnings::archiveOfAnotherServer()
{
    Stage stage;
    stage.server.serve(QStringLiteral("files/moor-1.0.zip"),
                       Archives::zip({{QStringLiteral("game.exe"), "the moor"}}));
    // Whoever copies the entry, and changes all but the address.
    Stage::Client entry;
    entry.url = stage.server.url(QStringLiteral("files/moor-1.0.zip"));
    entry.server = QStringLiteral("Moor");
    QStringList elements{stage.element(entry)};
    entry.server = QStringLiteral("Alta");
    elements << stage.element(entry);
    QVERIFY(stage.load(elements));
    QVERIFY(stage.warnedOf("archive-of-another-server"));
    QCOMPARE(stage.download(), finished);
    QCOMPARE(ScratchFolder::read(QStringLiteral("Alta/Official/1.0/game.exe")),
             QByteArray("the moor"));
}

void TestNameWarnings::archiveOfAnotherVersion()
{
    Stage stage;
    stage.server.serve(QStringLiteral("files/game-1.4.2.zip"),
                       Archives::zip({{QStringLiteral("game.exe"), "1.4.2"}}));
    Stage::Client entry;
    entry.version = QStringLiteral("1.5.0");
    entry.url = stage.server.url(QStringLiteral("files/game-1.4.2.zip"));
    QVERIFY(stage.load({stage.element(entry)}));
    QVERIFY(stage.warnedOf("archive-of-another-version"));
    QCOMPARE(stage.download(), QStringLiteral("Download finished: version 1.5.0"));
    QCOMPARE(ScratchFolder::read(QStringLiteral("S/Official/1.5.0/game.exe")), QByteArray("1.4.2"));
}

void TestNameWarnings::pageThatIsAnArchive()
{
    Stage stage;
    QVERIFY(stage.load(
        {stage.ofServer(QStringLiteral("S")),
         Documents::news(QStringLiteral("news"), QStringLiteral("t"), QStringLiteral("d"),
                         stage.server.url(QStringLiteral("p.png")), stage.archive())}));
    QVERIFY(stage.warnedOf("page-is-file"));
    const UrlCatcher catcher;
    stage.window->on_btnNewsBig_clicked();
    QCOMPARE(catcher.opened, QList<QUrl>{QUrl(stage.archive())});
    QVERIFY(!Stage::hasGame());
}

QTEST_MAIN(TestNameWarnings)
#include "tst_namewarnings.moc"
