#include "check/members.h"

#include "check/looks.h"

namespace
{
QString countedNames(const QStringList &names)
{
    const QString first = quoted(names.constFirst());
    return names.size() == 1 ? first
                             : QStringLiteral("%1 and %2 more").arg(first).arg(names.size() - 1);
}
} // namespace

void checkMembers(const ClientEntry &entry, const QString &named, const Archive &archive,
                  Findings &findings)
{
    if (!archive.pointers.isEmpty()) {
        findings << errorAt(
            entry.place, "pointer-in-archive",
            QStringLiteral("in %1, %2 only says where git-lfs keeps the file: players "
                           "get no such file")
                .arg(named, countedNames(archive.pointers)),
            QStringLiteral("fetch the files (git lfs pull) and pack again"));
    }
    if (!archive.saves.isEmpty()) {
        findings << warningAt(
            entry.place, "saves-in-archive",
            QStringLiteral("%1 holds %2, as if the game saved there: each update "
                           "removes the earlier version's folder, and with it what "
                           "players have saved in it")
                .arg(named, countedNames(archive.saves)),
            QStringLiteral("let the game save in the player's own folders, and pack "
                           "nobody's saves"));
    }
    const QString way =
        QStringList{entry.info.server, entry.info.client, entry.info.version, archive.longest}.join(
            QLatin1Char('/'));
    if (way.size() > longestWay) {
        findings << warningAt(entry.place, "long-path",
                              QStringLiteral("the way to %1 of %2 is longer than %3 characters: "
                                             "together with the game's folder it is more than "
                                             "Windows opens")
                                  .arg(quoted(archive.longest), named)
                                  .arg(longestWay),
                              QStringLiteral("use shorter names"));
    }
    if (!archive.strays.isEmpty()) {
        findings << noteAt(entry.place, "stray-files",
                           QStringLiteral("%1 holds %2, which no player needs")
                               .arg(named, countedNames(archive.strays)),
                           QStringLiteral("pack nothing but the game"));
    }
}

void compareArchives(const ClientEntry &entry, const Archive &archive,
                     const ClientInfo &earlierInfo, const Archive &earlier, Findings &findings)
{
    if (archive.sum == earlier.sum && entry.info.version != earlierInfo.version) {
        findings << warningAt(
            entry.place, "archive-unchanged",
            QStringLiteral("the archive of version %1 is that of %2, byte by byte: "
                           "players download again what they have")
                .arg(quoted(entry.info.version), quoted(earlierInfo.version)),
            QStringLiteral("upload the new build"));
    }
    QSet<QString> gone = earlier.names;
    gone.subtract(archive.names);
    if (archive.unpackedSize < earlier.unpackedSize / 2 && gone.size() > earlier.names.size() / 2) {
        findings << warningAt(
            entry.place, "archive-much-smaller",
            QStringLiteral("the archive of version %1 lacks %2 of the %3 files of "
                           "version %4: an update does not keep them")
                .arg(quoted(entry.info.version))
                .arg(gone.size())
                .arg(earlier.names.size())
                .arg(quoted(earlierInfo.version)),
            QStringLiteral("pack the whole game, not what has changed"));
    }
}
