// The window without a mouse: Tab, Enter and Escape.

#include "ui_testform.h"
#include "window/keyboard.h"
#include "window/testform.h"

#include <QKeyEvent>

// The order in which one reads. Not among them: what does nothing when pressed (the header of the
// tab that is shown, the picture under the close area) and what the form keeps the keyboard from.
void testform::followKeyboard()
{
    const QList<QWidget *> order{
        ui->btnHome_2,     ui->btnNews_2,     ui->btnSelectServer, ui->btnClose,
        ui->btnLeft,       ui->btnHomeNews,   ui->btnRight,        ui->btnFacebook,
        ui->btnDiscord,    ui->btnNewsBig,    ui->btnNewsMedium1,  ui->btnNewsMedium2,
        ui->btnNewsSmall1, ui->btnNewsSmall2, ui->btnNewsSmall3,   ui->btnPlay_2,
        ui->btnDownload,   ui->btnUpdate,     ui->btnPlay};
    keyboard = new Keyboard(this, ui->serverButtonsGroup, order,
                            {ui->rememberCheckBox, ui->btnCloseIntro});
}

// Buttons were made.
void testform::keepKeyboardInStep()
{
    keyboard->watchButtons();
}

bool testform::focusNextPrevChild(bool next)
{
    return keyboard->move(next ? Keyboard::Direction::Next : Keyboard::Direction::Previous);
}

// What a button makes nothing of. It knows the space bar itself; Enter would reach it in a dialog
// only.
void testform::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Enter:
    case Qt::Key_Return:
        // A key that is held down has pressed once.
        event->setAccepted(!event->isAutoRepeat() && keyboard->press());
        break;
    case Qt::Key_Escape:
        event->setAccepted(leavePanel());
        break;
    default:
        QMainWindow::keyPressEvent(event);
        break;
    }
}

// Back to the choice that stands. The first panel, where nothing was chosen yet, stays.
bool testform::leavePanel()
{
    if (!panelOpenedAgain) {
        return false;
    }
    panelOpenedAgain = false;
    ui->serverButtonsGroup->hide();
    keyboard->moveToFirstOf({ui->btnSelectServer});
    return true;
}

// After a choice by keys, what it offers is the next thing to press.
void testform::offerActionToKeyboard()
{
    if (keyboard->isInUse()) {
        keyboard->moveToFirstOf({ui->btnPlay, ui->btnUpdate, ui->btnDownload});
    }
}
