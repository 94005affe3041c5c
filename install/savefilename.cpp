#include "install/savefilename.h"

#include "base/plainname.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <algorithm>
#include <array>

namespace
{
// What Windows, the toolkit or the launcher itself loads or starts from the launcher's folder
// without being asked, or on a click. A download that breaks off leaves its file behind, whatever
// came.
bool isLoadedOrStarted(QString name)
{
    while (isCutByWindows(name)) {
        name.chop(1);
    }
    static constexpr std::array<const char *, 32> endings = {
        ".exe", ".dll", ".com", ".bat", ".cmd", ".scr", ".msi", ".pif", ".cpl", ".lnk", ".manifest",
        ".local", ".exe.config",
        // Started on a click, in a folder that players look into.
        ".msp", ".msc", ".hta", ".js", ".jse", ".vbs", ".vbe", ".wsf", ".wsh", ".ps1", ".reg",
        ".jar", ".appref-ms",
        // What the system reads when it shows the folder, and asks other computers for.
        ".url", ".scf", ".library-ms", ".search-ms", ".searchconnector-ms", ".desktop"};
    static constexpr std::array<const char *, 4> names = {"qt.conf", "desktop.ini", "settings.txt",
                                                          "offline.txt"};
    return std::any_of(names.begin(), names.end(),
                       [&name](const char *whole) {
                           return name.compare(QLatin1String(whole), Qt::CaseInsensitive) == 0;
                       }) ||
           std::any_of(endings.begin(), endings.end(), [&name](const char *ending) {
               return name.endsWith(QLatin1String(ending), Qt::CaseInsensitive);
           });
}

// The same on every system: a folder may be carried to another one.
QString whyNotSavedAnywhereAs(const QString &name)
{
    // The disk would take the name to end at a zero byte.
    if (holdsControlCharacter(name)) {
        return QStringLiteral("Control character in the file name");
    }
    if (isLoadedOrStarted(name)) {
        return QStringLiteral("Name of a program or of a program's settings");
    }
    return {};
}
} // namespace

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

QString whyNotSavedAs(const QString &name)
{
#ifdef Q_OS_WIN
    return whyNotSavedOnWindowsAs(name);
#else
    return whyNotSavedAnywhereAs(name);
#endif
}

QString whyNotSavedOnWindowsAs(const QString &name)
{
    const QString reason = whyNotSavedAnywhereAs(name);
    const bool isNone = name.contains(QLatin1Char('\\')) || holdsLetterForbiddenOnWindows(name) ||
                        isDeviceOnWindows(name);
    return reason.isEmpty() && isNone ? QStringLiteral("Not a file name on Windows") : reason;
}
