#include "stage.h"

namespace
{
const QString finished = QStringLiteral("Download finished: version ");
const QString gameOf = QStringLiteral("S/Official/%1/game.exe");

// As the player left it: this server and client remembered.
void startRemembering(Stage &stage, const QByteArray &settings)
{
    stage.window.reset();
    ScratchFolder::write(QStringLiteral("settings.txt"), settings);
    stage.window = std::make_unique<testform>();
    QVERIFY(PublishedWorld::answered(*stage.window));
}

Stage::Client closedBy(const QString &code)
{
    Stage::Client client;
    client.auth = Documents::sumOf(code);
    return client;
}
} // namespace

// What becomes of players who have had the document before, in the real window.
class TestReleaseWarnings : public QObject
{
    Q_OBJECT

private slots:
    void nothingToWarnOf();
    void archiveExchangedUnderItsVersion();
    void archiveOfTheVersionBefore();
    void archiveThatIsTheOneBefore();
    void archiveOfTheChangesAlone();
    void serverThatIsRenamed();
    void clientThatIsGone();
    void entryThatIsOpened();
    void codeThatIsChanged();
};

void TestReleaseWarnings::nothingToWarnOf()
{
    Stage stage;
    stage.setPrevious({stage.ofVersion(QStringLiteral("1.0"))});
    stage.server.serve(QStringLiteral("S.png"), Documents::png(4, 4, 0));
    stage.server.serve(QStringLiteral("files/new.zip"),
                       Archives::zip({{QStringLiteral("game.exe"), "#!newer"}}));
    Stage::Client entry;
    entry.version = QStringLiteral("1.1");
    entry.url = stage.server.url(QStringLiteral("files/new.zip"));
    QVERIFY(stage.load({stage.element(entry)}));
    QCOMPARE(stage.ids() + stage.deepIds(), QStringList());
    startRemembering(stage, "S|Official|true|");
    QVERIFY(stage.window->ui->serverButtonsGroup->isHidden());
    Stage::install(QStringLiteral("1.0"));
    QCOMPARE(stage.download(), finished + entry.version);
    QCOMPARE(ScratchFolder::read(gameOf.arg(entry.version)), QByteArray("#!newer"));
}

// The player keeps the build that was published first, and is offered no other.
void TestReleaseWarnings::archiveExchangedUnderItsVersion()
{
    Stage stage;
    stage.setPrevious({stage.ofUrl(stage.server.url(QStringLiteral("files/before.zip")))});
    Stage::install(QStringLiteral("1.0"));
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("S"))}));
    QVERIFY(stage.warnedOf("archive-exchanged"));
    startRemembering(stage, "S|Official|true|");
    QCOMPARE(stage.colour(), QStringLiteral("green"));
    QVERIFY(stage.window->ui->btnUpdate->isHidden());
    QVERIFY(stage.window->ui->btnDownload->isHidden());
    QVERIFY(ScratchFolder::read(gameOf.arg(QStringLiteral("1.0"))) != Stage::script);
}

void TestReleaseWarnings::archiveOfTheVersionBefore()
{
    Stage stage;
    stage.setPrevious({stage.ofVersion(QStringLiteral("1.0"))});
    QVERIFY(stage.load({stage.ofVersion(QStringLiteral("1.1"))}));
    QVERIFY(stage.warnedOf("archive-reused"));
    // A cache that still has what lay there before.
    QCOMPARE(stage.download(), finished + QStringLiteral("1.1"));
    QCOMPARE(ScratchFolder::read(gameOf.arg(QStringLiteral("1.1"))), QByteArray(Stage::script));
}

void TestReleaseWarnings::archiveThatIsTheOneBefore()
{
    Stage stage;
    const QByteArray archive = Stage::game();
    stage.server.serve(QStringLiteral("files/1.0.zip"), archive);
    stage.server.serve(QStringLiteral("files/1.1.zip"), archive);
    stage.setPrevious({stage.ofUrl(stage.server.url(QStringLiteral("files/1.0.zip")))});
    Stage::Client entry;
    entry.version = QStringLiteral("1.1");
    entry.url = stage.server.url(QStringLiteral("files/1.1.zip"));
    QVERIFY(stage.load({stage.element(entry)}));
    QCOMPARE(stage.ids(), QStringList());
    QVERIFY(stage.deeplyWarnedOf("archive-unchanged"));
    QVERIFY(!stage.deeplyWarnedOf("archive-much-smaller"));
    QCOMPARE(stage.download(), finished + entry.version);
    QCOMPARE(ScratchFolder::read(gameOf.arg(entry.version)), QByteArray(Stage::script));
}

void TestReleaseWarnings::archiveOfTheChangesAlone()
{
    Stage stage;
    const QByteArray map(10000, 'm');
    stage.server.serve(QStringLiteral("files/1.0.zip"),
                       Archives::zip({{QStringLiteral("game.exe"), "#!game"},
                                      {QStringLiteral("data/map.pak"), map},
                                      {QStringLiteral("data/sound.pak"), map}}));
    stage.server.serve(QStringLiteral("files/1.1.zip"),
                       Archives::zip({{QStringLiteral("game.exe"), "#!newer"}}));
    Stage::Client entry;
    entry.url = stage.server.url(QStringLiteral("files/1.0.zip"));
    QVERIFY(stage.load({stage.element(entry)}));
    QCOMPARE(stage.download(), finished + QStringLiteral("1.0"));
    QVERIFY(QFile::exists(QStringLiteral("S/Official/1.0/data/map.pak")));

    stage.setPrevious({stage.element(entry)});
    entry.version = QStringLiteral("1.1");
    entry.url = stage.server.url(QStringLiteral("files/1.1.zip"));
    QVERIFY(stage.load({stage.element(entry)}));
    QVERIFY(stage.deeplyWarnedOf("archive-much-smaller"));
    QVERIFY(!stage.deeplyWarnedOf("archive-unchanged"));
    QCOMPARE(stage.download(), finished + QStringLiteral("1.1"));
    QCOMPARE(ScratchFolder::tree().filter(QStringLiteral(".pak")), QStringList());
}

void TestReleaseWarnings::serverThatIsRenamed()
{
    Stage stage;
    stage.setPrevious({stage.ofServer(QStringLiteral("S"))});
    Stage::install(QStringLiteral("1.0"));
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("New"))}));
    QVERIFY(stage.warnedOf("server-gone"));
    startRemembering(stage, "S|Official|true|");
    QVERIFY(!stage.window->ui->serverButtonsGroup->isHidden());
    QCOMPARE(stage.download(), finished + QStringLiteral("1.0"));
    QVERIFY(QFile::exists(QStringLiteral("New/Official/1.0/game.exe")));
    QVERIFY(QFile::exists(gameOf.arg(QStringLiteral("1.0"))));
}

void TestReleaseWarnings::clientThatIsGone()
{
    Stage stage;
    Stage::Client beta;
    beta.kind = QStringLiteral("Beta");
    stage.setPrevious({stage.ofServer(QStringLiteral("S")), stage.element(beta)});
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("S"))}));
    QVERIFY(stage.warnedOf("client-gone"));
    QVERIFY(!stage.warnedOf("server-gone"));
    startRemembering(stage, "S|Beta|true|");
    QVERIFY(!stage.window->ui->serverButtonsGroup->isHidden());
}

void TestReleaseWarnings::entryThatIsOpened()
{
    Stage stage;
    const QStringList before{stage.element(closedBy(QStringLiteral("our-code")))};
    QVERIFY(stage.load(before));
    QVERIFY(stage.window->clientInfos.isEmpty());
    stage.setPrevious(before);
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("S"))}));
    QVERIFY(stage.warnedOf("opened-to-all"));
    QVERIFY(stage.window->clientInfos.contains(QStringLiteral("S")));
}

void TestReleaseWarnings::codeThatIsChanged()
{
    Stage stage;
    const QString code = QStringLiteral("our-code");
    const QStringList before{stage.element(closedBy(code))};
    QVERIFY(stage.load(before, code));
    QVERIFY(stage.window->clientInfos.contains(QStringLiteral("S")));
    stage.setPrevious(before);
    QVERIFY(stage.load({stage.element(closedBy(QStringLiteral("their-code")))}, code));
    QVERIFY(stage.warnedOf("code-changed"));
    QVERIFY(stage.window->clientInfos.isEmpty());
}

QTEST_MAIN(TestReleaseWarnings)
#include "tst_releasewarnings.moc"
