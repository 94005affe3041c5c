#include "check/versions.h"

#include "install/versionweight.h"

namespace
{
void checkWeight(const ClientEntry &entry, const QString &what, Findings &findings)
{
    const QString &version = entry.info.version;
    const qint32 weight = versionWeight(version);
    const QString never = QStringLiteral(": it never counts as installed, and Play is never "
                                         "offered");
    const QString number = QStringLiteral("number versions from 0.0.0.0.1 to 21.47");
    if (versionWeightWraps(version)) {
        const QString text = what + QStringLiteral(" is too great and wraps around");
        if (weight > 0) {
            findings << warningAt(entry.place, "version-wraps",
                                  text + QStringLiteral(": it counts less than an earlier one"),
                                  number);
        } else {
            findings << errorAt(entry.place, "version-wraps", text + never, number);
        }
    } else if (weight == 0) {
        findings << errorAt(entry.place, "version-zero",
                            what + QStringLiteral(" weighs nothing") + never, number);
    } else if (weight < 0) {
        findings << errorAt(entry.place, "version-negative",
                            what + QStringLiteral(" weighs less than nothing") + never, number);
    }
}

bool haveEqualVersions(const ClientEntry &a, const ClientEntry &b)
{
    return a.info.auth.toLower() != b.info.auth.toLower() &&
           (a.info.version != b.info.version || a.info.url != b.info.url);
}
} // namespace

void checkVersion(const ClientEntry &entry, Findings &findings)
{
    const QString what = QStringLiteral("version ") + quoted(entry.info.version);
    checkWeight(entry, what, findings);
    if (entry.info.version.count(QLatin1Char('.')) > 4) {
        findings << warningAt(entry.place, "version-parts",
                              what + QStringLiteral(" has more than five parts: those behind the "
                                                    "fifth do not count"),
                              QStringLiteral("use at most five parts"));
    }
}

// Two entries of one server and kind share a folder.
void checkEqualVersions(const QVector<ClientEntry> &clients, const EntryCounts &counts,
                        Findings &findings)
{
    QHash<QString, const ClientEntry *> earlier;
    for (const ClientEntry &entry : clients) {
        const QString key = keyOf(entry);
        if (counts.value(key) == 1) {
            continue;
        }
        const qint32 weight = versionWeight(entry.info.version);
        const ClientEntry *&other = earlier[key + keySeparator + QString::number(weight)];
        if (other != nullptr && weight > 0 && haveEqualVersions(*other, entry)) {
            findings << warningAt(
                entry.place, "version-equal",
                QStringLiteral("version %1 counts the same as %2 in line %3: whoever has one is "
                               "not brought to the other")
                    .arg(quoted(entry.info.version), quoted(other->info.version))
                    .arg(other->place.line),
                QStringLiteral("give one of the two a greater version"));
        }
        other = &entry;
    }
}
