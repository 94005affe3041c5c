#include "check/releases.h"

#include "install/versionweight.h"

#include <QSet>

namespace
{
void checkStep(const ClientEntry &entry, const QString &before, Findings &findings)
{
    const qint32 weight = versionWeight(entry.info.version);
    const qint32 weightBefore = versionWeight(before);
    const QString versions =
        quoted(entry.info.version) + QStringLiteral(" after ") + quoted(before);
    const QString consequence =
        QStringLiteral(": its label stays orange behind the update, and where the earlier one "
                       "cannot be removed, Play goes on starting that");
    if (weight < weightBefore) {
        findings << warningAt(
            entry.place, "version-lower",
            QStringLiteral("the version falls: ") + versions + consequence,
            QStringLiteral("write a greater version than %1, for an older build as well")
                .arg(quoted(before)));
    } else if (weight == weightBefore) {
        findings << warningAt(entry.place, "version-equal",
                              QStringLiteral("the versions count the same: ") + versions +
                                  consequence,
                              QStringLiteral("give the new build a greater version"));
    }
}

// The new version's folder is the earlier one's there, which the update removes.
void checkLetters(const ClientEntry &entry, const QString &before, Findings &findings)
{
    if (before.compare(entry.info.version, Qt::CaseInsensitive) == 0) {
        findings << errorAt(entry.place, "same-folder",
                            QStringLiteral("versions %1 and %2 differ in letter case alone: on "
                                           "Windows the update removes the game that it has just "
                                           "unpacked, as an earlier version")
                                .arg(quoted(before), quoted(entry.info.version)),
                            QStringLiteral("give the new build a greater version"));
    }
}

void checkArchive(const ClientEntry &entry, const ClientInfo &before, Findings &findings)
{
    const bool sameVersion = before.version == entry.info.version;
    const bool sameArchive = before.url == entry.info.url;
    if (sameVersion && !sameArchive) {
        findings << warningAt(entry.place, "archive-exchanged",
                              QStringLiteral("version %1 has another archive than before: whoever "
                                             "has this version is offered no update")
                                  .arg(quoted(entry.info.version)),
                              QStringLiteral("give another build a greater version"));
    } else if (!sameVersion && sameArchive) {
        findings << warningAt(
            entry.place, "archive-reused",
            QStringLiteral("version %1 has the address of %2's archive: players may get the "
                           "earlier one, which caches keep")
                .arg(quoted(entry.info.version), quoted(before.version)),
            QStringLiteral("upload each archive under a name of its own, and write its address "
                           "into url"));
    }
}

struct Names {
    QSet<QString> servers;
    QSet<QString> open;   // keys of what everybody sees
    QSet<QString> closed; // keys of what has a code
    QSet<QString> codes;  // keys with the code's sum
    QSet<QString> closedArchives;
};

Names namesOf(const QVector<ClientEntry> &clients)
{
    Names names;
    for (const ClientEntry &entry : clients) {
        (entry.hasAuth ? names.closed : names.open) << keyOf(entry);
        names.servers << entry.info.server;
        if (entry.hasAuth) {
            names.closedArchives << entry.info.url;
        }
        names.codes << keyForAudience(entry);
    }
    return names;
}

QString newServers(const Names &now, const Names &before)
{
    QStringList names;
    for (const QString &server : now.servers) {
        if (!before.servers.contains(server)) {
            names << quoted(server);
        }
    }
    names.sort();
    return names.isEmpty() ? QString()
                           : QStringLiteral("; new is ") + names.join(QStringLiteral(", "));
}

// What everybody saw before. It has no place in the document any more.
void checkGone(const ClientEntry &old, const Names &now, const Names &before, Findings &findings)
{
    const QString leftBehind =
        QStringLiteral(": players choose anew and download all of it, and what they had stays on "
                       "their disks");
    if (!now.servers.contains(old.info.server)) {
        findings << noteAt({}, "server-gone",
                           QStringLiteral("server %1 is gone%2")
                                   .arg(quoted(old.info.server), newServers(now, before)) +
                               leftBehind,
                           QStringLiteral("keep a server's name, unless it ends"));
    } else if (!now.open.contains(keyOf(old))) {
        const bool closed = now.closed.contains(keyOf(old));
        findings << noteAt({}, "client-gone",
                           QStringLiteral("client %1 of server %2 is ")
                                   .arg(quoted(old.info.client), quoted(old.info.server)) +
                               (closed ? QStringLiteral("shown to those with a code only")
                                       : QStringLiteral("gone")) +
                               leftBehind,
                           QStringLiteral("keep the entry, unless that is meant"));
    }
}

// Who of those that had a code sees the entry now.
void checkAudience(const ClientEntry &entry, const Names &now, const Names &before,
                   Findings &findings)
{
    const QString key = keyOf(entry);
    if (!entry.hasAuth && before.closed.contains(key) && !before.open.contains(key)) {
        findings << warningAt(entry.place, "opened-to-all",
                              QStringLiteral("the entry had an auth before: now everybody sees it"),
                              QStringLiteral("put the auth back, unless that is meant"));
    }
    if (entry.hasAuth && before.closed.contains(key) &&
        !before.codes.contains(keyForAudience(entry)) && now.closed.contains(key)) {
        findings << noteAt(entry.place, "code-changed",
                           QStringLiteral("the entry had another auth before: whoever has "
                                          "entered the earlier code does not see it any more"),
                           QStringLiteral("tell testers the new code"));
        if (before.closedArchives.contains(entry.info.url)) {
            findings << warningAt(
                entry.place, "archive-of-two-codes",
                QStringLiteral(
                    "the archive is the one of the earlier code: if it is locked with that, "
                    "it does not unpack for whoever has the new one"),
                QStringLiteral("lock the archive with the new code, under a new name"));
        }
    }
}

void checkAudiences(const QVector<ClientEntry> &clients, const QVector<ClientEntry> &previous,
                    Findings &findings)
{
    const Names now = namesOf(clients);
    const Names before = namesOf(previous);
    QSet<QString> told;
    for (const ClientEntry &old : previous) {
        const QString key = now.servers.contains(old.info.server) ? keyOf(old) : old.info.server;
        if (!old.hasAuth && !told.contains(key)) {
            told << key;
            checkGone(old, now, before, findings);
        }
    }
    for (const ClientEntry &entry : clients) {
        checkAudience(entry, now, before, findings);
    }
}
} // namespace

// An entry is lost to everybody when a later one of the same server and kind is seen by all who
// would see it. A later one behind another code is a tester's, and meant so.
void checkDuplicates(const QVector<ClientEntry> &clients, const EntryCounts &counts,
                     Findings &findings)
{
    QHash<QString, Place> later;
    for (int i = clients.size() - 1; i >= 0; --i) {
        const ClientEntry &entry = clients.at(i);
        const QString open = keyOf(entry);
        if (counts.value(open) == 1) {
            continue;
        }
        const QString own = keyForAudience(entry);
        const auto found = later.contains(open) ? later.constFind(open) : later.constFind(own);
        if (found != later.cend()) {
            findings << errorAt(entry.place, "duplicate-client",
                                QStringLiteral("the entry in line %1 replaces this one of server "
                                               "%2, client %3: nobody sees it")
                                    .arg(QString::number(found->line), quoted(entry.info.server),
                                         quoted(entry.info.client)),
                                entry.hasAuth
                                    ? QStringLiteral("put this one behind the open entry")
                                    : QStringLiteral("remove one of the two; if one is meant for "
                                                     "testers alone, give it its auth"));
        }
        later.insert(own, entry.place);
    }
}

void checkPrevious(const QVector<ClientEntry> &clients, const QVector<ClientEntry> &previous,
                   Findings &findings)
{
    const QHash<QString, ClientInfo> before = infosByAudience(previous);
    for (const ClientEntry &entry : clients) {
        const auto old = before.constFind(keyForAudience(entry));
        if (old == before.cend()) {
            continue;
        }
        if (old->version != entry.info.version) {
            checkStep(entry, old->version, findings);
            checkLetters(entry, old->version, findings);
        }
        checkArchive(entry, *old, findings);
    }
    checkAudiences(clients, previous, findings);
}

void checkSharedArchives(const QVector<ClientEntry> &clients, Findings &findings)
{
    QHash<QString, const ClientEntry *> first;
    for (const ClientEntry &entry : clients) {
        const ClientEntry *&other = first[entry.info.url];
        if (other == nullptr) {
            other = &entry;
        } else if (other->info.version != entry.info.version && !entry.info.url.isEmpty()) {
            findings << warningAt(entry.place, "archive-reused",
                                  QStringLiteral("version %1 has the archive of version %2 in line "
                                                 "%3: players get the same under both names")
                                      .arg(quoted(entry.info.version), quoted(other->info.version))
                                      .arg(other->place.line),
                                  QStringLiteral("write the address of each version's own "
                                                 "archive into url"));
        }
    }
}
