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
    if (!url.isLocalFile() && !url.authority().isEmpty()) {
        return true;
    }
    // What is no address of the web either is tried as the name of a file by the toolkit, as in
    // "c:/picture.png".
    const QString path =
        url.isLocalFile()
            ? url.toLocalFile()
            : url.toString(QUrl::RemoveAuthority | QUrl::RemoveFragment | QUrl::RemoveQuery);
    if (url.isLocalFile() && (!url.host().isEmpty() || namesAnotherComputer(path))) {
        return false;
    }
    const QFileInfo file(path);
    return file.isFile() || !file.exists();
}
