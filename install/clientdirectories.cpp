// The installed clients on disk: <server>/<client>/<version>/ under the working directory.

#include "install/pathsafety.h"
#include "install/versionweight.h"
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

void removeFile(const QString &path)
{
    // Windows refuses to remove a file that is marked read-only. A link that cannot be removed is
    // left as it is: the permissions would be those of what it leads to.
    if (!QFile::remove(path) && !QFileInfo(path).isSymLink()) {
        (void)QFile::setPermissions(path, QFile::permissions(path) | QFile::WriteUser);
        (void)QFile::remove(path);
    }
}

// The toolkit's own recursive removal follows a junction and would empty the folder that a player
// has moved to another drive. Here a link goes, and what it leads to stays.
void removeContents(const QString &path)
{
    const QFileInfoList entries = QDir(path).entryInfoList(QDir::AllEntries | QDir::Hidden |
                                                           QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo &entry : entries) {
        const QString name = entry.filePath();
        if (entry.isJunction()) {
            (void)QDir().rmdir(name);
        } else if (entry.isDir() && !entry.isSymLink()) {
            removeContents(name);
            (void)QDir().rmdir(name);
        } else {
            removeFile(name);
        }
    }
}

// Directories only; a link in a directory's place is left alone, what it leads to does not lie in
// the folder that is being tidied.
void removeDirectory(const QString &path)
{
    const QFileInfo info(path);
    if (info.isDir() && !info.isSymLink() && !info.isJunction()) {
        removeContents(path);
        (void)QDir().rmdir(path);
    }
}
} // namespace

QString testform::getParentDir()
{
    QString parent = selectedClientInfo.server + QLatin1Char('/') + selectedClientInfo.client;
    makeDirectory(selectedClientInfo.server);
    makeDirectory(parent);
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
    return greatestVersion(QDir(getParentDir()).entryList());
}

void testform::deleteOlderVersions()
{
    const QString parent = getParentDir();
    // With nothing selected the parent is the root of the drive, and a document can name a folder
    // elsewhere: only what lies in the game's own folder is ever removed.
    if (selectedClientInfo.server.isEmpty() || selectedClientInfo.client.isEmpty() ||
        !liesInsideWorkingDirectory(parent)) {
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
            removeDirectory(path);
        }
    }
}

void testform::deleteInstallationFiles()
{
    const QStringList archives = QDir::current().entryList({QStringLiteral("*.zip")});
    for (const QString &archive : archives) {
        // Fails on a directory of such a name, which therefore stays.
        (void)QFile::remove(archive);
    }
}

bool testform::fileExists(QString path)
{
    return QFileInfo(path).isFile();
}
