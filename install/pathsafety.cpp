#include "install/pathsafety.h"

#include <QDir>
#include <QFileInfo>

namespace
{
bool isBelow(const QString &path, QString root)
{
    if (!root.endsWith(QLatin1Char('/'))) {
        root += QLatin1Char('/');
    }
    return path.startsWith(root) && path.size() > root.size();
}
} // namespace

bool liesInsideWorkingDirectory(const QString &directory)
{
    return isBelow(QDir(directory).canonicalPath(), QDir::current().canonicalPath());
}

bool isFileOfWorkingDirectory(const QString &fileName)
{
    const QString folder = QFileInfo(fileName).dir().canonicalPath();
    const QString root = QDir::current().canonicalPath();
    return folder == root || isBelow(folder, root);
}
