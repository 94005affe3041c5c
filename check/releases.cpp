#include "check/releases.h"

#include "install/versionweight.h"

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
            QStringLiteral("publish the older build again under a greater version"));
    } else if (weight == weightBefore) {
        findings << warningAt(entry.place, "version-equal",
                              QStringLiteral("the versions count the same: ") + versions +
                                  consequence,
                              QStringLiteral("give the new build a greater version"));
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
                                QStringLiteral("remove one of the two"));
        }
        later.insert(own, entry.place);
    }
}

void checkPrevious(const QVector<ClientEntry> &clients, const QVector<ClientEntry> &previous,
                   Findings &findings)
{
    QHash<QString, const ClientEntry *> before;
    before.reserve(previous.size());
    for (const ClientEntry &entry : previous) {
        before.insert(keyForAudience(entry), &entry);
    }
    for (const ClientEntry &entry : clients) {
        const ClientEntry *old = before.value(keyForAudience(entry));
        if (old != nullptr && old->info.version != entry.info.version) {
            checkStep(entry, old->info.version, findings);
        }
    }
}
