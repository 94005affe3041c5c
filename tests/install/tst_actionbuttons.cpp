#include "install/staleinput.h"
#include "installworld.h"
#include "support/links.h"
#include "support/pointer.h"
#include "support/texts.h"
#include "support/urlcatcher.h"

#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QUrl>

namespace
{
using Texts::names;
using Texts::text;

// What the desktop was asked to open.
QStringList opened(const UrlCatcher &desktop)
{
    QStringList urls;
    for (const QUrl &url : desktop.opened) {
        urls << url.toString();
    }
    return urls;
}
} // namespace

// The four action buttons: which show, which can be clicked, and what Play starts.
class TestActionButtons : public QObject
{
    Q_OBJECT

private slots:
    void states_data();
    void states();
    void disabledButtonsBecomeEnabledBySelection();
    void anOtherVersionSwitchesThePlayButtons();
    void buttonsFollowTheDisk();
    void onlyOnePlayButtonAndItCanBeReached_data();
    void onlyOnePlayButtonAndItCanBeReached();

    void playStartsTheFirstProgram_data();
    void playStartsTheFirstProgram();
    void playOpensARelativeLocalFile();
    void playStartsTheInstalledVersionNotTheOfferedOne();
    void playWithoutProgramIsSilent();
    void playOnAMissingFolderRefreshesTheButtons();
    void playOnAFileOfSuchANameRefreshesTheButtons();
    void playWhileDownloadingOnlyDisables();
    void playStartsAMovedClient_data();
    void playStartsAMovedClient();
    void playEntersNoLinkedVersion_data();
    void playEntersNoLinkedVersion();
    void playStartsNoLinkedProgram_data();
    void playStartsNoLinkedProgram();
    void playStartsNothingOfNoPlainName_data();
    void playStartsNothingOfNoPlainName();

    void keyboardReachesNothingBeforeAChoice_data();
    void keyboardReachesNothingBeforeAChoice();

    void clicksOnTheBlockedWindowAreNotObeyed();

    void engineBox();
    void engineDecidesTheProgram_data();
    void engineDecidesTheProgram();
    void engineIsAskedOnlyForBeta_data();
    void engineIsAskedOnlyForBeta();
    void betaWithoutInstalledVersion();
    void betaWithoutSuchAProgram();
    void betaTakesTheFirstMatch();
};

void TestActionButtons::states_data()
{
    QTest::addColumn<QString>("installed");
    QTest::addColumn<QString>("state");
    // Enabled and visible buttons; afterwards in the same order.
    QTest::addColumn<QString>("enabledBefore");
    QTest::addColumn<QString>("visible");
    QTest::addColumn<QString>("enabled");
    const auto row = [](const char *name, const char *installed, const char *state,
                        const char *enabledBefore, const char *visible, const char *enabled) {
        QTest::newRow(name) << text(installed) << text(state) << text(enabledBefore)
                            << text(visible) << text(enabled);
    };
    const char none[] = "";
    const char all[] = "Download Update Play Play_2";

    row("nothing installed, refreshed", "", "", none, "Download", "Download");
    row("nothing installed, selected", "", "serverSelect", none, "Download", "Download");
    row("nothing installed, under way", "", "updateProgress", all, "Download", none);
    row("nothing installed, ended", "", "updateFinished", none, "Download", "Play Play_2");
    row("nothing installed, selected, others stay enabled", "", "serverSelect", all, "Download",
        all);
    row("current installed, refreshed", "2.1", "", none, "Play", "Play Play_2");
    row("current installed, selected", "2.1", "serverSelect", none, "Play", "Play Play_2");
    row("current installed, selected, others stay enabled", "2.1", "serverSelect", all, "Play",
        all);
    row("current installed, under way", "2.1", "updateProgress", all, "Play", none);
    row("current installed, ended", "2.1", "updateFinished", all, "Play", "Play Play_2");
    row("other installed, refreshed", "2.0", "", none, "Update Play_2", "Update Play Play_2");
    row("other installed, selected", "2.0", "serverSelect", none, "Update Play_2",
        "Update Play Play_2");
    row("other installed, under way", "2.0", "updateProgress", all, "Update Play_2", none);
    row("other installed, ended", "2.0", "updateFinished", all, "Update Play_2", "Play Play_2");
    row("newer installed, selected", "3.0", "serverSelect", none, "Update Play_2",
        "Update Play Play_2");
    row("equal weight but another name, selected", "02.1", "serverSelect", none, "Update Play_2",
        "Update Play Play_2");
    row("a name without weight, selected", "backup", "serverSelect", none, "Download", "Download");
    row("in capitals the state is unknown", "2.0", "UPDATEFINISHED", none, "Update Play_2",
        "Update Play Play_2");
    row("an unknown state", "2.1", "updateprogress", none, "Play", "Play Play_2");
    row("a state with something behind it", "", "updateFinished ", none, "Download", "Download");
}

void TestActionButtons::states()
{
    QFETCH(QString, installed);
    QFETCH(QString, state);
    QFETCH(QString, enabledBefore);
    QFETCH(QString, visible);
    QFETCH(QString, enabled);
    const ScratchFolder folder;
    if (!installed.isEmpty()) {
        ScratchFolder::makeFolder(text("Alpha/Official/") + installed);
    }
    testform window;
    window.selectedClientInfo = ClientInfo(text("2.1"), {}, text("Official"), text("Alpha"));
    QPushButton *const buttons[] = {window.ui->btnDownload, window.ui->btnUpdate,
                                    window.ui->btnPlay, window.ui->btnPlay_2};
    const QStringList before = enabledBefore.split(QLatin1Char(' '));
    // Whatever was visible before does not matter.
    for (const bool shownBefore : {true, false}) {
        for (QPushButton *button : buttons) {
            button->setVisible(shownBefore);
            button->setEnabled(before.contains(button->objectName().mid(3)));
        }
        window.updateButtonStates(state);
        QStringList visibleNow;
        QStringList enabledNow;
        for (const QPushButton *button : buttons) {
            const QString name = button->objectName().mid(3);
            if (!button->isHidden()) {
                visibleNow << name;
            }
            if (button->isEnabled()) {
                enabledNow << name;
            }
        }
        QCOMPARE(visibleNow.join(QLatin1Char(' ')), visible);
        QCOMPARE(enabledNow.join(QLatin1Char(' ')), enabled);
    }
}

void TestActionButtons::disabledButtonsBecomeEnabledBySelection()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.install(text("2.0"));
    QVERIFY(world.start());
    world.window->updateButtonStates(text("updateProgress"));
    QCOMPARE(world.buttons(), text("Update- Play_2-"));
    world.chooseAgain();
    QCOMPARE(world.buttons(), text("Update Play_2"));
}

void TestActionButtons::anOtherVersionSwitchesThePlayButtons()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.install(text("2.1"));
    QVERIFY(world.start());
    QCOMPARE(world.buttons(), text("Play"));
    world.window->selectedClientInfo.version = text("2.2");
    world.window->updateButtonStates(QString());
    QCOMPARE(world.buttons(), text("Update Play_2"));
    world.window->selectedClientInfo.version = text("2.1");
    world.window->updateButtonStates(QString());
    QCOMPARE(world.buttons(), text("Play"));
}

void TestActionButtons::buttonsFollowTheDisk()
{
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    QVERIFY(world.start());
    QCOMPARE(world.buttons(), text("Download"));
    world.install(text("2.0"));
    world.window->updateButtonStates(QString());
    QCOMPARE(world.buttons(), text("Update Play_2"));
    world.install(text("2.1"));
    world.window->updateButtonStates(QString());
    QCOMPARE(world.buttons(), text("Play"));
    QVERIFY(QDir(text("Alpha/Official")).removeRecursively());
    world.window->updateButtonStates(QString());
    QCOMPARE(world.buttons(), text("Download"));
}

void TestActionButtons::onlyOnePlayButtonAndItCanBeReached_data()
{
    QTest::addColumn<QString>("installed");
    QTest::addColumn<QString>("button");
    QTest::newRow("alone when the offered version is installed") << text("2.1") << text("btnPlay");
    QTest::newRow("beside Update when another version is installed")
        << text("2.0") << text("btnPlay_2");
}

void TestActionButtons::onlyOnePlayButtonAndItCanBeReached()
{
    QFETCH(QString, installed);
    QFETCH(QString, button);
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.install(installed);
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, button), QString());
    QCOMPARE(opened(desktop),
             QStringList{text("file:Alpha/Official/") + installed + text("/game.exe")});
    QVERIFY(world.window->isVisible());
}

void TestActionButtons::playStartsTheFirstProgram_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("program");
    QTest::newRow("the only one") << names("game.exe|readme.txt|data.zip") << text("game.exe");
    QTest::newRow("the first in name order") << names("game.exe|editor.exe") << text("editor.exe");
    QTest::newRow("name order pays no regard to case")
        << names("Zone.exe|Beta.exe|alpha.exe") << text("alpha.exe");
    QTest::newRow("the extension in capitals counts")
        << names("GAME.EXE|readme.txt") << text("GAME.EXE");
    QTest::newRow("a folder of such a name counts too")
        << names("a.exe/inner.txt|game.exe") << text("a.exe");
    QTest::newRow("programs further down do not count")
        << names("bin/a.exe|game.exe") << text("game.exe");
    QTest::newRow("a name with a blank and more")
        << text("my #1 game%20.exe|zone.exe").split(QLatin1Char('|')) << text("my #1 game%20.exe");
}

void TestActionButtons::playStartsTheFirstProgram()
{
    QFETCH(QStringList, files);
    QFETCH(QString, program);
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.install(text("2.1"), files);
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QCOMPARE(desktop.opened.size(), 1);
    QCOMPARE(desktop.opened.constFirst().toLocalFile(), text("Alpha/Official/2.1/") + program);
    QCOMPARE(world.progressText(), text("Client version: 2.1"));
}

void TestActionButtons::playOpensARelativeLocalFile()
{
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.install(text("2.1"));
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QCOMPARE(desktop.opened, QList<QUrl>{QUrl::fromLocalFile(text("Alpha/Official/2.1/game.exe"))});
    QCOMPARE(desktop.opened.constFirst().scheme(), text("file"));
    QCOMPARE(desktop.opened.constFirst().path(), text("Alpha/Official/2.1/game.exe"));
}

void TestActionButtons::playStartsTheInstalledVersionNotTheOfferedOne()
{
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.install(text("1.0"));
    world.install(text("2.0"));
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay_2")), QString());
    QCOMPARE(opened(desktop), QStringList{text("file:Alpha/Official/2.0/game.exe")});
    QCOMPARE(world.progressText(), text("Client version: 2.0"));
    QCOMPARE(world.buttons(), text("Update Play_2"));
}

void TestActionButtons::playWithoutProgramIsSilent()
{
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.install(text("2.1"), names("readme.txt|game.exe.bak"));
    QVERIFY(world.start());
    QCOMPARE(world.progressText(), QString());
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QCOMPARE(opened(desktop), QStringList());
    QCOMPARE(world.progressText(), text("Client version: 2.1"));
    QCOMPARE(world.buttons(), text("Play"));
}

// The version's folder disappears behind the launcher's back.
void TestActionButtons::playOnAMissingFolderRefreshesTheButtons()
{
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.install(text("2.1"));
    QVERIFY(world.start());
    QVERIFY(QDir(text("Alpha/Official/2.1")).removeRecursively());
    QCOMPARE(world.buttons(), text("Play"));
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QCOMPARE(opened(desktop), QStringList());
    QCOMPARE(world.progressText(), QString());
    QCOMPARE(world.buttons(), text("Download"));
}

void TestActionButtons::playOnAFileOfSuchANameRefreshesTheButtons()
{
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.install(text("2.0"));
    ScratchFolder::write(text("Alpha/Official/3.zip"));
    QVERIFY(world.start());
    world.window->updateButtonStates(text("updateFinished"));
    QCOMPARE(world.buttons(), text("Update- Play_2"));
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay_2")), QString());
    QCOMPARE(opened(desktop), QStringList());
    QCOMPARE(world.progressText(), QString());
    QCOMPARE(world.buttons(), text("Update Play_2"));
}

void TestActionButtons::playWhileDownloadingOnlyDisables()
{
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    world.install(text("2.1"));
    QVERIFY(world.start());
    QVERIFY(!world.window->isDownloadingClient);
    world.window->isDownloadingClient = true;
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QCOMPARE(opened(desktop), QStringList());
    QCOMPARE(world.progressText(), QString());
    QCOMPARE(world.buttons(), text("Play-"));
}

void TestActionButtons::playStartsAMovedClient_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("target");
    QTest::newRow("the server's folder") << text("Alpha") << text("../Drive/Alpha");
    QTest::newRow("the client's folder")
        << text("Alpha/Official") << text("../../Drive/Alpha/Official");
}

void TestActionButtons::playStartsAMovedClient()
{
    QFETCH(QString, link);
    QFETCH(QString, target);
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(text("Official"), text("2.1"));
    ScratchFolder::makeFolder(text("../Drive/Alpha/Official"));
    ScratchFolder::makeFolder(QFileInfo(link).path());
    MAKE_LINK(target, link);
    world.install(text("2.1"));
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QCOMPARE(opened(desktop), QStringList{text("file:Alpha/Official/2.1/game.exe")});
}

void TestActionButtons::playEntersNoLinkedVersion_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("Official") << text("Official");
    QTest::newRow("Beta") << text("Beta");
}

void TestActionButtons::playEntersNoLinkedVersion()
{
    QFETCH(QString, kind);
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(kind, text("2.1"));
    ScratchFolder::write(text("../Elsewhere/game_gl.exe"), "program");
    ScratchFolder::makeFolder(text("Alpha/") + kind);
    MAKE_LINK(text("../../../Elsewhere"), text("Alpha/") + kind + text("/2.1"));
    QVERIFY(world.start());
    const bool asks = kind == text("Beta");
    const auto answered =
        asks ? WindowDriver::answerNextDialog([](QDialog &dialog) { dialog.close(); })
             : std::make_shared<bool>(false);
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QCOMPARE(*answered, asks);
    QCOMPARE(opened(desktop), QStringList());
}

void TestActionButtons::playStartsNoLinkedProgram_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QStringList>("started");
    QTest::newRow("the only one") << text("Official") << names("readme.txt") << QStringList();
    QTest::newRow("beside a real one")
        << text("Official") << names("game.exe") << names("game.exe");
    QTest::newRow("of the chosen engine") << text("Beta") << names("game_dx.exe") << QStringList();
}

void TestActionButtons::playStartsNoLinkedProgram()
{
    QFETCH(QString, kind);
    QFETCH(QStringList, files);
    QFETCH(QStringList, started);
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(kind, text("2.1"));
    world.install(text("2.1"), files);
    ScratchFolder::write(text("../Elsewhere/tool.exe"), "program");
    const QString place = text("Alpha/") + kind + text("/2.1/");
    MAKE_LINK(text("../../../../Elsewhere/tool.exe"), place + text("a_gl.exe"));
    QVERIFY(QFile::exists(place + text("a_gl.exe")));
    QVERIFY(world.start());
    const bool asks = kind == text("Beta");
    const auto answered =
        asks ? WindowDriver::answerNextDialog([](QDialog &dialog) { dialog.close(); })
             : std::make_shared<bool>(false);
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QCOMPARE(*answered, asks);
    QStringList expected;
    for (const QString &name : started) {
        expected << text("file:") + place + name;
    }
    QCOMPARE(opened(desktop), expected);
}

void TestActionButtons::playStartsNothingOfNoPlainName_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("program");
    const auto row = [](const char *name, const char *server, const char *kind, const char *version,
                        const char *program) {
        QTest::newRow(name) << text(server) << text(kind) << text(version) << text(program);
    };
    row("a server that climbs out", "../outside", "Official", "2.1",
        "../outside/Official/2.1/game.exe");
    row("a server that is the folder above", "..", "outside", "2.1", "../outside/2.1/game.exe");
    row("a server of two folders", "Alpha/Official", "Official", "2.1",
        "Alpha/Official/Official/2.1/game.exe");
    row("a kind that climbs out", "Alpha", "../../outside", "2.1", "../outside/2.1/game.exe");
    row("a kind that is the server's folder", "Alpha", ".", "2.1", "Alpha/2.1/game.exe");
    row("no kind", "Alpha", "", "2.1", "Alpha/2.1/game.exe");
    row("a version that is the server's folder", "Alpha", "Official", "..", "Alpha/game.exe");
    row("a version that climbs out", "Alpha", "Official", "../../../outside",
        "../outside/game.exe");
    row("a version of two folders", "Alpha", "Official", "1/0", "Alpha/Official/1/0/game.exe");
    row("a version that is no name, beside an installed one", "Alpha", "Official", "..",
        "Alpha/Official/2.0/game.exe");
}

// Also those that a player has remembered, or that no button shows.
void TestActionButtons::playStartsNothingOfNoPlainName()
{
    QFETCH(QString, server);
    QFETCH(QString, kind);
    QFETCH(QString, version);
    QFETCH(QString, program);
    const UrlCatcher desktop;
    const ScratchFolder folder;
    ScratchFolder::makeFolder(text("Alpha/Official"));
    ScratchFolder::write(program, "program");
    const QStringList before = ScratchFolder::tree();
    testform window;
    window.ui->serverButtonsGroup->hide();
    window.selectedClientInfo = ClientInfo(version, text("http://h.test/a.zip"), kind, server);
    window.on_btnPlay_clicked();
    window.on_btnPlay_2_clicked();
    QCOMPARE(opened(desktop), QStringList());
    QCOMPARE(window.ui->downloadProgressText->text(), QString());
    QCOMPARE(ScratchFolder::tree(), before);
}

void TestActionButtons::keyboardReachesNothingBeforeAChoice_data()
{
    QTest::addColumn<QString>("button");
    for (const char *button : {"btnDownload", "btnUpdate", "btnPlay", "btnPlay_2"}) {
        QTest::newRow(button) << text(button);
    }
}

// The panel covers the buttons for the pointer, not for the keyboard.
void TestActionButtons::keyboardReachesNothingBeforeAChoice()
{
    QFETCH(QString, button);
    const UrlCatcher desktop;
    const ScratchFolder folder;
    ScratchFolder::write(text("mine.zip"), "mine");
    testform window;
    QVERIFY(WindowDriver::show(window));
    QVERIFY(window.ui->serverButtonsGroup->isVisible());
    auto *target = window.findChild<QPushButton *>(button);
    QVERIFY(target != nullptr);
    QSignalSpy clicked(target, &QPushButton::clicked);
    QTest::keyClick(target, Qt::Key_Space);
    QCOMPARE(clicked.count(), 1);
    QCOMPARE(window.downloadManager, nullptr);
    QVERIFY(window.ui->downloadProgressBar->isHidden());
    QCOMPARE(window.ui->downloadProgressText->text(), QString());
    QCOMPARE(opened(desktop), QStringList());
    QCOMPARE(ScratchFolder::read(text("mine.zip")), QByteArray("mine"));
}

// While the archive is unpacked nothing answers, and the player clicks again and again. Play takes
// Download's place in the end.
void TestActionButtons::clicksOnTheBlockedWindowAreNotObeyed()
{
#ifdef Q_OS_WIN
    QSKIP("the extractor of this test moves the pointer with a tool of the other system");
#else
    InstallWorld world;
    world.server.serve(world.archive, "an archive");
    world.offer(QStringLiteral("Official"), QStringLiteral("2.1"));
    QVERIFY(world.start());
    const QWidget &button = *world.window->ui->btnDownload;
    const QPoint place = button.mapToGlobal(button.rect().center());
    // Its third argument is the folder; it ends when the display has taken all clicks.
    ScratchFolder::write(QStringLiteral("unzip.exe"),
                         QStringLiteral("#!/bin/sh\ntouch \"$3/game.exe\"\n"
                                        "xdotool mousemove --sync %1 %2 click --repeat 4 1 && "
                                        "touch clicked\n")
                             .arg(place.x())
                             .arg(place.y())
                             .toUtf8());
    QVERIFY(QFile::setPermissions(QStringLiteral("unzip.exe"),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    const UrlCatcher desktop;
    QCOMPARE(WindowDriver::click(*world.window, QStringLiteral("btnDownload")), QString());
    QVERIFY(world.waitForTheEnd());
    QVERIFY(QFile::exists(QStringLiteral("clicked")));
    QCOMPARE(world.buttons(), QStringLiteral("Play"));

    // What is clicked from now on counts, and nothing else.
    QTRY_COMPARE(QCoreApplication::instance()->findChild<StaleInput *>(), nullptr);
    QVERIFY(Pointer::moveTo(place));
    QVERIFY(Pointer::press());
    QVERIFY(Pointer::release());
    QTRY_VERIFY(!desktop.opened.isEmpty());
    QCOMPARE(opened(desktop), QStringList{QStringLiteral("file:Alpha/Official/2.1/game.exe")});
#endif
}

void TestActionButtons::engineBox()
{
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(text("Beta"), text("2.1"));
    world.install(text("2.1"), names("game_dx.exe|game_gl.exe"));
    QVERIFY(world.start());
    QString question;
    QStringList buttons;
    QList<int> roles;
    bool modal = false;
    bool hasParent = true;
    const auto answered = WindowDriver::answerNextDialog([&](QDialog &dialog) {
        if (auto *box = qobject_cast<QMessageBox *>(&dialog)) {
            question = box->text();
            // Children stand in the order in which they were added; the box lays them out anew.
            const auto *row = box->findChild<QDialogButtonBox *>();
            const auto children =
                row->findChildren<QPushButton *>(QString(), Qt::FindDirectChildrenOnly);
            for (QPushButton *button : children) {
                buttons << button->text().remove(QLatin1Char('&'));
                roles << box->buttonRole(button);
            }
            modal = box->isModal();
            hasParent = box->parent() != nullptr;
        }
        dialog.close();
    });
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QVERIFY(*answered);
    QCOMPARE(question, text("Choose your graphics engine:"));
    QCOMPARE(buttons, names("DirectX|OpenGL"));
    QCOMPARE(roles, (QList<int>{QMessageBox::YesRole, QMessageBox::NoRole}));
    QVERIFY(modal);
    QVERIFY(!hasParent);
}

void TestActionButtons::engineDecidesTheProgram_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("program");
    QTest::newRow("DirectX") << text("DirectX") << text("game_dx.exe");
    QTest::newRow("OpenGL") << text("OpenGL") << text("game_gl.exe");
    QTest::newRow("the window's close button") << text("close") << text("game_gl.exe");
    QTest::newRow("the escape key") << text("escape") << text("game_gl.exe");
}

void TestActionButtons::engineDecidesTheProgram()
{
    QFETCH(QString, answer);
    QFETCH(QString, program);
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(text("Beta"), text("2.1"));
    world.install(text("2.1"), names("editor.exe|game_dx.exe|game_gl.exe"));
    QVERIFY(world.start());
    QString refused;
    const auto answered = WindowDriver::answerNextDialog([&](QDialog &dialog) {
        if (answer == text("close")) {
            QCloseEvent event;
            QCoreApplication::sendEvent(dialog.windowHandle(), &event);
        } else if (answer == text("escape")) {
            QTest::keyClick(dialog.windowHandle(), Qt::Key_Escape);
        } else {
            const auto buttons = dialog.findChildren<QPushButton *>();
            for (QPushButton *button : buttons) {
                if (button->text().remove(QLatin1Char('&')) == answer) {
                    refused = WindowDriver::click(dialog, *button);
                }
            }
        }
    });
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QVERIFY(*answered);
    QCOMPARE(refused, QString());
    QCOMPARE(opened(desktop), QStringList{text("file:Alpha/Beta/2.1/") + program});
    QCOMPARE(world.progressText(), text("Client version: 2.1"));
}

void TestActionButtons::engineIsAskedOnlyForBeta_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("Official") << text("Official");
    QTest::newRow("beta in small letters") << text("beta");
    QTest::newRow("Beta and more") << text("Beta2");
}

// A box would stop the click until it is answered, and nothing would be opened before.
void TestActionButtons::engineIsAskedOnlyForBeta()
{
    QFETCH(QString, kind);
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(kind, text("2.1"));
    world.install(text("2.1"), names("game_dx.exe|arena.exe|game_gl.exe"));
    QVERIFY(world.start());
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QCOMPARE(opened(desktop), QStringList{text("file:Alpha/") + kind + text("/2.1/arena.exe")});
}

// Whether the folder exists is not tested for this client: the box appears, and the offered
// version's folder is looked into.
void TestActionButtons::betaWithoutInstalledVersion()
{
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(text("Beta"), text("2.1"));
    world.install(text("2.1"), names("game_dx.exe"));
    QVERIFY(world.start());
    QVERIFY(QDir(text("Alpha/Beta/2.1")).removeRecursively());
    const auto answered = WindowDriver::answerNextDialog([](QDialog &dialog) { dialog.close(); });
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QVERIFY(*answered);
    QCOMPARE(opened(desktop), QStringList());
    QCOMPARE(world.progressText(), text("Client version: "));
    // Not refreshed either.
    QCOMPARE(world.buttons(), text("Play"));
}

void TestActionButtons::betaWithoutSuchAProgram()
{
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(text("Beta"), text("2.1"));
    world.install(text("2.1"), names("game.exe|game_dx.exe"));
    QVERIFY(world.start());
    const auto answered = WindowDriver::answerNextDialog([](QDialog &dialog) { dialog.close(); });
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay")), QString());
    QVERIFY(*answered);
    QCOMPARE(opened(desktop), QStringList());
    QCOMPARE(world.progressText(), text("Client version: 2.1"));
}

void TestActionButtons::betaTakesTheFirstMatch()
{
    const UrlCatcher desktop;
    InstallWorld world;
    world.offer(text("Beta"), text("2.1"));
    world.install(text("2.0"), names("Zone_GL.exe|arena_gl.exe|Beta_gl.exe|a_dx.exe"));
    QVERIFY(world.start());
    const auto answered = WindowDriver::answerNextDialog([](QDialog &dialog) { dialog.close(); });
    QCOMPARE(WindowDriver::click(*world.window, text("btnPlay_2")), QString());
    QVERIFY(*answered);
    QCOMPARE(opened(desktop), QStringList{text("file:Alpha/Beta/2.0/arena_gl.exe")});
}

QTEST_MAIN(TestActionButtons)
#include "tst_actionbuttons.moc"
