#include "installworld.h"
#include "support/texts.h"

#include <QDir>
#include <QMessageBox>
#include <QPushButton>

// Real Windows programs, started through the shell as the player's own are: no handler of the
// toolkit stands between.
class TestRealClient : public QObject
{
    Q_OBJECT

private slots:
    void playStartsTheProgram();
    void engineDecidesTheProgram_data();
    void engineDecidesTheProgram();
    void downloadedClientStarts_data();
    void downloadedClientStarts();
};

namespace
{
using Texts::text;

// A client that leaves this file in the installation folder.
QByteArray clientThatNotes(const QString &file)
{
    return "record " + QDir::current().absoluteFilePath(file).toUtf8();
}

void installClient(const QString &program, const QString &file)
{
    ScratchFolder::makeFolder(QFileInfo(program).path());
    (void)Archives::provideStandin(program, clientThatNotes(file));
}

// It has started without arguments, and has ended, so that its folder can be removed.
bool hasRun(const QString &file, const QString &program)
{
    return QTest::qWaitFor([&file] { return ScratchFolder::read(file) == "0\n"; }, 20000) &&
           QTest::qWaitFor([&program] { return QFile::remove(program); }, 20000);
}

void answer(const QString &engine)
{
    (void)WindowDriver::answerNextDialog([engine](QDialog &dialog) {
        const auto buttons = static_cast<QMessageBox &>(dialog).buttons();
        for (QAbstractButton *button : buttons) {
            if (button->text() == engine) {
                button->click();
            }
        }
    });
}
} // namespace

void TestRealClient::playStartsTheProgram()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    installClient(text("Alpha/Official/2.1/Ember wake"), text("started.txt"));
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QVERIFY(hasRun(text("started.txt"), text("Alpha/Official/2.1/Ember wake.exe")));
}

void TestRealClient::engineDecidesTheProgram_data()
{
    QTest::addColumn<QString>("engine");
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("other");
    QTest::newRow("DirectX") << text("DirectX") << text("Emberwake_dx") << text("Emberwake_gl");
    QTest::newRow("OpenGL") << text("OpenGL") << text("Emberwake_gl") << text("Emberwake_dx");
}

void TestRealClient::engineDecidesTheProgram()
{
    QFETCH(QString, engine);
    QFETCH(QString, program);
    QFETCH(QString, other);
    InstallWorld world;
    world.offer(text("Beta"), text("2.1"));
    const QString folder = text("Alpha/Beta/2.1/");
    installClient(folder + program, text("started.txt"));
    installClient(folder + other, text("other.txt"));
    QVERIFY(world.start());
    answer(engine);
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QVERIFY(hasRun(text("started.txt"), folder + program + text(".exe")));
    QVERIFY(!QFile::exists(text("other.txt")));
}

void TestRealClient::downloadedClientStarts_data()
{
    QTest::addColumn<QString>("code");
    QTest::newRow("open to everybody") << QString();
    QTest::newRow("locked") << text("open sesame");
}

void TestRealClient::downloadedClientStarts()
{
    QFETCH(QString, code);
    InstallWorld world;
    world.typedCode = code;
    world.offer(text("Official"), text("2.1"), code);
    installClient(text("made/Ember wake"), text("started.txt"));
    const QByteArray program = ScratchFolder::read(text("made/Ember wake.exe"));
    world.server.serve(
        world.archive,
        Archives::zip({{text("Ember wake.exe"), program}, {text("data/map.bin"), "map"}}, code));
    Archives::provideExtractor();
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
    QVERIFY(world.waitForTheEnd());
    QCOMPARE(ScratchFolder::read(text("Alpha/Official/2.1/data/map.bin")), QByteArray("map"));
    QCOMPARE(ScratchFolder::read(text("Alpha/Official/2.1/Ember wake.exe")).size(), program.size());
    QCOMPARE(world.buttons(), text("Play"));
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QVERIFY(hasRun(text("started.txt"), text("Alpha/Official/2.1/Ember wake.exe")));
}

QTEST_MAIN(TestRealClient)
#include "tst_realclient.moc"
