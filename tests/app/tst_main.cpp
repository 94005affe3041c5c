#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "window/testform.h"

#include <QApplication>
#include <QFileInfo>
#include <QIcon>
#include <QProcess>
#include <QTest>
#include <QTimer>

// The program's own entry, called by the test instead of by the system.
#define main launcherMain
#include "app/main.cpp"
#undef main

namespace
{
const QString asLauncher = QStringLiteral("--as-launcher");
QString ownFile;

struct Seen {
    QString name;
    QString version;
    bool icon = false;
    QString windowTitle;
    int windows = 0;
    bool visible = false;
    bool iconOnWindow = false;
    QString refused = QStringLiteral("never clicked");
};
Seen seen;

void lookAndClose()
{
    seen.name = QApplication::applicationName();
    seen.version = QApplication::applicationVersion();
    seen.icon = !QApplication::windowIcon().isNull();
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (auto *launcher = qobject_cast<testform *>(window)) {
            ++seen.windows;
            seen.windowTitle = launcher->windowTitle();
            seen.visible = launcher->isVisible();
            seen.iconOnWindow = !launcher->windowIcon().isNull();
            if (QTest::qWaitForWindowExposed(launcher)) {
                seen.refused = WindowDriver::click(*launcher, QStringLiteral("btnCloseIntro"));
            }
        }
    }
    if (!seen.refused.isEmpty()) {
        QApplication::exit(77);
    }
}

void whenTheApplicationExists()
{
    QTimer::singleShot(0, lookAndClose);
}
Q_COREAPP_STARTUP_FUNCTION(whenTheApplicationExists)
} // namespace

class TestMain : public QObject
{
    Q_OBJECT

private slots:
    void identityWindowAndExitCode();
    void worksWhereTheExtractorIs_data();
    void worksWhereTheExtractorIs();
};

void TestMain::identityWindowAndExitCode()
{
    const ScratchFolder folder;
    char program[] = "launcher";
    char *arguments[] = {program, nullptr};
    QCOMPARE(launcherMain(1, arguments), 0);
    QCOMPARE(seen.refused, QString());
    QCOMPARE(seen.name, QStringLiteral("Emberwake Online Launcher"));
    QCOMPARE(seen.version, QStringLiteral("1.0.0"));
    QVERIFY(seen.icon);
    QCOMPARE(seen.windows, 1);
    QVERIFY(seen.visible);
    QVERIFY(seen.iconOnWindow);
    QCOMPARE(seen.windowTitle, QStringLiteral("Emberwake Launcher"));
    QCOMPARE(ScratchFolder::read(QStringLiteral("settings.txt")), QByteArray("||true|"));
    QCOMPARE(QApplication::instance(), nullptr);
}

void TestMain::worksWhereTheExtractorIs_data()
{
    QTest::addColumn<bool>("extractorHere");
    QTest::addColumn<QString>("settings");
    QTest::newRow("it lies beside the program alone") << false << QStringLiteral("program");
    QTest::newRow("it lies where the launcher was started, too") << true << QStringLiteral("here");
}

// A program of its own, started from another folder: settings.txt tells where it worked.
void TestMain::worksWhereTheExtractorIs()
{
    QFETCH(bool, extractorHere);
    QFETCH(QString, settings);
    const ScratchFolder folder;
    const QString program =
        folder.path() + QStringLiteral("/program/") + QFileInfo(ownFile).fileName();
    ScratchFolder::write(QStringLiteral("program/unzip.exe"));
    ScratchFolder::makeFolder(QStringLiteral("here"));
    if (extractorHere) {
        ScratchFolder::write(QStringLiteral("here/unzip.exe"));
    }
    QVERIFY(QFile::copy(ownFile, program));

    QProcess launcher;
    launcher.setWorkingDirectory(folder.path() + QStringLiteral("/here"));
    launcher.start(program, {asLauncher});
    QVERIFY(launcher.waitForFinished(60000));
    QCOMPARE(launcher.exitCode(), 0);
    const QStringList found = ScratchFolder::tree().filter(QStringLiteral("settings.txt"));
    QCOMPARE(found, QStringList{settings + QStringLiteral("/settings.txt")});
}

int main(int argc, char *argv[])
{
    ownFile = QFileInfo(QString::fromLocal8Bit(argv[0])).absoluteFilePath();
    if (argc == 2 && asLauncher == QLatin1String(argv[1])) {
        return launcherMain(argc, argv);
    }
    TestMain test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_main.moc"
