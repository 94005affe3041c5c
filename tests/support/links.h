#pragma once

#include <QFile>
#include <QFileInfo>
#include <QString>

#ifdef Q_OS_WIN
#include <QDir>
#include <qt_windows.h>
#endif

namespace Links
{
// Makes a symbolic link; a relative target counts from the link's folder. False where the system
// makes none: Windows may ask for rights, and not every Windows knows them at all.
inline bool make(const QString &target, const QString &name)
{
#ifdef Q_OS_WIN
    const QString place = QFileInfo(name).path() + QLatin1Char('/') + target;
    constexpr DWORD unprivileged = 2; // SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE
    const DWORD kind = QFileInfo(QDir::isAbsolutePath(target) ? target : place).isDir() ? 1 : 0;
    const auto wide = [](const QString &path) {
        return QDir::toNativeSeparators(path).toStdWString();
    };
    CreateSymbolicLinkW(wide(name).c_str(), wide(target).c_str(), kind | unprivileged);
    // What the call itself says is not to be relied on everywhere.
    return QFileInfo(name).isSymLink();
#else
    return QFile::link(target, name);
#endif
}
} // namespace Links

// Leaves the test function, as skipped, where there are no links.
#define MAKE_LINK(target, name)                                                                    \
    do {                                                                                           \
        if (!Links::make(target, name)) {                                                          \
            QSKIP("no symbolic links here");                                                       \
        }                                                                                          \
    } while (false)
