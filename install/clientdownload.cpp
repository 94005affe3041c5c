// Downloading the selected client, and what the window shows meanwhile and at the end.

#include "base/labeltext.h"
#include "base/pathsafety.h"
#include "install/downloadmanager.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QUrl>

void testform::downloadClient()
{
    deleteInstallationFiles();

    // The entry's own value is only the sum of the code that the player typed.
    const QString password = selectedClientInfo.auth.isEmpty() ? QString() : settings.auth;
    // An earlier manager is neither stopped nor deleted; it goes with the window.
    downloadManager =
        new DownloadManager(this, selectedClientInfo.version, getParentDir(), password);

    ui->downloadProgressBar->setVisible(true);
    showDocumentText(*ui->downloadProgressText,
                     QStringLiteral("Downloading client version ") + selectedClientInfo.version);

    connect(downloadManager, SIGNAL(updateProgress(QString, int)), this,
            SLOT(updateProgress(QString, int)));
    connect(downloadManager, SIGNAL(updateFinished()), this, SLOT(updateFinished()));
    downloadManager->append(QUrl(selectedClientInfo.url));
}

void testform::updateProgress(QString msg, int prog)
{
    showDocumentText(*ui->downloadProgressText, QStringLiteral("Downloading client version ") +
                                                    selectedClientInfo.version +
                                                    QStringLiteral(": ") + msg);
    ui->downloadProgressBar->setVisible(true);
    ui->downloadProgressBar->setValue(prog);
    updateButtonStates(QStringLiteral("updateProgress"));
    // Painted now, not in a later turn of the event loop: unpacking blocks it, and the player would
    // look at a stale line until the end.
    ui->contentHome->repaint();
}

void testform::updateFinished()
{
    ui->downloadProgressBar->hide();
    installedVersion = selectedClientInfo.version;

    // The label's colour tells what was installed before the clean-up below.
    const QString installed = getInstalledVersion();
    const QString version =
        selectedClientInfo.version.isEmpty() ? installed : selectedClientInfo.version;

    // Success is judged by the directory alone: a failed transfer never makes it, a failed
    // extraction leaves it behind. What is no plain name, or a link, was never unpacked into,
    // though a folder may be there.
    if (isPlainEntry() && isFolderItself(getClientDir(version))) {
        showDocumentText(*ui->downloadProgressText, QStringLiteral("Download finished: version ") +
                                                        selectedClientInfo.version);
    } else {
        showDocumentText(*ui->downloadProgressText, QStringLiteral("Download failed"));
    }
    showClientVersion(version, installed);

    // kept: also after a failed download, so that a failed update leaves no version at all.
    deleteOlderVersions();
    deleteInstallationFiles();
    updateButtonStates(QStringLiteral("updateFinished"));
}
