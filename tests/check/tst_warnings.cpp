#include "info/serverbutton.h"
#include "info/world.h"
#include "install/downloadmanager.h"
#include "stage.h"
#include "support/consolecapture.h"
#include "support/relation.h"
#include "support/urlcatcher.h"

#include <QFileInfo>
#include <QImage>
#include <QNetworkProxy>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThreadPool>

#include <algorithm>

namespace
{
const QString finished = QStringLiteral("Download finished: version ");
const QString failed = QStringLiteral("Download failed");

QString news(const char *kind, const QString &title)
{
    return Documents::news(QLatin1String(kind), title, QStringLiteral("d"),
                           QStringLiteral("http://127.0.0.1:9/p.png"),
                           QStringLiteral("http://127.0.0.1:9/"));
}

QStringList repeated(const QString &element, int count)
{
    QStringList list;
    for (int i = 0; i < count; ++i) {
        list << element;
    }
    return list;
}

// Answers every request that passes through it with the same bytes, as somebody on the way can.
class SomebodyOnTheWay : public QTcpServer
{
public:
    explicit SomebodyOnTheWay(const QByteArray &body)
    {
        connect(this, &QTcpServer::newConnection, this, [this, body] {
            QTcpSocket *socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, socket, [this, socket, body] {
                m_heard += socket->readAll();
                if (m_heard.endsWith("\r\n\r\n")) {
                    socket->write("HTTP/1.1 200 OK\r\nContent-Length: " +
                                  QByteArray::number(body.size()) + "\r\n\r\n" + body);
                }
            });
        });
        listen(QHostAddress::LocalHost);
        QNetworkProxy::setApplicationProxy(
            QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), serverPort()));
    }
    ~SomebodyOnTheWay() override { QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy); }

    QByteArray heard() const { return m_heard; }

private:
    QByteArray m_heard;
};
} // namespace

// Loads the document into the window and makes sure that the checker warned of it.
#define LOAD_WARNED(stage, document, id)                                                           \
    QVERIFY((stage).load document);                                                                \
    QVERIFY2((stage).warnedOf(id), id)

// Every finding of the checker beside what the window really does with the same document.
class TestWarnings : public QObject
{
    Q_OBJECT

private slots:
    void nothingToWarnOf();

    void emptyDocument();
    void zeroByte();
    void notUtf8();
    void newerLauncher();
    void launcherVersionThatIsNoNumber();
    void notWellFormed();
    void missingAttribute();
    void tooManyAttributes();
    void typeThatDeclares();
    void tooManyElements();
    void tooManyServers();
    void afterTheNinth();
    void tooManySlides();
    void tooManyTiles();
    void unknownElement();

    void duplicateClient();
    void versionThatNeverCounts_data();
    void versionThatNeverCounts();
    void updateThatIsNotSeen_data();
    void updateThatIsNotSeen();
    void versionThatCarries();
    void testersVersionOfTheSameWeight();

    void noServer();
    void barInTheServersName();
    void longNameOfAServer();
    void slashInTheServersName();
    void slashInTheVersion();
    void serverThatIsTheFolderAbove();
    void unknownKind();
    void emptyBetaButton();

    void authThatIsNoSum();
    void authOfNoCode();

    void plainHttp();
    void archiveAddressThatIsNone();
    void longAddress();
    void pictureAndPageThatAreNone();
    void archiveThatIsNotSaved_data();
    void archiveThatIsNotSaved();
    void archiveThatIsLeftBehind_data();
    void archiveThatIsLeftBehind();
    void archivesOfOneName();

    void accentInASlide();
    void leadingQuestionMark_data();
    void leadingQuestionMark();
    void markupThatIsNotSimple();
    void longText();

    void pictureThatDoesNotArrive_data();
    void pictureThatDoesNotArrive();
    void redirectedArchive();
    void noSize();
    void brokenArchive();
    void refusedArchive_data();
    void refusedArchive();
    void lockedArchive();
    void openArchive();
    void archiveOfAnotherCode();
    void archiveWithoutExecutable_data();
    void archiveWithoutExecutable();
};

// The steps that the others take, with a document that has no fault: what they see happen does not
// happen by itself.
void TestWarnings::nothingToWarnOf()
{
    Stage stage;
    stage.server.serve(QStringLiteral("S.png"), Documents::png(4, 4, 0));
    QVERIFY(stage.load({stage.ofVersion(QStringLiteral("1.0"))}));
    const DocumentContent content =
        readContent(Documents::launcher({stage.ofVersion(QStringLiteral("1.0"))}), {});
    Fetcher fetcher(10);
    QVERIFY(findingsOf(content).isEmpty());
    QVERIFY(checkDeeply(content, stage.server.url(), {}, fetcher).findings.isEmpty());

    Stage::install(QStringLiteral("0.9"));
    QCOMPARE(stage.download(), finished + QStringLiteral("1.0"));
    QCOMPARE(stage.colour(), QStringLiteral("green"));
    QVERIFY(stage.offersPlay());
    QVERIFY(Stage::hasGame());
    UrlCatcher catcher;
    stage.window->on_btnPlay_clicked();
    QCOMPARE(catcher.opened.size(), 1);
    QTRY_VERIFY(stage.window->serverButtons.value(QStringLiteral("S"))->getPixmap() != nullptr);
    stage.window.reset();
    QThreadPool::globalInstance()->waitForDone();
    QVERIFY(ScratchFolder::tree().contains(QStringLiteral("S.png")));
}

void TestWarnings::emptyDocument()
{
    Stage stage;
    LOAD_WARNED(stage, (QByteArray()), "empty-document");
    QVERIFY(!stage.window->ui->labelConnecting->isHidden());
    QCOMPARE(stage.window->ui->serverButtonsGroup->layout(), nullptr);
}

void TestWarnings::zeroByte()
{
    Stage stage;
    const QByteArray early = stage.ofServer(QStringLiteral("Early")).toUtf8();
    const QByteArray late = stage.ofServer(QStringLiteral("Late")).toUtf8();
    LOAD_WARNED(stage, ("<launcher>" + early + QByteArray(1, '\0') + late + "</launcher>"),
                "nul-byte");
    QCOMPARE(stage.window->clientInfos.keys(), QStringList{QStringLiteral("Early")});
}

void TestWarnings::notUtf8()
{
    Stage stage;
    QByteArray body = Documents::launcher({news("news", QStringLiteral("Cafe"))});
    body.replace("Cafe", "Caf\xE9");
    LOAD_WARNED(stage, (body), "not-utf8");
    QCOMPARE(stage.window->ui->titleNewsBig->text(), QString::fromUtf8("Caf\xEF\xBF\xBD"));
}

void TestWarnings::newerLauncher()
{
    Stage stage;
    const DialogGuard guard;
    const UrlCatcher catcher;
    LOAD_WARNED(stage, (Documents::launcher({}, QStringLiteral("2"))), "newer-launcher");
    // The launcher has asked the application to end; for the tests behind this one it begins anew.
    QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    QCOMPARE(QApplication::exec(), 0);
    QCOMPARE(guard.titles, QStringList{QStringLiteral("Warning")});
    QCOMPARE(catcher.opened.size(), 1);
}

void TestWarnings::launcherVersionThatIsNoNumber()
{
    Stage stage;
    const DialogGuard guard;
    LOAD_WARNED(stage, (Documents::launcher({}, QStringLiteral("2.5"))), "launcher-version");
    QTest::qWait(100);
    QCOMPARE(guard.titles, QStringList());
}

void TestWarnings::notWellFormed()
{
    Stage stage;
    LOAD_WARNED(stage,
                (QStringList{stage.ofServer(QStringLiteral("Early")), QStringLiteral("<a b=1/>"),
                             stage.ofServer(QStringLiteral("Late"))}),
                "not-well-formed");
    QCOMPARE(stage.window->clientInfos.keys(), QStringList{QStringLiteral("Early")});
}

void TestWarnings::missingAttribute()
{
    Stage stage;
    LOAD_WARNED(stage,
                (QStringList{stage.ofServer(QStringLiteral("Early")),
                             QStringLiteral("<client server='Broken' version='1'/>"),
                             stage.ofServer(QStringLiteral("Late"))}),
                "missing-attribute");
    QCOMPARE(stage.window->clientInfos.keys(), QStringList{QStringLiteral("Early")});
}

void TestWarnings::tooManyAttributes()
{
    QString attributes;
    for (int i = 0; i <= 1000; ++i) {
        attributes += QStringLiteral(" a%1=''").arg(i);
    }
    Stage stage;
    LOAD_WARNED(stage,
                (QStringList{stage.ofServer(QStringLiteral("Early")),
                             QStringLiteral("<x%1/>").arg(attributes),
                             stage.ofServer(QStringLiteral("Late"))}),
                "too-many-attributes");
    QCOMPARE(stage.window->clientInfos.keys(), QStringList{QStringLiteral("Early")});
}

void TestWarnings::typeThatDeclares()
{
    Stage stage;
    LOAD_WARNED(stage,
                ("<!DOCTYPE launcher [<!ENTITY e 'x'>]>" +
                 Documents::launcher({stage.ofServer(QStringLiteral("Late"))})),
                "document-type");
    QCOMPARE(stage.window->clientInfos.keys(), QStringList());
    QVERIFY(stage.window->ui->labelConnecting->isHidden());
}

void TestWarnings::tooManyElements()
{
    Stage stage;
    const ConsoleCapture console;
    LOAD_WARNED(stage,
                (QStringList{stage.ofServer(QStringLiteral("Early")),
                             QStringLiteral("<x/>").repeated(20 * 1000),
                             stage.ofServer(QStringLiteral("Late"))}),
                "too-many-elements");
    QCOMPARE(stage.window->clientInfos.keys(), QStringList{QStringLiteral("Early")});
}

void TestWarnings::tooManyServers()
{
    Stage stage;
    QStringList servers;
    for (int i = 0; i <= 100; ++i) {
        servers << stage.ofServer(QStringLiteral("S%1").arg(i, 3, 10, QLatin1Char('0')));
    }
    LOAD_WARNED(stage, (servers), "too-many-servers");
    QCOMPARE(stage.window->ui->serverButtonsGroup->layout()->count(), 100);
    QVERIFY(!stage.window->serverButtons.contains(QStringLiteral("S100")));
}

void TestWarnings::afterTheNinth()
{
    Stage stage;
    LOAD_WARNED(stage,
                (QStringList{stage.ofServer(QStringLiteral("Early"))} +
                 repeated(news("homenews", QStringLiteral("s")), 3) +
                 repeated(news("news", QStringLiteral("t")), 6) +
                 QStringList{stage.ofServer(QStringLiteral("Late"))}),
                "after-ninth-news");
    QCOMPARE(stage.window->clientInfos.keys(), QStringList{QStringLiteral("Early")});
}

void TestWarnings::tooManySlides()
{
    Stage stage;
    LOAD_WARNED(stage,
                (repeated(news("homenews", QStringLiteral("s")), 3) +
                 QStringList{news("homenews", QStringLiteral("surplus"))}),
                "too-many-slides");
    for (const News &item : stage.window->homeNews) {
        QCOMPARE(item.labelTitle->text(), QStringLiteral("s"));
    }
}

void TestWarnings::tooManyTiles()
{
    Stage stage;
    LOAD_WARNED(stage,
                (repeated(news("news", QStringLiteral("t")), 6) +
                 QStringList{news("news", QStringLiteral("surplus"))}),
                "too-many-tiles");
    for (const News &item : stage.window->news) {
        QCOMPARE(item.labelTitle->text(), QStringLiteral("t"));
    }
}

void TestWarnings::unknownElement()
{
    Stage stage;
    const QString element = stage.ofServer(QStringLiteral("S"))
                                .replace(QStringLiteral("client "), QStringLiteral("Client "));
    LOAD_WARNED(stage, (QStringList{element}), "unknown-element");
    QVERIFY(stage.window->clientInfos.isEmpty());
}

void TestWarnings::duplicateClient()
{
    Stage stage;
    LOAD_WARNED(stage,
                (QStringList{stage.ofVersion(QStringLiteral("1.1")),
                             stage.ofVersion(QStringLiteral("1.0"))}),
                "duplicate-client");
    const QHash<QString, ClientInfo> clients = stage.window->clientInfos.value(QStringLiteral("S"));
    QCOMPARE(clients.size(), 1);
    QCOMPARE(clients.value(QStringLiteral("Official")).version, QStringLiteral("1.0"));
}

void TestWarnings::versionThatNeverCounts_data()
{
    QTest::addColumn<QByteArray>("id");
    QTest::newRow("0.0") << QByteArray("version-zero");
    QTest::newRow("beta") << QByteArray("version-zero");
    QTest::newRow("-1.0") << QByteArray("version-negative");
    QTest::newRow("22.0") << QByteArray("version-wraps");
}

void TestWarnings::versionThatNeverCounts()
{
    QFETCH(QByteArray, id);
    const QString version = QString::fromLatin1(QTest::currentDataTag());
    Stage stage;
    LOAD_WARNED(stage, (QStringList{stage.ofVersion(version)}), id.constData());
    QCOMPARE(stage.download(), finished + version);
    QVERIFY(Stage::hasGame());
    QVERIFY(!stage.offersPlay());
    QVERIFY(!stage.window->ui->btnDownload->isHidden());
}

void TestWarnings::updateThatIsNotSeen_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("now");
    QTest::addColumn<QByteArray>("id");
    const auto row = [](const char *before, const char *now, const char *id) {
        QTest::newRow(now) << QString::fromLatin1(before) << QString::fromLatin1(now)
                           << QByteArray(id);
    };
    row("1.0", "43.0", "version-wraps");
    row("1.2.3.4.5.6", "1.2.3.4.5.7", "version-parts");
    row("1.0-rc2", "1.0-rc3", "version-not-numbers");
    row("1.10", "1.9", "version-lower");
    row("1.9", "1.9.0", "version-equal");
}

// The update is installed, but the earlier version counted until it was removed.
void TestWarnings::updateThatIsNotSeen()
{
    QFETCH(QString, before);
    QFETCH(QString, now);
    QFETCH(QByteArray, id);
    Stage stage;
    stage.setPrevious({stage.ofVersion(before)});
    LOAD_WARNED(stage, (QStringList{stage.ofVersion(now)}), id.constData());
    Stage::install(before);
    QCOMPARE(stage.download(), finished + now);
    QCOMPARE(stage.colour(), QStringLiteral("orange"));

    // Where it cannot be removed, Play goes on starting it.
    Stage::install(before);
    UrlCatcher catcher;
    stage.window->on_btnPlay_clicked();
    QCOMPARE(catcher.opened.size(), 1);
    QVERIFY(
        catcher.opened.constFirst().path().contains(QLatin1Char('/') + before + QLatin1Char('/')));
}

// The hundredth step counts as the next great one, which is then not seen as an update.
void TestWarnings::versionThatCarries()
{
    Stage stage;
    LOAD_WARNED(stage, (QStringList{stage.ofVersion(QStringLiteral("1.100"))}), "version-carries");
    QCOMPARE(stage.download(), finished + QStringLiteral("1.100"));
    QCOMPARE(stage.colour(), QStringLiteral("green"));
    QVERIFY(stage.load({stage.ofVersion(QStringLiteral("2.0"))}));
    QVERIFY(!stage.warnedOf("version-carries"));
    QCOMPARE(stage.download(), finished + QStringLiteral("2.0"));
    QCOMPARE(stage.colour(), QStringLiteral("orange"));
}

void TestWarnings::testersVersionOfTheSameWeight()
{
    Stage stage;
    const QString code = QStringLiteral("code");
    stage.server.serve(QStringLiteral("files/tester.zip"), Stage::game(code));
    Stage::Client testers;
    testers.version = QStringLiteral("1.00");
    testers.url = stage.server.url(QStringLiteral("files/tester.zip"));
    testers.auth = Documents::sumOf(code);
    LOAD_WARNED(stage,
                (QStringList{stage.ofVersion(QStringLiteral("1.0")), stage.element(testers)}, code),
                "version-equal");
    Stage::install(QStringLiteral("1.0"));
    QCOMPARE(stage.download(), finished + testers.version);
    QCOMPARE(stage.colour(), QStringLiteral("orange"));
}

void TestWarnings::noServer()
{
    Stage stage;
    LOAD_WARNED(stage, (QStringList{stage.ofServer(QStringLiteral(""))}), "empty-server");
    QCOMPARE(stage.download(), failed);
    QVERIFY(!Stage::hasGame());
}

void TestWarnings::barInTheServersName()
{
    Stage stage;
    LOAD_WARNED(stage, (QStringList{stage.ofServer(QStringLiteral("A|B"))}), "bar-in-name");
    stage.button(0, 1)->click();
    QVERIFY(stage.window->selectedClientInfo.url.isEmpty());
    QCOMPARE(ScratchFolder::read(QStringLiteral("settings.txt")), QByteArray("A|B|true|"));
}

void TestWarnings::longNameOfAServer()
{
    Stage stage;
    LOAD_WARNED(stage, (QStringList{stage.ofServer(QString(256, QLatin1Char('a')))}),
                "forbidden-character");
    QCOMPARE(stage.download(), failed);
    QVERIFY(!Stage::hasGame());
}

void TestWarnings::slashInTheServersName()
{
    Stage stage;
    stage.server.serve(QStringLiteral("A/B.png"), Documents::png(4, 4, 0));
    LOAD_WARNED(stage, (QStringList{stage.ofServer(QStringLiteral("A/B"))}), "slash-in-name");
    QTRY_VERIFY(stage.window->serverButtons.value(QStringLiteral("A/B"))->getPixmap() != nullptr);
    stage.window.reset();
    QThreadPool::globalInstance()->waitForDone();
    QVERIFY(ScratchFolder::tree().filter(QStringLiteral("B.png")).isEmpty());
}

void TestWarnings::slashInTheVersion()
{
    Stage stage;
    LOAD_WARNED(stage, (QStringList{stage.ofVersion(QStringLiteral("1/0"))}), "slash-in-name");
    QCOMPARE(stage.download(), failed);
    QVERIFY(!Stage::hasGame());
}

void TestWarnings::serverThatIsTheFolderAbove()
{
    Stage stage;
    LOAD_WARNED(stage, (QStringList{stage.ofServer(QStringLiteral(".."))}), "dot-name");
    QCOMPARE(stage.download(), failed);
    QVERIFY(!Stage::hasGame());
    QCOMPARE(stage.folder.treeOutside().filter(QStringLiteral("game")), QStringList());
}

void TestWarnings::unknownKind()
{
    Stage stage;
    Stage::Client nightly;
    nightly.kind = QStringLiteral("Nightly");
    LOAD_WARNED(stage, (QStringList{stage.ofServer(QStringLiteral("S")), stage.element(nightly)}),
                "unknown-kind");
    QVERIFY(!stage.warnedOf("empty-beta-button"));
    stage.button(0, 2)->click();
    QCOMPARE(stage.window->selectedClientInfo.client, QString());
    stage.button(0, 1)->click();
    QCOMPARE(stage.window->selectedClientInfo.client, QStringLiteral("Official"));
}

void TestWarnings::emptyBetaButton()
{
    Stage stage;
    Stage::Client nightly;
    nightly.kind = QStringLiteral("Nightly");
    LOAD_WARNED(stage, (QStringList{stage.element(nightly)}), "empty-beta-button");
    stage.button(0, 1)->click();
    QVERIFY(stage.window->ui->serverButtonsGroup->isHidden());
    QVERIFY(stage.window->selectedClientInfo.url.isEmpty());
}

void TestWarnings::authThatIsNoSum()
{
    Stage stage;
    Stage::Client entry;
    entry.auth = QStringLiteral("secret");
    LOAD_WARNED(stage, (QStringList{stage.element(entry)}, QStringLiteral("secret")),
                "auth-not-sha1");
    QVERIFY(stage.window->clientInfos.isEmpty());
}

void TestWarnings::authOfNoCode()
{
    Stage stage;
    Stage::Client entry;
    entry.auth = Documents::sumOf({});
    LOAD_WARNED(stage, (QStringList{stage.element(entry)}), "auth-of-no-code");
    QVERIFY(stage.window->clientInfos.contains(QStringLiteral("S")));
}

void TestWarnings::plainHttp()
{
    Stage stage;
    LOAD_WARNED(stage,
                (QStringList{stage.ofUrl(QStringLiteral("http://files.example/client.zip"))}),
                "http");
    const SomebodyOnTheWay somebody(
        Archives::zip({{QStringLiteral("game.exe"), "something else"}}));
    QCOMPARE(stage.download(), finished + QStringLiteral("1.0"));
    QCOMPARE(ScratchFolder::read(QStringLiteral("S/Official/1.0/game.exe")),
             QByteArray("something else"));
    QVERIFY(somebody.heard().startsWith("GET http://files.example/client.zip"));
}

void TestWarnings::archiveAddressThatIsNone()
{
    Stage stage;
    LOAD_WARNED(stage, (QStringList{stage.ofUrl(QStringLiteral("files.example/client.zip"))}),
                "unusable-address");
    QCOMPARE(stage.download(), failed);
}

void TestWarnings::longAddress()
{
    Stage stage;
    const QString address = stage.archive() + QLatin1Char('?') + QString(8192, QLatin1Char('a'));
    LOAD_WARNED(stage, (QStringList{stage.ofUrl(address)}), "long-address");
    QCOMPARE(stage.download(), failed);
    QVERIFY(!Stage::hasGame());
}

void TestWarnings::pictureAndPageThatAreNone()
{
    Stage stage;
    LOAD_WARNED(stage, (QStringList{Documents::news(QStringLiteral("news"), QStringLiteral("t"))}),
                "unusable-address");
    QTRY_VERIFY(stage.window->news[0].getOriginalPixmap() != nullptr);
    QVERIFY(stage.window->news[0].getOriginalPixmap()->isNull());
    const UrlCatcher catcher;
    stage.window->on_btnNewsBig_clicked();
    QVERIFY(catcher.opened.isEmpty());
}

void TestWarnings::archiveThatIsNotSaved_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("a library") << QStringLiteral("version.dll");
    QTest::newRow("a zero byte") << QStringLiteral("unzip.exe%00.zip");
#ifdef Q_OS_WIN
    QTest::newRow("a device") << QStringLiteral("nul.zip");
#endif
}

void TestWarnings::archiveThatIsNotSaved()
{
    QFETCH(QString, name);
    Stage stage;
    const QByteArray extractor = ScratchFolder::read(QStringLiteral("unzip.exe"));
    LOAD_WARNED(stage, (QStringList{stage.ofUrl(stage.server.url(name))}), "archive-name-refused");
    QVERIFY(!stage.warnedOf("archive-not-zip"));
    stage.button(0, 1)->click();
    stage.window->on_btnDownload_clicked();
    QTRY_VERIFY(stage.window->downloadManager->downloadQueue.isEmpty());
    QCOMPARE(stage.window->downloadManager->currentDownload, nullptr);
    QVERIFY(!QFile::exists(QStringLiteral("version.dll")));
    QCOMPARE(ScratchFolder::read(QStringLiteral("unzip.exe")), extractor);
    QVERIFY(!Stage::hasGame());
}

void TestWarnings::archiveThatIsLeftBehind_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("id");
    QTest::addColumn<QString>("leftBehind");
    QTest::newRow("a folder") << QStringLiteral("files/") << QByteArray("archive-url-ends-in-slash")
                              << QStringLiteral("download");
    QTest::newRow("no zip") << QStringLiteral("files/client") << QByteArray("archive-not-zip")
                            << QStringLiteral("client");
    QTest::newRow("as it should be")
        << QStringLiteral("files/client.zip") << QByteArray() << QString();
}

void TestWarnings::archiveThatIsLeftBehind()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, id);
    QFETCH(QString, leftBehind);
    Stage stage;
    stage.server.serveCut(path, Stage::game(), 20);
    QVERIFY(stage.load({stage.ofUrl(stage.server.url(path))}));
    QVERIFY(id.isEmpty() || stage.warnedOf(id.constData()));
    const QStringList before = ScratchFolder::tree();
    QCOMPARE(stage.download(), failed);
    QStringList added = ScratchFolder::tree();
    for (const QString &name : before) {
        added.removeAll(name);
    }
    added.removeAll(QStringLiteral("S/"));
    added.removeAll(QStringLiteral("S/Official/"));
    added = added.filter(QRegularExpression(QStringLiteral("^(?!.*\\.png)")));
    QCOMPARE(added, leftBehind.isEmpty() ? QStringList() : QStringList{leftBehind});
}

void TestWarnings::archivesOfOneName()
{
    Stage stage;
    Stage::Client other;
    other.server = QStringLiteral("T");
    other.url = stage.server.url(QStringLiteral("other/client.zip"));
    const QByteArray bytes = Stage::game();
    stage.server.serveHeld(QStringLiteral("files/client.zip"), bytes, 10);
    stage.server.serveHeld(QStringLiteral("other/client.zip"), bytes, 10);
    LOAD_WARNED(stage, (QStringList{stage.ofServer(QStringLiteral("S")), stage.element(other)}),
                "archive-name-collides");

    stage.button(0, 1)->click();
    stage.window->on_btnDownload_clicked();
    QTRY_COMPARE(stage.server.requests(QStringLiteral("files/client.zip")), 1);
    stage.button(1, 1)->click();
    stage.window->on_btnDownload_clicked();
    QTRY_COMPARE(stage.server.requests(QStringLiteral("other/client.zip")), 1);
#ifdef Q_OS_WIN
    // The open file cannot be removed there, and the second gets another name.
    QVERIFY(ScratchFolder::tree().contains(QStringLiteral("client.zip.0.zip")));
#else
    // Both write under one name. The first to end unpacks and removes what the second has begun.
    TRY_VERIFY_RELATION(QFileInfo(QStringLiteral("client.zip")).size(), >, 0, 5000);
    QSignalSpy ended(stage.window->downloadManager, SIGNAL(updateFinished()));
    stage.server.release(QStringLiteral("files/client.zip"));
    QTRY_VERIFY(!QFile::exists(QStringLiteral("client.zip")));
    stage.server.release(QStringLiteral("other/client.zip"));
    QTRY_COMPARE(ended.size(), 1);
    QCOMPARE(stage.window->ui->downloadProgressText->text(), failed);
    QVERIFY(!Stage::hasGame());
#endif
}

void TestWarnings::accentInASlide()
{
    Stage stage;
    LOAD_WARNED(stage, (QStringList{news("homenews", QString::fromUtf8("Caf\xC3\xA9"))}),
                "latin1-damage");
    QCOMPARE(stage.window->ui->homeNewsTitle->text(), QString::fromUtf8("Caf\xEF\xBF\xBD"));
}

void TestWarnings::leadingQuestionMark_data()
{
    QTest::addColumn<bool>("slide");
    QTest::newRow("slide") << true;
    QTest::newRow("tile") << false;
}

void TestWarnings::leadingQuestionMark()
{
    QFETCH(bool, slide);
    Stage stage;
    LOAD_WARNED(stage, (QStringList{news(slide ? "homenews" : "news", QStringLiteral("?Why?"))}),
                "leading-question-mark");
    const Ui::testform &ui = *stage.window->ui;
    QCOMPARE((slide ? ui.homeNewsTitle : ui.titleNewsBig)->text(), QStringLiteral("Why?"));
}

void TestWarnings::markupThatIsNotSimple()
{
    Stage stage;
    LOAD_WARNED(stage, (QStringList{news("news", QStringLiteral("<table>Why"))}),
                "markup-as-letters");
    const QLabel *title = stage.window->ui->titleNewsBig;
    QCOMPARE(title->textFormat(), Qt::PlainText);
    QCOMPARE(title->text(), QStringLiteral("<table>Why"));
}

void TestWarnings::longText()
{
    Stage stage;
    LOAD_WARNED(stage, (QStringList{news("news", QString(10001, QLatin1Char('w')))}), "text-cut");
    QCOMPARE(stage.window->ui->titleNewsBig->text(), QString(10000, QLatin1Char('w')));
}

void TestWarnings::pictureThatDoesNotArrive_data()
{
    QTest::addColumn<QByteArray>("id");
    QTest::newRow("redirect") << QByteArray("redirect");
    QTest::newRow("missing") << QByteArray("unreachable");
    QTest::newRow("page") << QByteArray("not-a-picture");
    QTest::newRow("large") << QByteArray("picture-too-large");
    QTest::newRow("good") << QByteArray();
}

void TestWarnings::pictureThatDoesNotArrive()
{
    QFETCH(QByteArray, id);
    Stage stage;
    const QByteArray picture = Documents::png(4, 4, 0);
    stage.server.serve(QStringLiteral("good"), picture);
    stage.server.serve(QStringLiteral("page"), "<html>");
    QImage wall(8000, 8000, QImage::Format_Mono);
    wall.fill(0);
    stage.server.serve(QStringLiteral("large"), Documents::png(wall));
    stage.server.redirect(QStringLiteral("redirect"), stage.server.url(QStringLiteral("good")));
    QVERIFY(stage.load({Documents::news(
        QStringLiteral("news"), QStringLiteral("t"), QStringLiteral("d"),
        stage.server.url(QLatin1String(QTest::currentDataTag())), stage.server.url())}));
    QVERIFY(id.isEmpty() || stage.deeplyWarnedOf(id.constData()));
    QTRY_VERIFY(stage.window->news[0].getOriginalPixmap() != nullptr);
    QCOMPARE(stage.window->news[0].getOriginalPixmap()->isNull(), !id.isEmpty());
}

void TestWarnings::redirectedArchive()
{
    Stage stage;
    stage.server.redirect(QStringLiteral("moved.zip"), stage.archive());
    QVERIFY(stage.load({stage.ofUrl(stage.server.url(QStringLiteral("moved.zip")))}));
    QVERIFY(stage.deeplyWarnedOf("redirect"));
    QCOMPARE(stage.download(), failed);
    QVERIFY(!Stage::hasGame());
}

void TestWarnings::noSize()
{
    Stage stage;
    // Long enough under way for more than one report.
    QByteArray content(32 * 1024 * 1024, Qt::Uninitialized);
    std::generate(content.begin(), content.end(), [random = QRandomGenerator(1)]() mutable {
        return static_cast<char>(random.bounded(256));
    });
    stage.server.serveWithoutLength(QStringLiteral("files/client.zip"),
                                    Archives::zip({{QStringLiteral("game.exe"), content}}));
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("S"))}));
    QVERIFY(stage.deeplyWarnedOf("no-size"));
    stage.button(0, 1)->click();
    stage.window->on_btnDownload_clicked();
    QSignalSpy progress(stage.window->downloadManager, SIGNAL(updateProgress(QString, int)));
    QTRY_VERIFY_WITH_TIMEOUT(stage.window->ui->downloadProgressBar->isHidden(), 30000);
    VERIFY_RELATION(progress.size(), >, 1);
    // No part of a hundred, but a bar that moves.
    QVERIFY(progress.constFirst().constFirst().toString().contains(QStringLiteral("###")));
    QCOMPARE(progress.constFirst().constLast().toInt(), 0);
}

void TestWarnings::brokenArchive()
{
    Stage stage;
    stage.server.serve(QStringLiteral("files/client.zip"), "no archive");
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("S"))}));
    QVERIFY(stage.deeplyWarnedOf("archive-broken"));
    QCOMPARE(stage.download(), failed);
    QVERIFY(!Stage::hasGame());
}

void TestWarnings::refusedArchive_data()
{
    QTest::addColumn<QByteArray>("packed");
    QTest::addColumn<QByteArray>("name"); // as long
    QTest::newRow("a way out") << QByteArray("data/map") << QByteArray("../g/map");
    QTest::newRow("a way out of Windows") << QByteArray("data/map") << QByteArray("..\\g\\map");
    QTest::newRow("a drive") << QByteArray("data/map") << QByteArray("C:/a/map");
    QTest::newRow("a whole path") << QByteArray("data/map") << QByteArray("/ata/map");
    QTest::newRow("a star") << QByteArray("data/map") << QByteArray("data/m*p");
    QTest::newRow("a dot at the end") << QByteArray("data/map") << QByteArray("data/ma.");
    QTest::newRow("a device") << QByteArray("data/map") << QByteArray("data/nul");
    QTest::newRow("a stream") << QByteArray("data/map") << QByteArray("data:map");
    QTest::newRow("a blank at the end") << QByteArray("data/map") << QByteArray("data/ma ");
    QTest::newRow("twice") << QByteArray("data/map") << QByteArray("game.exe");
    QTest::newRow("twice in other letters") << QByteArray("data/map") << QByteArray("GAME.EXE");
    QTest::newRow("a file for a folder") << QByteArray("data/map") << QByteArray("read.me/");
}

// Nothing of it is unpacked, the good file neither.
void TestWarnings::refusedArchive()
{
    QFETCH(QByteArray, packed);
    QFETCH(QByteArray, name);
    Stage stage;
    QByteArray archive = Archives::zip({{QStringLiteral("game.exe"), "game"},
                                        {QStringLiteral("read.me"), "text"},
                                        {QString::fromLatin1(packed), "map"}});
    QCOMPARE(archive.count(packed), 2);
    archive.replace(packed, name);
    stage.server.serve(QStringLiteral("files/client.zip"), archive);
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("S"))}));
    QVERIFY(stage.deeplyWarnedOf("archive-refused"));
    QCOMPARE(stage.download(), failed);
    QVERIFY(!Stage::hasGame());
}

void TestWarnings::lockedArchive()
{
    Stage stage;
    stage.server.serve(QStringLiteral("files/client.zip"), Stage::game(QStringLiteral("code")));
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("S"))}));
    QVERIFY(stage.deeplyWarnedOf("archive-locked"));
    QCOMPARE(stage.download(), failed);
    QVERIFY(!Stage::hasGame());
}

void TestWarnings::openArchive()
{
    Stage stage;
    Stage::Client entry;
    entry.auth = Documents::sumOf(QStringLiteral("code"));
    QVERIFY(stage.load({stage.element(entry)}, QStringLiteral("code")));
    QVERIFY(stage.deeplyWarnedOf("archive-open"));
    // Whoever names the same address needs no code.
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("S"))}));
    QCOMPARE(stage.download(), finished + QStringLiteral("1.0"));
    QVERIFY(Stage::hasGame());
}

void TestWarnings::archiveOfAnotherCode()
{
    Stage stage;
    Stage::Client entry;
    entry.auth = Documents::sumOf(QStringLiteral("code"));
    stage.server.serve(QStringLiteral("files/client.zip"), Stage::game(QStringLiteral("other")));
    QVERIFY(stage.load({stage.element(entry)}, QStringLiteral("code")));
    QVERIFY(stage.deeplyWarnedOf("archive-damaged"));
    QCOMPARE(stage.download(), failed);
    QVERIFY(!Stage::hasGame());

    stage.server.serve(QStringLiteral("files/client.zip"), Stage::game(QStringLiteral("code")));
    QVERIFY(!stage.deeplyWarnedOf("archive-damaged"));
    QCOMPARE(stage.download(), finished + QStringLiteral("1.0"));
    QVERIFY(Stage::hasGame());
}

void TestWarnings::archiveWithoutExecutable_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<bool>("warned");
    const QString official = QStringLiteral("Official");
    const QString beta = QStringLiteral("Beta");
    // Play looks for it as if it were a program.
    QTest::newRow("a folder of such a name")
        << official << QStringList{QStringLiteral("a.exe/map"), QStringLiteral("game.exe")} << true;
    QTest::newRow("none") << official << QStringList{QStringLiteral("game.bin")} << true;
    QTest::newRow("in a folder") << official << QStringList{QStringLiteral("in/game.exe")} << true;
    QTest::newRow("capital letters")
        << official << QStringList{QStringLiteral("GAME.EXE")} << false;
    // Closing the question starts OpenGL's.
    QTest::newRow("one engine") << beta << QStringList{QStringLiteral("game_dx.exe")} << true;
    QTest::newRow("both engines") << beta
                                  << QStringList{QStringLiteral("game_dx.exe"),
                                                 QStringLiteral("game_gl.exe")}
                                  << false;
}

void TestWarnings::archiveWithoutExecutable()
{
    QFETCH(QString, kind);
    QFETCH(QStringList, files);
    QFETCH(bool, warned);
    Stage stage;
    QMap<QString, QByteArray> content;
    for (const QString &file : files) {
        content.insert(file, "game");
    }
    stage.server.serve(QStringLiteral("files/client.zip"), Archives::zip(content));
    Stage::Client entry;
    entry.kind = kind;
    QVERIFY(stage.load({stage.element(entry)}));
    QCOMPARE(stage.deeplyWarnedOf("archive-without-executable"), warned);
    QCOMPARE(stage.download(), finished + QStringLiteral("1.0"));
    const UrlCatcher catcher;
    const DialogGuard closesTheQuestion;
    stage.window->on_btnPlay_clicked();
    const QUrl opened = catcher.opened.value(0);
    // Closing the question asks for the last one.
    QCOMPARE(stage.started.constFirst().programs.constLast(),
             warned ? QString() : opened.fileName());
    QVERIFY(warned != QFileInfo(opened.toLocalFile()).isFile());
}

QTEST_MAIN(TestWarnings)
#include "tst_warnings.moc"
