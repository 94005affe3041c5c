#include "install/removal.h"

#include "base/pathsafety.h"
#include "base/plainname.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace
{
// On Windows a link to a folder goes the way of folders; elsewhere every link goes that of files.
bool removeLink(const QString &path)
{
    return QFile::remove(path) || QDir().rmdir(path);
}

bool removePlainFile(const QString &path)
{
    if (QFile::remove(path)) {
        return true;
    }
    // Windows refuses to remove a file that is marked read-only.
    (void)QFile::setPermissions(path, QFile::permissions(path) | QFile::WriteUser);
    return QFile::remove(path);
}

// The toolkit's own recursive removal follows a junction and would empty the folder that a player
// has moved to another drive.
bool removeTree(const QString &path)
{
    bool removed = true;
    const QFileInfoList entries = QDir(path).entryInfoList(QDir::AllEntries | QDir::Hidden |
                                                           QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo &entry : entries) {
        const QString name = entry.filePath();
        if (isLinkOrJunction(entry)) {
            removed = removeLink(name) && removed;
        } else if (entry.isDir()) {
            removed = removeTree(name) && removed;
        } else {
            removed = removePlainFile(name) && removed;
        }
    }
    return QDir().rmdir(path) && removed;
}

bool removeTreeOrLink(const QString &path)
{
    const QFileInfo info(path);
    if (!info.isDir()) {
        return false;
    }
    return isLinkOrJunction(info) ? removeLink(path) : removeTree(path);
}

// Whether a link makes the launcher's own folder, or one around it, the client's. What lies there
// is no version of it.
bool leadsBack(const QString &client)
{
    QString place = QDir(client).canonicalPath();
    if (!place.endsWith(QLatin1Char('/'))) {
        place += QLatin1Char('/');
    }
    return (QDir::current().canonicalPath() + QLatin1Char('/')).startsWith(place);
}

// By plain names nothing leads out of the working directory but a link in the server's or in the
// client's place. The player has made it: what is unpacked lies further down.
bool isPlainVersion(const QString &client, const QString &version)
{
    return client.contains(QLatin1Char('/')) && isPlainWay(client, 2) && isPlainName(version);
}

QString pathOf(const QString &client, const QString &version)
{
    return client.isEmpty() ? version : client + QLatin1Char('/') + version;
}

bool isRemovableVersion(const QString &client, const QString &version)
{
    // Without a name of its own the path would be that of the client.
    if (version.isEmpty() || version.contains(QLatin1Char('/')) ||
        (!client.isEmpty() && leadsBack(client))) {
        return false;
    }
    return isPlainVersion(client, version) || Removal::isAllowed(pathOf(client, version));
}
} // namespace

bool Removal::isAllowed(const QString &path)
{
    const QString plain = QDir::fromNativeSeparators(path);
    // By the text first: where ".." leads depends on the links before it.
    const QStringList names = plain.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    if (names.isEmpty() || hasStrayColon(plain) || names.contains(QStringLiteral("..")) ||
        names.constLast() == QLatin1String(".") || plain.contains(QChar::Null)) {
        return false;
    }
    // Without the slash that may stand behind it, which would make the path its own folder.
    const QString folder =
        QFileInfo(QDir::cleanPath(QDir::current().absoluteFilePath(plain))).path();
    const QString place = QDir(folder).canonicalPath();
    return !place.isEmpty() &&
           (place == QDir::current().canonicalPath() || liesInsideWorkingDirectory(folder));
}

bool Removal::removeFile(const QString &path)
{
    if (!isAllowed(path)) {
        return false;
    }
    const QFileInfo info(path);
    if (isLinkOrJunction(info)) {
        return removeLink(path);
    }
    return !info.isDir() && removePlainFile(path);
}

bool Removal::removeFolder(const QString &path)
{
    return isAllowed(path) && removeTreeOrLink(path);
}

bool Removal::removeVersion(const QString &client, const QString &version)
{
    return isRemovableVersion(client, version) && removeTreeOrLink(pathOf(client, version));
}

bool Removal::removeVersionLink(const QString &client, const QString &version)
{
    const QString path = pathOf(client, version);
    if (!isLinkOrJunction(QFileInfo(path))) {
        return true;
    }
    return isRemovableVersion(client, version) && removeLink(path);
}
