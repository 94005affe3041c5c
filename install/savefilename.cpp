#include "install/savefilename.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>

QString wantedSaveFileName(const QUrl &url)
{
    const QString name = QFileInfo(url.path(QUrl::FullyDecoded)).fileName();
    return name.isEmpty() ? QStringLiteral("download") : name;
}

QString freeSaveFileName(const QUrl &url)
{
    QString name = wantedSaveFileName(url);
    if (!QFile::exists(name)) {
        return name;
    }
    // kept: the extension is doubled ("client.zip.0.zip"), and ends in ".zip" whatever the name,
    // so that the archive clean-up finds the file.
    for (int number = 0;; ++number) {
        QString candidate = QStringLiteral("%1.%2.zip").arg(name, QString::number(number));
        if (!QFile::exists(candidate)) {
            return candidate;
        }
    }
}
