#include "check/versions.h"

#include "install/versionweight.h"

#include <QRegularExpression>

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

// What the parts that count do not say: words and suffixes, and more than two digits.
void checkParts(const ClientEntry &entry, const QString &what, Findings &findings)
{
    static const QRegularExpression digits(QStringLiteral("^[0-9]*$"));
    constexpr int countedParts = 5;
    constexpr int greatestPart = 99;
    const QStringList parts = entry.info.version.split(QLatin1Char('.')).mid(0, countedParts);
    QStringList words;
    QStringList great;
    for (int i = 0; i < parts.size(); ++i) {
        const QString &part = parts.at(i);
        bool fits = false;
        const int number = part.toInt(&fits);
        if (!part.isEmpty() && (!fits || !digits.match(part).hasMatch())) {
            words << QStringLiteral("%1 counts as %2").arg(quoted(part)).arg(number);
        } else if (i > 0 && number > greatestPart) {
            great << part;
        }
    }
    if (!words.isEmpty()) {
        findings << warningAt(entry.place, "version-not-numbers",
                              what + QStringLiteral(" has a part that is no plain number: ") +
                                  words.join(QStringLiteral(", ")),
                              QStringLiteral("use numbers alone: 1.1.91 instead of 1.2-rc1"));
    }
    if (!great.isEmpty()) {
        findings << warningAt(entry.place, "version-carries",
                              what + QStringLiteral(" has a part above 99 (%1), which counts into "
                                                    "the part before: 1.100 is as great as 2.0")
                                         .arg(great.join(QStringLiteral(", "))),
                              QStringLiteral("keep every part behind the first below 100"));
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
    if (versionWeight(entry.info.version) > 0 && !versionWeightWraps(entry.info.version)) {
        checkParts(entry, what, findings);
    }
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
