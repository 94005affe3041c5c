#include "check/looks.h"

#include "base/plainname.h"
#include "check/spelling.h"
#include "info/serverpanel.h"

#include <QHash>
#include <QSet>
#include <QUrl>

#include <algorithm>

namespace
{
void checkLogoAddress(const Place &place, const QString &server, Findings &findings)
{
    if (!isPlainName(server) || !isPlainOnWindows(server)) {
        return; // told already
    }
    const QString file = QLatin1Char('/') + ServerPanel::logoFileName(server);
    const QUrl url(QStringLiteral("https://host.example") + file);
    if (url.hasFragment() || url.path(QUrl::FullyDecoded) != file) {
        findings << errorAt(place, "logo-address",
                            QStringLiteral("the name of server %1 means something else in the "
                                           "address of its logo, which the launcher asks for as "
                                           "%2: it does not arrive")
                                .arg(quoted(server), quoted(url.path(QUrl::FullyDecoded).mid(1))),
                            QStringLiteral("leave out \"#\" and \"%\""));
    }
}

// What lies beside the servers' folders.
void checkTaken(const Place &place, const QString &server, Findings &findings)
{
    static const QStringList taken{QStringLiteral("settings.txt"), QStringLiteral("offline.txt"),
                                   QStringLiteral("unzip.exe"),
                                   QStringLiteral("emberwake-launcher.exe")};
    if (taken.contains(server, Qt::CaseInsensitive)) {
        findings << errorAt(place, "name-taken",
                            QStringLiteral("server %1 is named like a file of the launcher's own, "
                                           "so there can be no such folder: the download fails")
                                .arg(quoted(server)),
                            QStringLiteral("use another name"));
    }
}

void checkLetters(const Place &place, const QString &what, const QString &name, Findings &findings)
{
    const QString named = what + QLatin1Char(' ') + quoted(name);
    if (holdsInvisible(name)) {
        findings << warningAt(place, "invisible-character",
                              named + QStringLiteral(" holds a character that nobody sees, or a "
                                                     "blank that is none"),
                              QStringLiteral("write the name anew, by hand"));
    }
    // The rest of the blanks that are none has been told already.
    if (name.simplified() != name && !isCutByWindows(name) && !holdsInvisible(name) &&
        !holdsControlCharacter(name)) {
        findings << warningAt(place, "odd-blanks",
                              named + QStringLiteral(" has a blank in front, or several together"),
                              QStringLiteral("leave out the blanks that nobody means"));
    }
    const QString mixed = mixedWord(name);
    if (!mixed.isEmpty()) {
        findings << warningAt(place, "look-alike-letters",
                              named + QStringLiteral(" mixes letters of several scripts that look "
                                                     "the same: what is typed by hand is another "
                                                     "name"),
                              QStringLiteral("write the name anew, with one keyboard"));
    }
    if (name.normalized(QString::NormalizationForm_C) != name) {
        findings << warningAt(place, "decomposed-letters",
                              named + QStringLiteral(" has letters and accents one by one: a file "
                                                     "whose name is typed by hand has another one"),
                              QStringLiteral("write accented letters as one character"));
    }
}

void checkKept(const Place &place, const QString &server, Findings &findings)
{
    const bool isAscii = std::all_of(server.begin(), server.end(),
                                     [](QChar letter) { return letter.unicode() < 0x80; });
    if (!isAscii) {
        findings << noteAt(place, "name-beyond-ascii",
                           QStringLiteral("server %1 has letters beyond ASCII: where the 8-bit "
                                          "encoding of a player's system lacks one of them, the "
                                          "choice is not remembered")
                               .arg(quoted(server)),
                           QStringLiteral("use ASCII letters, unless all players have these"));
    }
}

void checkWay(const ClientEntry &entry, Findings &findings)
{
    const QString way = QStringList{entry.info.server, entry.info.client, entry.info.version}.join(
        QLatin1Char('/'));
    if (way.size() > longestWay && !isTooLongForAName(entry.info.server)) {
        findings << warningAt(entry.place, "long-path",
                              QStringLiteral("the folder of %1 characters is longer than %2: "
                                             "together with the game's folder and a file's name it "
                                             "is more than Windows opens")
                                  .arg(way.size())
                                  .arg(longestWay),
                              QStringLiteral("use shorter names"));
    }
}

void checkTwins(const QVector<ClientEntry> &firsts, Findings &findings)
{
    QHash<QString, const ClientEntry *> looks;
    for (const ClientEntry &entry : firsts) {
        const QString &server = entry.info.server;
        const ClientEntry *&other = looks[lookOf(server)];
        if (other == nullptr) {
            other = &entry;
        } else if (other->info.server.toLower() != server.toLower()) {
            findings << warningAt(entry.place, "look-alike-servers",
                                  QStringLiteral("servers %1 in line %2 and %3 look the same, and "
                                                 "are two")
                                      .arg(quoted(other->info.server))
                                      .arg(other->place.line)
                                      .arg(quoted(server)),
                                  QStringLiteral("write the same name, or give one of the two "
                                                 "another"));
        }
    }
}
} // namespace

void checkLooks(const QVector<ClientEntry> &clients, Findings &findings)
{
    QSet<QString> told;
    QSet<QString> kinds;
    QVector<ClientEntry> firsts;
    for (const ClientEntry &entry : clients) {
        const QString &server = entry.info.server;
        if (!kinds.contains(entry.info.client)) {
            kinds.insert(entry.info.client);
            checkLetters(entry.place, QStringLiteral("client"), entry.info.client, findings);
        }
        checkLetters(entry.place, QStringLiteral("version"), entry.info.version, findings);
        checkWay(entry, findings);
        if (!told.contains(server)) {
            told.insert(server);
            firsts << entry;
            checkLogoAddress(entry.place, server, findings);
            checkTaken(entry.place, server, findings);
            checkLetters(entry.place, QStringLiteral("server"), server, findings);
            checkKept(entry.place, server, findings);
        }
    }
    checkTwins(firsts, findings);
}

void checkCrowding(const QVector<ClientEntry> &clients, Findings &findings)
{
    QSet<QString> servers;
    for (const ClientEntry &entry : clients) {
        if (entry.visible) {
            servers.insert(entry.info.server);
        }
    }
    if (!ServerPanel::fitSideBySide(servers.size())) {
        findings << noteAt(
            {}, "crowded-panel",
            QStringLiteral("%1 servers stand side by side with smaller buttons than usual")
                .arg(servers.size()),
            QStringLiteral("offer no more than %1 servers").arg(ServerPanel::mostSideBySide));
    }
}
