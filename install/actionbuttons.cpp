// The Play, Update and Download buttons, and starting the client.

#include "base/labeltext.h"
#include "base/pathsafety.h"
#include "install/executables.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QUrl>

#include <algorithm>

namespace
{
void showEnabled(QPushButton *button)
{
    button->setEnabled(true);
    button->show();
}

// The first of such a name. A version that is a link, or a link in it, may lead to any program of
// the machine, and is passed over.
QString firstProgramIn(const QString &version, const QString &filter)
{
    if (!isFolderItself(version)) {
        return {};
    }
    const QFileInfoList entries = QDir(version).entryInfoList({filter});
    const auto first = std::find_if_not(entries.begin(), entries.end(), isLinkOrJunction);
    return first == entries.end() ? QString() : first->fileName();
}
} // namespace

void testform::updateButtonStates(QString state)
{
    const Installed installed = whatIsInstalled();
    showButtonsFor(installed);

    if (state == QLatin1String("updateProgress")) {
        enablePlay(false);
        enableUpdateAndDownload(false);
    } else if (state == QLatin1String("updateFinished")) {
        enablePlay(true);
        enableUpdateAndDownload(false);
    }

    // One Play button is enough: alone in Update's place, or left of Update.
    if (installed != Installed::Nothing) {
        ui->btnPlay->setVisible(installed == Installed::OfferedVersion);
        ui->btnPlay_2->setVisible(installed == Installed::AnotherVersion);
    }
}

testform::Installed testform::whatIsInstalled()
{
    const QString version = getInstalledVersion();
    if (version.isEmpty()) {
        return Installed::Nothing;
    }
    return version == selectedClientInfo.version ? Installed::OfferedVersion
                                                 : Installed::AnotherVersion;
}

void testform::showButtonsFor(Installed installed)
{
    if (installed == Installed::Nothing) {
        ui->btnPlay->hide();
        ui->btnPlay_2->hide();
        ui->btnUpdate->hide();
        showEnabled(ui->btnDownload);
        return;
    }
    showEnabled(ui->btnPlay);
    showEnabled(ui->btnPlay_2);
    if (installed == Installed::OfferedVersion) {
        ui->btnUpdate->hide();
    } else {
        showEnabled(ui->btnUpdate);
    }
    ui->btnDownload->hide();
}

// These two leave visibility alone: a button that shows stays where it is while disabled.
void testform::enablePlay(bool enable)
{
    ui->btnPlay->setEnabled(enable);
    ui->btnPlay_2->setEnabled(enable);
}

void testform::enableUpdateAndDownload(bool enable)
{
    ui->btnUpdate->setEnabled(enable);
    ui->btnDownload->setEnabled(enable);
}

// A screen reader reaches the buttons under the panel before anything was chosen. There is no
// client to download or play then, and the folder looked at would be the root of the drive.
bool testform::nothingChosenYet() const
{
    return !ui->serverButtonsGroup->isHidden() && selectedClientInfo.server.isEmpty() &&
           selectedClientInfo.client.isEmpty() && selectedClientInfo.url.isEmpty();
}

void testform::on_btnDownload_clicked()
{
    if (nothingChosenYet()) {
        return;
    }
    downloadClient();
    updateButtonStates(QStringLiteral("updateProgress"));
}

void testform::on_btnUpdate_clicked()
{
    on_btnDownload_clicked();
}

void testform::on_btnPlay_clicked()
{
    // By a name that is none a document could lead to any program of the machine.
    if (nothingChosenYet() || !isPlainEntry()) {
        return;
    }
    // kept: nothing ever sets the flag.
    if (isDownloadingClient) {
        updateButtonStates(QStringLiteral("updateProgress"));
        return;
    }
    if (Executables::askForEngine(selectedClientInfo.client)) {
        play(askGraphicsEngineFilter());
    } else if (isFolderItself(getClientDir(getInstalledVersion()))) {
        play();
    } else {
        updateButtonStates(QString());
    }
}

void testform::on_btnPlay_2_clicked()
{
    on_btnPlay_clicked();
}

// The name filter of the executable for the engine that the player chooses; closing the box
// without a choice means OpenGL, which every machine has.
QString testform::askGraphicsEngineFilter()
{
    QMessageBox box;
    box.setText(tr("Choose your graphics engine:"));
    const QPushButton *directX = box.addButton(tr("DirectX"), QMessageBox::YesRole);
    box.addButton(tr("OpenGL"), QMessageBox::NoRole);
    box.exec();
    return box.clickedButton() == directX ? Executables::directX() : Executables::openGl();
}

void testform::play(QString fileName)
{
    const QString version = getInstalledVersion();
    showDocumentText(*ui->downloadProgressText, QStringLiteral("Client version: ") + version);
    if (fileName.isEmpty()) {
        fileName = Executables::any();
    }
    const QString dir = getClientDir(version);
    const QString program = firstProgramIn(dir, fileName);
    if (program.isEmpty()) {
        return;
    }
    // The shell starts the program; whether it could is not examined.
    QDesktopServices::openUrl(QUrl::fromLocalFile(dir + QLatin1Char('/') + program));
}
