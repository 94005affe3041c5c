#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "window/testform.h"

#include <QApplication>
#include <QIcon>
#include <QTest>
#include <QTimer>

// The program's own entry, called by the test instead of by the system.
#define main launcherMain
#include "app/main.cpp"
#undef main

namespace
{
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

QTEST_APPLESS_MAIN(TestMain)
#include "tst_main.moc"
