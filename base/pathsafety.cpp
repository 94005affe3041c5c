#include "base/pathsafety.h"

#include <QDir>
#include <QFileInfo>

namespace
{
bool isBelow(const QString &path, QString root)
{
    // A working directory that was removed has no path, and nothing lies in it.
    if (root.isEmpty()) {
        return false;
    }
    if (!root.endsWith(QLatin1Char('/'))) {
        root += QLatin1Char('/');
    }
    return path.startsWith(root) && path.size() > root.size();
}
} // namespace

bool hasStrayColon(const QString &path)
{
#ifdef Q_OS_WIN
    const bool whole = path.size() > 2 && path.at(1) == QLatin1Char(':') &&
                       QStringLiteral("/\\").contains(path.at(2));
    return path.indexOf(QLatin1Char(':'), whole ? 2 : 0) >= 0;
#else
    Q_UNUSED(path)
    return false;
#endif
}

bool liesInsideWorkingDirectory(const QString &directory)
{
    return isBelow(QDir(directory).canonicalPath(), QDir::current().canonicalPath());
}

bool wouldLieInsideWorkingDirectory(const QString &directory)
{
    const QDir root = QDir::current();
    return !hasStrayColon(directory) &&
           isBelow(QDir::cleanPath(root.absoluteFilePath(directory)), root.path());
}

bool isFileOrFree(const QString &fileName)
{
    const QFileInfo info(fileName);
    return !info.isSymLink() && (!info.exists() || info.isFile());
}

bool isLinkOrJunction(const QFileInfo &entry)
{
    return entry.isSymLink() || entry.isJunction();
}

bool isFolderItself(const QString &path)
{
    const bool namesItself = !path.endsWith(QLatin1Char('/'));
    return QDir(path).exists() && !(namesItself && isLinkOrJunction(QFileInfo(path)));
}
