// The installed clients on disk: <server>/<client>/<version>/ under the working directory.

#include "base/labeltext.h"
#include "base/pathsafety.h"
#include "base/plainname.h"
#include "install/removal.h"
#include "install/versionweight.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QDir>
#include <QFileInfo>

namespace
{
// A single level, like every folder the tree is made of. A failure shows when the folder is used.
// Nothing is made outside the game's folder, whatever a document calls its servers.
void makeDirectory(const QString &path)
{
    if (!QDir(path).exists() && wouldLieInsideWorkingDirectory(path)) {
        (void)QDir::current().mkdir(path);
    }
}
} // namespace

// A document may name a server or a client that is a way to somewhere else. Nothing is looked for
// or removed there.
bool testform::hasPlainFolder() const
{
    return isPlainName(selectedClientInfo.server) && isPlainName(selectedClientInfo.client);
}

// Whether a client of the chosen entry may be installed and started. Of an empty version no folder
// is made.
bool testform::isPlainEntry() const
{
    return hasPlainFolder() &&
           (selectedClientInfo.version.isEmpty() || isPlainName(selectedClientInfo.version));
}

QString testform::getParentDir()
{
    QString parent = selectedClientInfo.server + QLatin1Char('/') + selectedClientInfo.client;
    // Asked for at every progress signal: usually both are there.
    if (isPlainEntry() && !QDir(parent).exists()) {
        makeDirectory(selectedClientInfo.server);
        makeDirectory(parent);
    }
    return parent;
}

QString testform::getClientDir(QString version)
{
    if (version.isEmpty()) {
        version = selectedClientInfo.version;
    }
    return getParentDir() + QLatin1Char('/') + version;
}

QString testform::getInstalledVersion()
{
    const QString parent = getParentDir();
    return hasPlainFolder() ? greatestVersion(QDir(parent).entryList()) : QString();
}

void testform::deleteOlderVersions()
{
    const QString parent = getParentDir();
    // With nothing selected the parent is the root of the drive, and a document can name a folder
    // elsewhere: only what lies in the game's own folder is ever removed, or where the player has
    // moved it by a link in the server's or the client's place.
    if (!hasPlainFolder()) {
        return;
    }
    const QString current = getClientDir();
    // kept: the first two entries are skipped unseen. They are "." and ".." unless a name that
    // sorts before them, such as "(backup)", takes their place and is so spared.
    const QStringList others = QDir(parent).entryList().mid(2);
    for (const QString &name : others) {
        // In that case one of these two comes later, and removing it would take the whole server
        // folder away.
        if (name == QLatin1String(".") || name == QLatin1String("..")) {
            continue;
        }
        const QString path = parent + QLatin1Char('/') + name;
        if (!path.endsWith(current)) {
            (void)Removal::removeVersion(parent, name);
        }
    }
}

void testform::deleteInstallationFiles()
{
    const QStringList archives = QDir::current().entryList({QStringLiteral("*.zip")});
    for (const QString &archive : archives) {
        // A directory of such a name stays.
        (void)Removal::removeFile(archive);
    }
}

// The selected client kind in upper case, and a version in brackets. Its colour tells how what is
// installed compares with what is offered.
void testform::showClientVersion(const QString &version, const QString &installed)
{
    showDocumentText(*ui->labelClient, selectedClientInfo.client.toUpper());
    showDocumentText(*ui->labelClientVersion, QLatin1Char('(') + version + QLatin1Char(')'));
    ui->labelClientVersion->setStyleSheet(
        QStringLiteral("color: %1; background-color: rgba(0,0,0,0);")
            .arg(versionColour(installed, selectedClientInfo.version)));
    // For those who do not see the colour.
    const bool isCurrent = installed == selectedClientInfo.version;
    ui->labelClientVersion->setAccessibleDescription(installed.isEmpty() ? tr("Not installed")
                                                     : isCurrent
                                                         ? tr("Installed and current")
                                                         : tr("Another version is offered"));
}

bool testform::fileExists(QString path)
{
    return QFileInfo(path).isFile();
}
