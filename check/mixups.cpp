#include "check/mixups.h"

#include "check/addresses.h"
#include "install/savefilename.h"
#include "install/versionweight.h"

#include <QHash>
#include <QRegularExpression>
#include <QUrl>

#include <algorithm>

namespace
{
bool isOfThePublic(const QString &address)
{
    const QUrl url(address);
    return isUsableAddress(url) && !isOfThisMachine(url);
}

// A document for a try names nothing elsewhere, but for the pages that a browser opens.
bool isMeantForOthers(const DocumentContent &content, const QString &base)
{
    const auto fetchesElsewhere = [](const NewsItem &item) {
        return isOfThePublic(item.shown.imageUrl);
    };
    return isOfThePublic(base) ||
           std::any_of(content.clients.begin(), content.clients.end(),
                       [](const ClientEntry &entry) { return isOfThePublic(entry.info.url); }) ||
           std::any_of(content.slides.begin(), content.slides.end(), fetchesElsewhere) ||
           std::any_of(content.tiles.begin(), content.tiles.end(), fetchesElsewhere);
}

void checkOwnMachine(const Place &place, const QString &what, const QString &address,
                     Findings &findings)
{
    const QUrl url(address);
    if (isUsableAddress(url) && isOfThisMachine(url)) {
        findings << warningAt(place, "private-address",
                              QStringLiteral("%1 lies on %2, which is each player's own machine: "
                                             "there is nothing")
                                  .arg(what, quoted(url.host())),
                              QStringLiteral("name a host of the public network"));
    }
}

void checkOwnMachines(const DocumentContent &content, const QString &base, Findings &findings)
{
    if (!isMeantForOthers(content, base)) {
        return;
    }
    for (const ClientEntry &entry : content.clients) {
        checkOwnMachine(entry.place, QStringLiteral("url"), entry.info.url, findings);
    }
    for (const QVector<NewsItem> &items : {content.slides, content.tiles}) {
        for (const NewsItem &item : items) {
            checkOwnMachine(item.place, QStringLiteral("imageUrl"), item.shown.imageUrl, findings);
            checkOwnMachine(item.place, QStringLiteral("clickUrl"), item.shown.clickUrl, findings);
        }
    }
}

// In small letters; what is neither letter nor digit separates words.
QStringList wordsIn(const QString &text)
{
    static const QRegularExpression separators(QStringLiteral("[\\W_]+"),
                                               QRegularExpression::UseUnicodePropertiesOption);
    return text.toLower().split(separators, Qt::SkipEmptyParts);
}

// Whether the name holds all the server's words. A server may be called as a kind is, which says
// nothing; one of a longer name than files have is told of elsewhere.
bool isNamedAfter(const QString &fileName, const QString &server)
{
    constexpr int shortestName = 3;
    constexpr int longestName = 255;
    if (server.size() > longestName) {
        return false;
    }
    static const QStringList kinds{QStringLiteral("official"), QStringLiteral("beta")};
    if (kinds.contains(server, Qt::CaseInsensitive)) {
        return false;
    }
    const QStringList words = wordsIn(fileName);
    const QStringList wanted = wordsIn(server);
    return wanted.join(QString()).size() >= shortestName &&
           std::all_of(wanted.begin(), wanted.end(),
                       [&words](const QString &word) { return words.contains(word); });
}

// However the address's words are put together: folders may tell, too.
bool mayBeNamedAfter(const QUrl &url, const QString &server)
{
    return wordsIn(url.path()).join(QString()).contains(wordsIn(server).join(QString()));
}

// "Ember" and "Ember PvP" may well be one game, named by the words that both have.
bool sharesItsName(const QString &server, const QString &owner)
{
    const QStringList words = wordsIn(server);
    const QStringList owners = wordsIn(owner);
    return std::all_of(owners.begin(), owners.end(),
                       [&words](const QString &word) { return words.contains(word); });
}

// Versions of one archive have the same.
QString nameWithoutNumbers(QString fileName)
{
    static const QRegularExpression numbers(QStringLiteral("[0-9]+(\\.[0-9]+)*"));
    return fileName.toLower().remove(numbers);
}

// Whoever copies an entry for the next server, and forgets its address.
void checkArchivesOfOthers(const QVector<ClientEntry> &clients, Findings &findings)
{
    QHash<QString, const ClientEntry *> owners; // by the names of their archives
    for (const ClientEntry &entry : clients) {
        const QUrl url(entry.info.url);
        if (!isUsableAddress(url)) {
            continue;
        }
        const QString name = wantedSaveFileName(url);
        const ClientEntry *&owner = owners[nameWithoutNumbers(name)];
        if (owner == nullptr && isNamedAfter(name, entry.info.server)) {
            owner = &entry;
        }
    }
    for (const ClientEntry &entry : clients) {
        const QUrl url(entry.info.url);
        const QString name = wantedSaveFileName(url);
        const ClientEntry *const owner = owners.value(nameWithoutNumbers(name));
        if (owner == nullptr || !isNamedAfter(name, owner->info.server) ||
            mayBeNamedAfter(url, entry.info.server) ||
            sharesItsName(entry.info.server, owner->info.server)) {
            continue;
        }
        findings << warningAt(entry.place, "archive-of-another-server",
                              QStringLiteral("the archive %1 is named after server %2 in line %3, "
                                             "and not after %4: players of this one may get the "
                                             "other's game")
                                  .arg(quoted(name), quoted(owner->info.server),
                                       QString::number(owner->place.line),
                                       quoted(entry.info.server)),
                              QStringLiteral("name the archive of this server; if both servers "
                                             "share it, leave the server out of its name"));
    }
}

int partsOf(const QString &version)
{
    return version.count(QLatin1Char('.')) + 1;
}

// Numbers with dots between that may be a version: neither a date, nor one that letters or the word
// for a variant stand behind, nor an engine's with its name before it.
QStringList versionsIn(const QString &fileName)
{
    static const QRegularExpression numbers(
        QStringLiteral("(?<![0-9.]|[a-uw-z]|[a-z]v)(?:[0-9]{1,3}+\\.)+[0-9]{1,3}+(?!\\.?[0-9])"
                       "(?![a-z])(?![-_.+]?(?:rc|alpha|beta|pre|dev|hotfix|patch|fix|p[0-9]))"),
        QRegularExpression::CaseInsensitiveOption);
    QStringList versions;
    for (auto found = numbers.globalMatch(fileName); found.hasNext();) {
        versions << found.next().captured();
    }
    return versions;
}

// Whoever raises the version, and forgets the address.
void checkVersionOfArchive(const ClientEntry &entry, Findings &findings)
{
    static const QRegularExpression plain(QStringLiteral("^[0-9]+(\\.[0-9]+)+$"));
    const QString &version = entry.info.version;
    constexpr int longestVersion = 255;
    if (version.size() > longestVersion) {
        return;
    }
    const QUrl url(entry.info.url);
    const QString name = wantedSaveFileName(url);
    const QStringList versions = versionsIn(name);
    const QStringList all = versionsIn(url.path());
    const auto isThis = [&version](const QString &other) {
        return other.startsWith(version + QLatin1Char('.')) ||
               versionWeight(other) == versionWeight(version);
    };
    const auto another =
        std::find_if(versions.begin(), versions.end(), [&version](const QString &other) {
            return partsOf(other) == partsOf(version);
        });
    if (plain.match(version).hasMatch() && another != versions.end() &&
        std::none_of(all.begin(), all.end(), isThis)) {
        findings << warningAt(entry.place, "archive-of-another-version",
                              QStringLiteral("version %1 has the archive %2: players may get %3 "
                                             "under the name of %1")
                                  .arg(quoted(version), quoted(name), quoted(*another)),
                              QStringLiteral("name the archive of this version"));
    }
}

void checkPageThatIsFile(const NewsItem &item, const QHash<QString, int> &archives,
                         Findings &findings)
{
    const QString &page = item.shown.clickUrl;
    const auto archive = archives.constFind(page);
    if (archive != archives.cend()) {
        findings << warningAt(item.place, "page-is-file",
                              QStringLiteral("clickUrl is the archive of the client in line %1: a "
                                             "click downloads it, and installs nothing")
                                  .arg(*archive),
                              QStringLiteral("name a web page"));
    } else if (page == item.shown.imageUrl && isUsableAddress(QUrl(page))) {
        findings << noteAt(item.place, "page-is-file",
                           QStringLiteral("clickUrl is the imageUrl as well: a click opens the "
                                          "picture, and no page"),
                           QStringLiteral("name a web page, unless that is meant"));
    }
}
} // namespace

void checkMixUps(const DocumentContent &content, const QString &base, Findings &findings)
{
    checkOwnMachines(content, base, findings);
    checkArchivesOfOthers(content.clients, findings);
    QHash<QString, int> archives; // their lines
    for (const ClientEntry &entry : content.clients) {
        const QUrl url(entry.info.url);
        if (isUsableAddress(url)) {
            checkVersionOfArchive(entry, findings);
            archives.insert(entry.info.url, entry.place.line);
        }
    }
    for (const QVector<NewsItem> &items : {content.slides, content.tiles}) {
        for (const NewsItem &item : items) {
            checkPageThatIsFile(item, archives, findings);
        }
    }
}
