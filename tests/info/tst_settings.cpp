#include "info/world.h"
#include "support/links.h"
#include "support/localencoding.h"
#include "support/windowdriver.h"
#include "ui_testform.h"

#include <QCloseEvent>
#include <QDir>
#include <QFile>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QStatusBar>
#include <QStatusTipEvent>
#include <QTest>

#ifndef Q_OS_WIN
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace
{
// In the encoding of western Europe as well as in UTF-8.
const QString umlaut = QString::fromUtf8("\xC3\x84");
const QString euro = QString::fromUtf8("\xE2\x82\xAC");

// The two letters with that between them.
QByteArray inLocalEncoding(const char *between)
{
    return LocalEncoding::bytes(umlaut + QString::fromLatin1(between) + euro);
}

const QString settingsTxt = QStringLiteral("settings.txt");

// What the player does in the F12 dialog.
void typeCode(QDialog &dialog, const QString &code)
{
    auto *edit = dialog.findChild<QLineEdit *>();
    if (edit != nullptr) {
        edit->clear();
        QTest::keyClicks(edit, code);
    }
}

// Presses F12 in the shown window; the dialog is answered by the function.
bool pressF12(testform &window, const std::function<void(QDialog &)> &answer)
{
    const auto answered = WindowDriver::answerNextDialog(answer);
    QTest::keyClick(&window, Qt::Key_F12);
    return *answered;
}

// Notes which of the plain widget's handlers were called.
class WatchedWindow : public testform
{
public:
    QStringList handled;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        handled << QStringLiteral("key press");
        testform::keyPressEvent(event);
    }
    void keyReleaseEvent(QKeyEvent *event) override
    {
        handled << QStringLiteral("key release");
        testform::keyReleaseEvent(event);
    }
    void closeEvent(QCloseEvent *) override { handled << QStringLiteral("close"); }
    void changeEvent(QEvent *event) override
    {
        if (event->type() == QEvent::LanguageChange) {
            handled << QStringLiteral("change");
        }
    }
};

struct Fields {
    QString server;
    QString client;
    QString auth;
    bool remember = true;
};
} // namespace
Q_DECLARE_METATYPE(Fields)

// settings.txt and the hidden authentication code.
class TestSettingsFile : public QObject
{
    Q_OBJECT

private slots:
    void fileIsRead_data();
    void fileIsRead();
    void missingFileLeavesTheDefaults_data();
    void missingFileLeavesTheDefaults();
    void checkBoxMirrorsTheFlag_data();
    void checkBoxMirrorsTheFlag();
    void fileIsWritten_data();
    void fileIsWritten();
    void fileThatCannotBeWrittenIsSkipped();
    void fileIsReplacedAsAWhole();
    void nothingIsWrittenThroughALink_data();
    void nothingIsWrittenThroughALink();
    void whatIsNoSettingsFileIsLeftAlone_data();
    void whatIsNoSettingsFileIsLeftAlone();
    void whatCouldNotBeReadBackIsNotWritten_data();
    void whatCouldNotBeReadBackIsNotWritten();
    void whatIsWrittenIsReadBack_data();
    void whatIsWrittenIsReadBack();

    void codeIsAskedForOnF12();
    void sameCodeChangesNothing_data();
    void sameCodeChangesNothing();
    void cancelChangesNothing_data();
    void cancelChangesNothing();
    void changedCodeIsSavedAndRestartOffered_data();
    void changedCodeIsSavedAndRestartOffered();
    void refusedRestartKeepsRunningWithTheOldTable();
    void documentMayArriveWhileTheDialogIsOpen();
    void f12IsConsumed();
    void otherKeysAreNot_data();
    void otherKeysAreNot();
    void otherEventsGoOnToThePlainWidget();
    void restartStartsACopyWithItsPathOnceMore_data();
    void restartStartsACopyWithItsPathOnceMore();
    void restartStartsNothingElseByARelativePath();
};

void TestSettingsFile::fileIsRead_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<Fields>("fields");
    const QString none;
    const QString alpha = QStringLiteral("Alpha");
    const QString official = QStringLiteral("Official");
    const QString code = QStringLiteral("code");
    const auto row = [](const char *name, const QByteArray &content, const Fields &fields) {
        QTest::newRow(name) << content << fields;
    };
    row("four fields", "Alpha|Official|true|code", {alpha, official, code, true});
    row("the flag false", "Alpha|Official|false|code", {alpha, official, code, false});
    row("True with a capital letter is false", "Alpha|Official|True|code",
        {alpha, official, code, false});
    row("three fields leave the code empty", "Alpha|Official|true", {alpha, official, none, true});
    row("a fourth field is the code, even when empty", "Alpha|Official|true|",
        {alpha, official, none, true});
    row("a fifth field is ignored", "Alpha|Official|true|code|five", {alpha, official, code, true});
    row("six fields", "Alpha|Official|true|code|five|six", {alpha, official, code, true});
    row("two fields", "Alpha|Official", {alpha, official, none, false});
    row("one field", "Alpha", {alpha, none, none, false});
    row("an empty file", "", {none, none, none, false});
    row("a line end makes the third field false", "Alpha|Official|true\n",
        {alpha, official, none, false});
    row("a line end stays in the code", "Alpha|Official|true|code\n",
        {alpha, official, QStringLiteral("code\n"), true});
    row("a line end of two characters is read as one", "Alpha|Official|true|code\r\n",
        {alpha, official, QStringLiteral("code\n"), true});
    row("a second line belongs to the last field", "Alpha|Official|true|code\nmore",
        {alpha, official, QStringLiteral("code\nmore"), true});
    row("letters beyond ASCII in the local encoding", inLocalEncoding("|Official|true|"),
        {umlaut, official, euro, true});
}

void TestSettingsFile::fileIsRead()
{
    QFETCH(QByteArray, content);
    QFETCH(Fields, fields);
    const ScratchFolder folder;
    ScratchFolder::write(settingsTxt, content);
    const testform window;
    QCOMPARE(window.settings.server, fields.server);
    QCOMPARE(window.settings.client, fields.client);
    QCOMPARE(window.settings.auth, fields.auth);
    QCOMPARE(window.settings.rememberSettings, fields.remember);
    QCOMPARE(window.ui->rememberCheckBox->isChecked(), fields.remember);
    // Reading changes nothing.
    QCOMPARE(ScratchFolder::read(settingsTxt), content);
}

void TestSettingsFile::missingFileLeavesTheDefaults_data()
{
    QTest::addColumn<bool>("folderInstead");
    QTest::newRow("there is none") << false;
    QTest::newRow("a folder of its name") << true;
}

void TestSettingsFile::missingFileLeavesTheDefaults()
{
    QFETCH(bool, folderInstead);
    const ScratchFolder folder;
    if (folderInstead) {
        ScratchFolder::makeFolder(settingsTxt);
    }
    const QStringList before = ScratchFolder::tree();
    const testform window;
    QCOMPARE(window.settings.server, QString());
    QCOMPARE(window.settings.client, QString());
    QCOMPARE(window.settings.auth, QString());
    QVERIFY(window.settings.rememberSettings);
    QVERIFY(window.ui->rememberCheckBox->isChecked());
    QCOMPARE(ScratchFolder::tree(), before);
}

void TestSettingsFile::checkBoxMirrorsTheFlag_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("checked");
    QByteArray everyByte;
    for (int value = 0; value < 256; ++value) {
        everyByte += static_cast<char>(value);
    }
    QTest::newRow("true") << QByteArray("||true|") << true;
    QTest::newRow("false") << QByteArray("||false|") << false;
    QTest::newRow("bytes of every value, one bar among them") << everyByte << false;
    QTest::newRow("bytes of every value after a good line")
        << "Alpha|Official|true|" + everyByte << true;
}

void TestSettingsFile::checkBoxMirrorsTheFlag()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, checked);
    const ScratchFolder folder;
    ScratchFolder::write(settingsTxt, content);
    testform window;
    QCOMPARE(window.ui->rememberCheckBox->isChecked(), checked);
    QVERIFY(WindowDriver::show(window));

    // A click turns the flag, and reaches the file only with the next write.
    QCOMPARE(WindowDriver::click(window, QStringLiteral("rememberCheckBox")), QString());
    QCOMPARE(window.settings.rememberSettings, !checked);
    QCOMPARE(ScratchFolder::read(settingsTxt), content);
    window.settings.auth.clear();
    window.settings.server.clear();
    window.settings.client.clear();
    window.writeSettings();
    QCOMPARE(ScratchFolder::read(settingsTxt), QByteArray(checked ? "||false|" : "||true|"));
}

void TestSettingsFile::fileIsWritten_data()
{
    QTest::addColumn<QByteArray>("before"); // null: no file
    QTest::addColumn<Fields>("fields");
    QTest::addColumn<QByteArray>("after");
    const QString alpha = QStringLiteral("Alpha");
    const QString beta = QStringLiteral("Beta");
    QTest::newRow("an absent file is created, without a line end")
        << QByteArray() << Fields{alpha, beta, QString(), true} << QByteArray("Alpha|Beta|true|");
    QTest::newRow("a shorter one is replaced")
        << QByteArray("x") << Fields{alpha, beta, QStringLiteral("code"), false}
        << QByteArray("Alpha|Beta|false|code");
    QTest::newRow("nothing of a longer one stays")
        << QByteArray(500, 'x') << Fields{alpha, beta, QStringLiteral("code"), true}
        << QByteArray("Alpha|Beta|true|code");
    QTest::newRow("letters beyond ASCII in the local encoding")
        << QByteArray() << Fields{umlaut, beta, euro, true} << inLocalEncoding("|Beta|true|");
    QTest::newRow("bars are not escaped")
        << QByteArray() << Fields{QStringLiteral("A|B"), beta, QStringLiteral("c|d"), true}
        << QByteArray("A|B|Beta|true|c|d");
}

void TestSettingsFile::fileIsWritten()
{
    QFETCH(QByteArray, before);
    QFETCH(Fields, fields);
    QFETCH(QByteArray, after);
    const ScratchFolder folder;
    testform window;
    if (!before.isNull()) {
        ScratchFolder::write(settingsTxt, before);
    }
    window.settings = Settings(fields.server, fields.client, fields.remember, fields.auth);
    window.writeSettings();
    QCOMPARE(ScratchFolder::read(settingsTxt), after);
}

void TestSettingsFile::fileThatCannotBeWrittenIsSkipped()
{
    const ScratchFolder folder;
    ScratchFolder::write(QStringLiteral("settings.txt/within"), "mine");
    const QStringList before = ScratchFolder::tree();
    testform window;
    window.settings.server = QStringLiteral("Alpha");
    window.writeSettings();
    QCOMPARE(ScratchFolder::tree(), before);
    QCOMPARE(ScratchFolder::read(QStringLiteral("settings.txt/within")), QByteArray("mine"));
}

// Whoever looks meanwhile, or after a kill, finds the old line or the new one: a second name of the
// file still has the old one.
void TestSettingsFile::fileIsReplacedAsAWhole()
{
#ifdef Q_OS_WIN
    QSKIP("a second name cannot be given to a file here");
#else
    const ScratchFolder folder;
    ScratchFolder::write(settingsTxt, "Alpha|Official|true|");
    QCOMPARE(link("settings.txt", "before.txt"), 0);
    testform window;
    window.settings.client = QStringLiteral("Beta");
    window.writeSettings();
    QCOMPARE(ScratchFolder::read(settingsTxt), QByteArray("Alpha|Beta|true|"));
    QCOMPARE(ScratchFolder::read(QStringLiteral("before.txt")), QByteArray("Alpha|Official|true|"));
    QCOMPARE(ScratchFolder::tree(), (QStringList{QStringLiteral("before.txt"), settingsTxt}));
#endif
}

void TestSettingsFile::nothingIsWrittenThroughALink_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("to a file elsewhere") << QStringLiteral("../letter.txt");
    QTest::newRow("to a file in the folder") << QStringLiteral("letter.txt");
    QTest::newRow("to nothing yet") << QStringLiteral("../new.txt");
}

void TestSettingsFile::nothingIsWrittenThroughALink()
{
    QFETCH(QString, target);
    const ScratchFolder folder;
    ScratchFolder::write(QStringLiteral("../letter.txt"), "mine");
    ScratchFolder::write(QStringLiteral("letter.txt"), "mine");
    MAKE_LINK(target, settingsTxt);
    testform window;
    window.settings.server = QStringLiteral("Alpha");
    window.writeSettings();
    QVERIFY(QFileInfo(settingsTxt).isSymLink());
    QCOMPARE(ScratchFolder::read(QStringLiteral("../letter.txt")), QByteArray("mine"));
    QCOMPARE(ScratchFolder::read(QStringLiteral("letter.txt")), QByteArray("mine"));
    QVERIFY(!QFile::exists(QStringLiteral("../new.txt")));
}

void TestSettingsFile::whatIsNoSettingsFileIsLeftAlone_data()
{
    QTest::addColumn<bool>("isPipe");
    QTest::newRow("a file that no launcher wrote: 2 MiB") << false;
#ifndef Q_OS_WIN
    QTest::newRow("a pipe, at which a reader would wait for ever") << true;
#endif
}

void TestSettingsFile::whatIsNoSettingsFileIsLeftAlone()
{
    QFETCH(bool, isPipe);
    const ScratchFolder folder;
    if (isPipe) {
#ifndef Q_OS_WIN
        QCOMPARE(mkfifo("settings.txt", 0600), 0);
#endif
        testform window;
        QCOMPARE(window.settings.server, QString());
        window.writeSettings();
        QVERIFY(!QFileInfo(settingsTxt).isFile());
        return;
    }
    ScratchFolder::write(settingsTxt, "Alpha|Official|false|" + QByteArray(2 * 1024 * 1024, 'x'));
    const testform window;
    QCOMPARE(window.settings.server, QString());
    QCOMPARE(window.settings.rememberSettings, true);
}

void TestSettingsFile::whatCouldNotBeReadBackIsNotWritten_data()
{
    QTest::addColumn<int>("surplus");
    QTest::newRow("as much as is read") << 0;
    QTest::newRow("a byte more") << 1;
}

void TestSettingsFile::whatCouldNotBeReadBackIsNotWritten()
{
    QFETCH(int, surplus);
    const ScratchFolder folder;
    const QByteArray before = "Alpha|Official|true|code";
    ScratchFolder::write(settingsTxt, before);
    testform window;
    const QString rest = QStringLiteral("|Official|true|code");
    window.settings.server = QString(1024 * 1024 - rest.size() + surplus, QLatin1Char('S'));
    window.writeSettings();
    QCOMPARE(ScratchFolder::read(settingsTxt),
             surplus > 0 ? before : (window.settings.server + rest).toUtf8());
    const testform next;
    QCOMPARE(next.settings.auth, QStringLiteral("code"));
    QCOMPARE(ScratchFolder::tree(), QStringList{settingsTxt});
}

void TestSettingsFile::whatIsWrittenIsReadBack_data()
{
    QTest::addColumn<Fields>("fields");
    QTest::newRow("a choice") << Fields{QStringLiteral("Alpha"), QStringLiteral("Beta"), {}, true};
    QTest::newRow("a choice not to be remembered")
        << Fields{QStringLiteral("Alpha"), QStringLiteral("Beta"), {}, false};
    QTest::newRow("only a code") << Fields{{}, {}, QStringLiteral("s3cret code!"), true};
    QTest::newRow("letters of the local encoding") << Fields{umlaut, euro, umlaut + euro, true};
#ifndef Q_OS_WIN
    // There the file's encoding has no room for them.
    QTest::newRow("letters of several scripts")
        << Fields{QString::fromUcs4(U"\u0413\u043B\u0443\u0442 \u00E9"), QStringLiteral("Beta"),
                  QString::fromUcs4(U"\u4E2D\u6587\U0001F525"), true};
#endif
    QTest::newRow("blanks at both ends")
        << Fields{QStringLiteral(" Alpha "), QStringLiteral(" "), QStringLiteral(" c "), true};
}

void TestSettingsFile::whatIsWrittenIsReadBack()
{
    QFETCH(Fields, fields);
    const ScratchFolder folder;
    {
        testform window;
        window.settings = Settings(fields.server, fields.client, fields.remember, fields.auth);
        window.writeSettings();
    }
    const testform window;
    QCOMPARE(window.settings.server, fields.server);
    QCOMPARE(window.settings.client, fields.client);
    QCOMPARE(window.settings.auth, fields.auth);
    QCOMPARE(window.settings.rememberSettings, fields.remember);
}

void TestSettingsFile::codeIsAskedForOnF12()
{
    const ScratchFolder folder;
    ScratchFolder::write(settingsTxt, "||true|old code");
    testform window;
    QVERIFY(WindowDriver::show(window));
    bool isInput = false;
    bool isModal = false;
    bool isChild = false;
    QString title;
    QString label;
    QString text = QStringLiteral("unread");
    QLineEdit::EchoMode echo = QLineEdit::Normal;
    QVERIFY(pressF12(window, [&](QDialog &dialog) {
        if (const auto *input = qobject_cast<QInputDialog *>(&dialog)) {
            isInput = input->inputMode() == QInputDialog::TextInput;
            label = input->labelText();
            text = input->textValue();
            echo = input->textEchoMode();
        }
        isModal = dialog.isModal();
        isChild = dialog.parent() == &window;
        title = dialog.windowTitle();
        dialog.reject();
    }));
    QVERIFY(isInput);
    QVERIFY(isModal);
    QVERIFY(isChild);
    QCOMPARE(title, QStringLiteral("Authentication"));
    QCOMPARE(label, QStringLiteral("Enter your custom authentication code:"));
    QCOMPARE(text, QString());
    QCOMPARE(echo, QLineEdit::Password);
}

void TestSettingsFile::sameCodeChangesNothing_data()
{
    QTest::addColumn<QByteArray>("content"); // null: no file
    QTest::addColumn<QString>("typed");
    QTest::newRow("the code that is set")
        << QByteArray("A|B|true|code|kept as it is") << QStringLiteral("code");
    QTest::newRow("nothing, and none is set") << QByteArray() << QString();
    QTest::newRow("nothing, and none is set in the file") << QByteArray("A|B|true") << QString();
}

void TestSettingsFile::sameCodeChangesNothing()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, typed);
    const ScratchFolder folder;
    if (!content.isNull()) {
        ScratchFolder::write(settingsTxt, content);
    }
    testform window;
    QVERIFY(WindowDriver::show(window));
    const QString before = window.settings.auth;
    std::unique_ptr<DialogGuard> furtherDialogs;
    QVERIFY(pressF12(window, [&](QDialog &dialog) {
        typeCode(dialog, typed);
        dialog.accept();
        furtherDialogs = std::make_unique<DialogGuard>();
    }));
    QCOMPARE(furtherDialogs->titles, QStringList());
    QCOMPARE(window.settings.auth, before);
    QCOMPARE(QFile::exists(settingsTxt), !content.isNull());
    QCOMPARE(ScratchFolder::read(settingsTxt), content);
}

void TestSettingsFile::cancelChangesNothing_data()
{
    QTest::addColumn<QString>("typed");
    QTest::newRow("nothing typed") << QString();
    QTest::newRow("another code typed") << QStringLiteral("other");
}

void TestSettingsFile::cancelChangesNothing()
{
    QFETCH(QString, typed);
    const ScratchFolder folder;
    const QByteArray content = "A|B|true|code|kept as it is";
    ScratchFolder::write(settingsTxt, content);
    testform window;
    QVERIFY(WindowDriver::show(window));
    std::unique_ptr<DialogGuard> furtherDialogs;
    QVERIFY(pressF12(window, [&](QDialog &dialog) {
        typeCode(dialog, typed);
        dialog.reject();
        furtherDialogs = std::make_unique<DialogGuard>();
    }));
    QCOMPARE(furtherDialogs->titles, QStringList());
    furtherDialogs.reset();
    QCOMPARE(window.settings.auth, QStringLiteral("code"));
    QCOMPARE(ScratchFolder::read(settingsTxt), content);

    // The key is consumed all the same.
    QKeyEvent press(QEvent::KeyPress, Qt::Key_F12, Qt::NoModifier);
    press.ignore();
    const auto answered = WindowDriver::answerNextDialog([](QDialog &dialog) { dialog.reject(); });
    QVERIFY(window.event(&press));
    QVERIFY(*answered);
}

void TestSettingsFile::changedCodeIsSavedAndRestartOffered_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("a first code") << QByteArray("Alpha|Beta|false|") << QStringLiteral("new code")
                                  << QByteArray("Alpha|Beta|false|new code");
    QTest::newRow("another code") << QByteArray("Alpha|Beta|true|old and longer code")
                                  << QStringLiteral("new") << QByteArray("Alpha|Beta|true|new");
    QTest::newRow("the same code in another case")
        << QByteArray("Alpha|Beta|true|code") << QStringLiteral("Code")
        << QByteArray("Alpha|Beta|true|Code");
    QTest::newRow("nothing typed clears the code")
        << QByteArray("Alpha|Beta|true|code") << QString() << QByteArray("Alpha|Beta|true|");
}

void TestSettingsFile::changedCodeIsSavedAndRestartOffered()
{
    QFETCH(QByteArray, before);
    QFETCH(QString, typed);
    QFETCH(QByteArray, after);
    const ScratchFolder folder;
    ScratchFolder::write(settingsTxt, before);
    testform window;
    QVERIFY(WindowDriver::show(window));

    QString text;
    QString information;
    QMessageBox::StandardButtons buttons;
    bool isYesDefault = false;
    bool hasParent = true;
    QByteArray written;
    std::shared_ptr<bool> offered;
    QVERIFY(pressF12(window, [&](QDialog &dialog) {
        typeCode(dialog, typed);
        offered = WindowDriver::answerNextDialog([&](QDialog &next) {
            if (auto *box = qobject_cast<QMessageBox *>(&next)) {
                text = box->text();
                information = box->informativeText();
                buttons = box->standardButtons();
                isYesDefault = box->defaultButton() != nullptr &&
                               box->defaultButton() == box->button(QMessageBox::Yes);
                hasParent = box->parent() != nullptr;
                // Saved before the question.
                written = ScratchFolder::read(settingsTxt);
                box->button(QMessageBox::No)->click();
            }
        });
        dialog.accept();
    }));
    QVERIFY(offered != nullptr && *offered);
    QCOMPARE(text, QStringLiteral("The authentication code has been modified."));
    QCOMPARE(information, QStringLiteral("The launcher must be restarted for it to take effect, do "
                                         "you want to do it now?"));
    QCOMPARE(buttons, QMessageBox::Yes | QMessageBox::No);
    QVERIFY(isYesDefault);
    QVERIFY(!hasParent);
    QCOMPARE(written, after);
    QCOMPARE(ScratchFolder::read(settingsTxt), after);
    QCOMPARE(window.settings.auth, typed);
}

void TestSettingsFile::refusedRestartKeepsRunningWithTheOldTable()
{
    World world;
    world.publish(
        {Documents::client(QStringLiteral("Alpha"), QStringLiteral("Official"),
                           QStringLiteral("1.0")),
         Documents::client(QStringLiteral("Secret"), QStringLiteral("Beta"), QStringLiteral("1.0"),
                           QStringLiteral("u"), Documents::sumOf(QStringLiteral("code")))});
    testform window;
    QVERIFY(World::answered(window));
    QVERIFY(WindowDriver::show(window));
    bool askedToRestart = false;
    QTimer::singleShot(0, &window, [&] {
        (void)pressF12(window, [&](QDialog &dialog) {
            typeCode(dialog, QStringLiteral("code"));
            (void)WindowDriver::answerNextDialog([&](QDialog &box) {
                askedToRestart = true;
                static_cast<QMessageBox &>(box).button(QMessageBox::No)->click();
            });
            dialog.accept();
        });
        // Runs only if the loop goes on.
        QTimer::singleShot(50, &window, [] { QApplication::exit(7); });
    });
    QCOMPARE(QApplication::exec(), 7);
    QVERIFY(askedToRestart);
    QCOMPARE(window.clientInfos.keys(), QStringList{QStringLiteral("Alpha")});

    // The next start offers the entry.
    testform next;
    QVERIFY(World::answered(next));
    QVERIFY(next.clientInfos.contains(QStringLiteral("Secret")));
}

void TestSettingsFile::documentMayArriveWhileTheDialogIsOpen()
{
    World world;
    const QString path = QStringLiteral("launcher.xml");
    world.server.serveHeld(
        path, Documents::launcher({Documents::client(
                  QStringLiteral("Alpha"), QStringLiteral("Official"), QStringLiteral("1.0"))}));
    testform window;
    QVERIFY(WindowDriver::show(window));
    bool thereBefore = true;
    bool arrived = false;
    QVERIFY(pressF12(window, [&](QDialog &dialog) {
        thereBefore = !window.clientInfos.isEmpty();
        world.server.release(path);
        arrived = QTest::qWaitFor([&window] { return !window.clientInfos.isEmpty(); }, worldLimit);
        dialog.reject();
    }));
    QVERIFY(!thereBefore);
    QVERIFY(arrived);
    QVERIFY(window.ui->labelConnecting->isHidden());
}

void TestSettingsFile::f12IsConsumed()
{
    const ScratchFolder folder;
    WatchedWindow window;
    const DialogGuard dialogs;

    QKeyEvent press(QEvent::KeyPress, Qt::Key_F12, Qt::NoModifier);
    QVERIFY(window.event(&press));
    QCOMPARE(dialogs.titles, QStringList{QStringLiteral("Authentication")});
    QKeyEvent withShift(QEvent::KeyPress, Qt::Key_F12, Qt::ShiftModifier);
    QVERIFY(window.event(&withShift));
    QCOMPARE(dialogs.titles.size(), 2);
    // It never reached the widget's own handler.
    QCOMPARE(window.handled, QStringList());
    QVERIFY(press.isAccepted());
}

void TestSettingsFile::otherKeysAreNot_data()
{
    QTest::addColumn<QEvent::Type>("type");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QString>("handler");
    const QString pressed = QStringLiteral("key press");
    QTest::newRow("F11") << QEvent::KeyPress << Qt::Key_F11 << pressed;
    QTest::newRow("F1") << QEvent::KeyPress << Qt::Key_F1 << pressed;
    QTest::newRow("a letter") << QEvent::KeyPress << Qt::Key_A << pressed;
    QTest::newRow("Return") << QEvent::KeyPress << Qt::Key_Return << pressed;
    QTest::newRow("Escape") << QEvent::KeyPress << Qt::Key_Escape << pressed;
    QTest::newRow("letting go of F12")
        << QEvent::KeyRelease << Qt::Key_F12 << QStringLiteral("key release");
}

void TestSettingsFile::otherKeysAreNot()
{
    QFETCH(QEvent::Type, type);
    QFETCH(Qt::Key, key);
    QFETCH(QString, handler);
    const ScratchFolder folder;
    WatchedWindow window;
    const DialogGuard dialogs;
    QKeyEvent event(type, key, Qt::NoModifier);
    (void)window.event(&event);
    QCOMPARE(window.handled, QStringList{handler});
    QVERIFY(!event.isAccepted());
    QCOMPARE(dialogs.titles, QStringList());
}

void TestSettingsFile::otherEventsGoOnToThePlainWidget()
{
    const ScratchFolder folder;
    WatchedWindow window;
    QCloseEvent close;
    QVERIFY(window.event(&close));
    QEvent change(QEvent::LanguageChange);
    QVERIFY(window.event(&change));
    QCOMPARE(window.handled, (QStringList{QStringLiteral("close"), QStringLiteral("change")}));

    // The main window's own handler is passed over: it would show the tip in a status bar.
    auto *bar = new QStatusBar;
    window.setStatusBar(bar);
    QStatusTipEvent tip(QStringLiteral("a tip"));
    QVERIFY(!window.event(&tip));
    QCOMPARE(bar->currentMessage(), QString());
}

void TestSettingsFile::restartStartsACopyWithItsPathOnceMore_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("without arguments") << QStringList();
    QTest::newRow("with arguments of its own")
        << QStringList{QStringLiteral("one"), QStringLiteral("two words"), QString()};
}

void TestSettingsFile::restartStartsACopyWithItsPathOnceMore()
{
    QFETCH(QStringList, arguments);
    const ScratchFolder folder;
    // The probe itself, under the launcher's name: started once more, it notes how.
#ifdef Q_OS_WIN
    const QString ending = QStringLiteral(".exe");
#else
    const QString ending;
#endif
    const QString program = folder.path() + QStringLiteral("/launcher") + ending;
    QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + QStringLiteral("/restartprobe") +
                            ending,
                        program));

    QProcess probe;
    probe.start(program, arguments);
    QVERIFY(probe.waitForFinished(30000));
    // It quit by itself, in good order.
    QCOMPARE(probe.exitStatus(), QProcess::NormalExit);
    QCOMPARE(probe.exitCode(), 0);
    QCOMPARE(ScratchFolder::read(settingsTxt), QByteArray("||true|new code"));

    const QString noted = QStringLiteral("noted");
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(noted), worldLimit);
    QStringList expected{program, program};
    expected += arguments;
    QString text;
    for (const QString &argument : qAsConst(expected)) {
        text += QStringLiteral("[%1]\n").arg(argument);
    }
    QCOMPARE(QDir::fromNativeSeparators(QString::fromUtf8(ScratchFolder::read(noted))), text);
    // A program that still runs cannot be removed everywhere.
    QVERIFY(QTest::qWaitFor([&program] { return QFile::remove(program); }, worldLimit));
}

// A relative path counts from where the launcher was started. In the game's folder an archive may
// have put something else there.
void TestSettingsFile::restartStartsNothingElseByARelativePath()
{
#ifdef Q_OS_WIN
    QSKIP("nothing but a real program could stand in its place here");
#else
    const ScratchFolder folder;
    const QString relative = QStringLiteral("home/launcher");
    ScratchFolder::makeFolder(QStringLiteral("home"));
    QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + QStringLiteral("/restartprobe"),
                        relative));
    const QString other = QStringLiteral("game/home/launcher");
    const QString noted = QStringLiteral("game/noted");
    ScratchFolder::write(other, "#!/bin/sh\necho something else > noted\n");
    QVERIFY(QFile::setPermissions(other, QFile::permissions(relative)));

    QProcess probe;
    probe.start(relative, QStringList());
    QVERIFY(probe.waitForFinished(30000));
    QCOMPARE(probe.exitCode(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(noted).size() > 0, worldLimit);
    const QString program = QFileInfo(relative).canonicalFilePath();
    QCOMPARE(QString::fromUtf8(ScratchFolder::read(noted)),
             QStringLiteral("[%1]\n[%2]\n").arg(program, relative));
#endif
}

QTEST_MAIN(TestSettingsFile)
#include "tst_settings.moc"
