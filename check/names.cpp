#include "check/names.h"

#include "base/plainname.h"
#include "info/serverpanel.h"

#include <QHash>

#include <algorithm>
#include <utility>

namespace
{
// One that becomes a folder's, found in an entry.
struct FolderName {
    Place place;
    bool isServer; // a version otherwise
    QString name;
    QString what; // names it for the reader
};

// Whether it is there for the first time.
bool isFirst(QSet<QString> &told, const QString &name)
{
    const int before = told.size();
    told.insert(name);
    return told.size() > before;
}

void checkSelection(const ClientEntry &entry, const QString &what, Findings &findings)
{
    const ServerPanel::Selection chosen = ServerPanel::parseSelectionKey(
        ServerPanel::selectionKey(entry.info.server, entry.info.client));
    if (chosen.server != entry.info.server) {
        findings << errorAt(entry.place, "bar-in-name",
                            what +
                                QStringLiteral(" holds a \"|\": a click on its buttons selects %1, "
                                               "which is nothing")
                                    .arg(quoted(chosen.server)),
                            QStringLiteral("leave out the \"|\""));
    }
}

void checkParts(const FolderName &folder, Findings &findings)
{
    QString flat = folder.name;
    const QStringList parts =
        flat.replace(QLatin1Char('\\'), QLatin1Char('/')).split(QLatin1Char('/'));
    if (std::any_of(parts.begin(), parts.end(), isDots)) {
        findings << errorAt(folder.place, "dot-name",
                            folder.what + QStringLiteral(" leads out of its own folder: the "
                                                         "download fails, and Play starts nothing"),
                            QStringLiteral("use another name"));
    } else if (parts.size() > 1) {
        findings << errorAt(folder.place, "slash-in-name",
                            folder.what + QStringLiteral(" is more than one folder: the "
                                                         "download fails, and Play starts nothing"),
                            QStringLiteral("use another name"));
    }
}

void checkLetters(const FolderName &folder, Findings &findings)
{
    QString name = folder.name;
    if (folder.isServer) {
        // It breaks more than the folder, and has its own finding.
        name.remove(QLatin1Char('|'));
    }
    if (isTooLongForAName(name)) {
        findings << errorAt(folder.place, "forbidden-character",
                            folder.what + QStringLiteral(" has more characters than any folder's "
                                                         "name: the download fails, and Play "
                                                         "starts nothing"),
                            QStringLiteral("use a shorter name"));
    }
    if (holdsControlCharacter(name)) {
        findings << errorAt(folder.place, "forbidden-character",
                            folder.what + QStringLiteral(" holds a control character: the download "
                                                         "fails, and Play starts nothing"),
                            QStringLiteral("leave out control characters"));
    } else if (holdsLetterForbiddenOnWindows(name)) {
        findings << errorAt(folder.place, "forbidden-character",
                            folder.what + QStringLiteral(" holds a character that Windows allows "
                                                         "in no folder's name: the download fails "
                                                         "there, and Play starts nothing"),
                            QStringLiteral("leave out < > : \" | ? *"));
    }
}

void checkWholeName(const FolderName &folder, Findings &findings)
{
    const QString &name = folder.name;
    if (isDeviceOnWindows(name)) {
        findings << errorAt(folder.place, "reserved-name",
                            folder.what + QStringLiteral(" is the name of a device on Windows: "
                                                         "the download fails there, and Play "
                                                         "starts nothing"),
                            QStringLiteral("use another name"));
    }
    if (!isDots(name) && isCutByWindows(name)) {
        findings << errorAt(folder.place, "trailing-dot-or-blank",
                            folder.what + QStringLiteral(" ends in a dot or a blank, which Windows "
                                                         "drops: the download fails there, and "
                                                         "Play starts nothing"),
                            QStringLiteral("leave out what stands at the end"));
    }
}

// The name is not empty.
void checkFolderName(const FolderName &folder, Findings &findings)
{
    checkParts(folder, findings);
    checkLetters(folder, findings);
    checkWholeName(folder, findings);
}

void checkServer(const ClientEntry &entry, QSet<QString> &told, Findings &findings)
{
    const QString &server = entry.info.server;
    if (!isFirst(told, server)) {
        return;
    }
    if (server.isEmpty()) {
        findings << errorAt(entry.place, "empty-server",
                            QStringLiteral("the entry names no server: its download fails"),
                            QStringLiteral("add a server attribute"));
        return;
    }
    const QString what = QStringLiteral("server ") + quoted(server);
    checkSelection(entry, what, findings);
    checkFolderName({entry.place, true, server, what}, findings);
}

bool isKnownKind(const QString &kind)
{
    const ServerPanel::ClientButtons buttons = ServerPanel::clientButtons({kind});
    return buttons.official || buttons.betaSelects;
}

void checkKinds(const QVector<ClientEntry> &clients, Findings &findings)
{
    QHash<QString, bool> known;
    for (const ClientEntry &entry : clients) {
        const QString &kind = entry.info.client;
        if (!known.contains(kind)) {
            known.insert(kind, isKnownKind(kind));
        }
        if (!known.value(kind)) {
            findings << errorAt(entry.place, "unknown-kind",
                                QStringLiteral("client %1 is neither \"Official\" nor \"Beta\": no "
                                               "button shows it")
                                    .arg(quoted(kind)),
                                QStringLiteral("name it \"Official\" or \"Beta\", in these "
                                               "letters; a build for testers is one of the two, "
                                               "with an auth"));
        }
    }
}

// Told where the first of those without stands.
void checkServerCount(const QVector<ClientEntry> &clients, Findings &findings)
{
    QStringList names;
    QSet<QString> known;
    for (const ClientEntry &entry : clients) {
        if (entry.visible && isFirst(known, entry.info.server)) {
            names << entry.info.server;
        }
    }
    const QStringList shown = ServerPanel::shownNames(names);
    if (shown.size() == names.size()) {
        return;
    }
    const QSet<QString> withButtons(shown.begin(), shown.end());
    const auto *const first =
        std::find_if(clients.begin(), clients.end(), [&withButtons](const ClientEntry &entry) {
            return entry.visible && !withButtons.contains(entry.info.server);
        });
    findings << errorAt(first->place, "too-many-servers",
                        QStringLiteral("of %1 servers only the first %2 by name have buttons; %3 "
                                       "has none")
                            .arg(names.size())
                            .arg(shown.size())
                            .arg(quoted(first->info.server)),
                        QStringLiteral("offer fewer servers"));
}

void checkBetaButtons(const QVector<ClientEntry> &clients, Findings &findings)
{
    QHash<QString, QStringList> kinds;
    QVector<const ClientEntry *> firstOfServers;
    for (const ClientEntry &entry : clients) {
        if (entry.visible) {
            QStringList &ofServer = kinds[entry.info.server];
            if (ofServer.isEmpty()) {
                firstOfServers << &entry;
            }
            ofServer << entry.info.client;
        }
    }
    for (const ClientEntry *first : std::as_const(firstOfServers)) {
        const QString &server = first->info.server;
        const ServerPanel::ClientButtons buttons = ServerPanel::clientButtons(kinds.value(server));
        if (buttons.beta && !buttons.betaSelects) {
            findings << errorAt(first->place, "empty-beta-button",
                                QStringLiteral("server %1 has a \"Beta\" button that selects "
                                               "nothing")
                                    .arg(quoted(server)),
                                QStringLiteral("give the server an \"Official\" or a \"Beta\" "
                                               "client"));
        }
    }
}
} // namespace

void checkNames(const ClientEntry &entry, NamesTold &told, Findings &findings)
{
    checkServer(entry, told.servers, findings);
    const QString &version = entry.info.version;
    // An empty one weighs nothing, which is another finding.
    if (!version.isEmpty() && isFirst(told.versions, version)) {
        checkFolderName({entry.place, false, version, QStringLiteral("version ") + quoted(version)},
                        findings);
    }
}

void checkServerFolders(const QVector<ClientEntry> &clients, Findings &findings)
{
    QHash<QString, const ClientEntry *> folders;
    QSet<QString> told;
    for (const ClientEntry &entry : clients) {
        // Entries of one server mostly follow each other.
        if (&entry != clients.cbegin() && (&entry - 1)->info.server == entry.info.server) {
            continue;
        }
        const ClientEntry *&first = folders[entry.info.server.toLower()];
        if (first == nullptr) {
            first = &entry;
        } else if (first->info.server != entry.info.server && isFirst(told, entry.info.server)) {
            findings << errorAt(
                entry.place, "same-folder",
                QStringLiteral("servers %1 and %2 differ in letter case only and share a folder on "
                               "Windows: updating one removes the other's client")
                    .arg(quoted(first->info.server), quoted(entry.info.server)),
                QStringLiteral("rename one of the two"));
        }
    }
}

void checkButtons(const QVector<ClientEntry> &clients, Findings &findings)
{
    checkKinds(clients, findings);
    checkServerCount(clients, findings);
    checkBetaButtons(clients, findings);
}
