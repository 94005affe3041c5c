#include "base/localaddress.h"

#include <QFileInfo>
#include <QString>
#include <QUrl>

namespace
{
// "\\server\share", in either kind of slash. Judged by the name alone: asking the disk for it would
// already be the connection.
bool namesAnotherComputer(QString path)
{
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return path.startsWith(QLatin1String("//"));
}
} // namespace

bool mayBeFetched(const QUrl &url)
{
    // A host of the file protocol may send the launcher to any other one, of the player's network
    // as well, and the toolkit keeps all it sends, without a limit.
    if (url.scheme() == QLatin1String("ftp")) {
        return false;
    }
    // What is no file's name to the toolkit either: it does not look at the disk.
    if (!url.isLocalFile() && (!url.authority().isEmpty() || url.scheme().size() <= 1)) {
        return true;
    }
    // What is no address of the web is tried as the name of a file by the toolkit, as in
    // "folder:picture.png".
    const QString path =
        url.isLocalFile()
            ? url.toLocalFile()
            : url.toString(QUrl::RemoveAuthority | QUrl::RemoveFragment | QUrl::RemoveQuery);
    if (!url.host().isEmpty() || namesAnotherComputer(path) || namesAnotherComputer(url.path())) {
        return false;
    }
    const QFileInfo file(path);
    return file.isFile() || !file.exists();
}
