// The hidden authentication code: F12 asks for it, a change offers a restart.

#include "window/testform.h"

#include <QApplication>
#include <QFileInfo>
#include <QInputDialog>
#include <QKeyEvent>
#include <QMessageBox>
#include <QProcess>

namespace
{
bool isF12Press(QEvent *event)
{
    return event->type() == QEvent::KeyPress &&
           static_cast<QKeyEvent *>(event)->key() == Qt::Key_F12;
}
} // namespace

bool testform::event(QEvent *event)
{
    if (isF12Press(event)) {
        askAuthenticationCode();
        return true;
    }
    // kept: the plain widget handler, past the main window's own. The window has no tool bars,
    // docks or status bar for the main window's handler to serve.
    return QWidget::event(event); // NOLINT(bugprone-parent-virtual-call)
}

void testform::askAuthenticationCode()
{
    bool accepted = false;
    const QString code = QInputDialog::getText(this, tr("Authentication"),
                                               tr("Enter your custom authentication code:"),
                                               QLineEdit::Password, QString(), &accepted);
    // An empty text counts: it clears the code.
    if (!accepted || code == settings.auth) {
        return;
    }
    settings.auth = code;
    writeSettings();
    offerRestart();
}

void testform::offerRestart()
{
    QMessageBox box;
    box.setText(tr("The authentication code has been modified."));
    box.setInformativeText(tr("The launcher must be restarted for it to take effect, do you want "
                              "to do it now?"));
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::Yes);
    if (box.exec() != QMessageBox::Yes) {
        return;
    }
    QApplication::quit();
    // kept: the whole argument list goes along, so the new launcher receives its own path once
    // more as its first argument. It takes no arguments; scripts around it may count them.
    const QStringList arguments = QApplication::arguments();
    // A relative path counts from where the launcher was started. That need not be the game's
    // folder, where something else may stand in its way by now.
    const QFileInfo program(arguments.value(0));
    QProcess::startDetached(program.isAbsolute() && program.exists()
                                ? program.filePath()
                                : QApplication::applicationFilePath(),
                            arguments);
}
