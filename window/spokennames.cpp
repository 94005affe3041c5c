// What a screen reader says of the form, and what a tooltip tells where a picture says it alone.

#include "ui_testform.h"
#include "window/testform.h"
#include "window/tooltip.h"

void testform::nameForm()
{
    nameButtons();
    const QString shown = tr("The page that is shown");
    ui->btnHome->setAccessibleDescription(shown);
    ui->btnNews->setAccessibleDescription(shown);
    ui->serverButtonsGroup->setAccessibleName(tr("Server selection"));
    ui->downloadProgressBar->setAccessibleName(tr("Download"));
    ui->downloadProgressBar->setAccessibleDescription(
        tr("How much of the client's archive has arrived, in percent"));
}

// Tiles and slides get theirs from the document.
void testform::nameButtons()
{
    ui->btnHome->setAccessibleName(tr("Home"));
    ui->btnHome_2->setAccessibleName(tr("Home"));
    ui->btnNews->setAccessibleName(tr("News"));
    ui->btnNews_2->setAccessibleName(tr("News"));
    ui->btnSelectServer->setAccessibleName(tr("Select server"));
    ui->rememberCheckBox->setAccessibleName(ui->rememberCheckBox->text());

    explainButton(ui->btnClose, tr("Close"));
    explainButton(ui->btnCloseIntro, tr("Close"));
    explainButton(ui->btnFullscreen, tr("Full screen"));
    explainButton(ui->btnMinimize, tr("Minimise"));
    ui->btnClose_->setAccessibleName(tr("Picture of Close"));
    ui->btnFullscreen_->setAccessibleName(tr("Picture of Full screen"));
    ui->btnMinimize_->setAccessibleName(tr("Picture of Minimise"));

    explainButton(ui->btnLeft, tr("Previous slide"));
    explainButton(ui->btnRight, tr("Next slide"));
    explainButton(ui->btnFacebook, tr("Facebook"));
    explainButton(ui->btnDiscord, tr("Discord"));
    explainButton(ui->btnDownload, tr("Download"));
    explainButton(ui->btnUpdate, tr("Update"));
    explainButton(ui->btnPlay, tr("Play"));
    explainButton(ui->btnPlay_2, tr("Play"));
}

void testform::explainButton(QWidget *button, const QString &what)
{
    button->setAccessibleName(what);
    new ToolTip(button, what);
}
