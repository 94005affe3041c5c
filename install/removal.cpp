#include "install/removal.h"

#include "base/pathsafety.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace
{
bool isLink(const QFileInfo &entry)
{
    return entry.isSymLink() || entry.isJunction();
}

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
        if (isLink(entry)) {
            removed = removeLink(name) && removed;
        } else if (entry.isDir()) {
            removed = removeTree(name) && removed;
        } else {
            removed = removePlainFile(name) && removed;
        }
    }
    return QDir().rmdir(path) && removed;
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
    if (isLink(info)) {
        return removeLink(path);
    }
    return !info.isDir() && removePlainFile(path);
}

bool Removal::removeFolder(const QString &path)
{
    if (!isAllowed(path)) {
        return false;
    }
    const QFileInfo info(path);
    if (!info.isDir()) {
        return false;
    }
    return isLink(info) ? removeLink(path) : removeTree(path);
}
