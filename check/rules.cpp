#include "check/rules.h"

#include "base/documentlimits.h"
#include "info/serverpanel.h"
#include "install/savefilename.h"
#include "install/versionweight.h"

#include <QHash>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>

namespace
{
QString quoted(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

// Separates what may hold any character of the document: XML has none for it.
QString joined(const QString &a, const QString &b)
{
    return a + QChar(1) + b;
}

QString joined(const QString &a, const QString &b, const QString &c)
{
    return a + QChar(1) + b + QChar(1) + c;
}

QString keyOf(const ClientEntry &entry)
{
    return joined(entry.info.server, entry.info.client);
}

// The same for one audience: everybody, or whoever has the code.
QString keyForAudience(const ClientEntry &entry)
{
    return entry.hasAuth ? joined(entry.info.server, entry.info.client, entry.info.auth.toLower())
                         : keyOf(entry);
}

bool isKnownKind(const QString &kind)
{
    const ServerPanel::ClientButtons buttons = ServerPanel::clientButtons({kind});
    return buttons.official || buttons.betaSelects;
}

// Device names of Windows, which no file or folder can have, whatever extension follows.
bool isReservedName(const QString &name)
{
    static const QRegularExpression device(
        QStringLiteral("^(CON|PRN|AUX|NUL|COM[0-9]|LPT[0-9]) *(\\.|$)"),
        QRegularExpression::CaseInsensitiveOption);
    // Most names are none; the expression would cost the most of all rules.
    return QStringLiteral("CPANL").contains(name.at(0), Qt::CaseInsensitive) &&
           device.match(name).hasMatch();
}

bool isForbiddenOnWindows(QChar letter)
{
    return letter < QLatin1Char(' ') || QStringLiteral("<>:\"|?*").contains(letter);
}

bool isDots(const QString &name)
{
    return name == QLatin1String(".") || name == QLatin1String("..");
}

class Rules
{
public:
    Rules(const DocumentContent &content, const DocumentContent *previous)
        : m_content(content)
        , m_previous(previous)
    {
    }

    Findings all()
    {
        checkBytes();
        checkLaunchers();
        m_entriesOfKey.reserve(m_content.clients.size());
        m_saveNames.reserve(m_content.clients.size());
        m_names.reserve(m_content.clients.size());
        for (const ClientEntry &entry : m_content.clients) {
            ++m_entriesOfKey[keyOf(entry)];
            checkNames(entry);
            checkVersion(entry);
            checkAuth(entry);
            checkArchiveUrl(entry);
        }
        checkDuplicates();
        checkEqualVersions();
        checkPrevious();
        checkServerFolders();
        checkButtons();
        checkNews(m_content.slides, QStringLiteral("slide"), DocumentLimits::slides);
        checkNews(m_content.tiles, QStringLiteral("tile"), DocumentLimits::tiles);
        checkStrangers();
        checkEnd();
        return sortedByPlace(m_findings);
    }

private:
    void error(Place place, const char *id, const QString &text, const QString &mend)
    {
        m_findings << Finding{place.line,        place.column, Finding::Error,
                              QLatin1String(id), text,         mend};
    }
    void warning(Place place, const char *id, const QString &text, const QString &mend)
    {
        m_findings << Finding{place.line,        place.column, Finding::Warning,
                              QLatin1String(id), text,         mend};
    }

    void checkBytes()
    {
        if (m_content.text.isEmpty()) {
            error({}, "empty-document",
                  QStringLiteral("the document is empty: players stay at \"Connecting to "
                                 "server...\""),
                  QStringLiteral("publish the document"));
        }
        if (m_content.cutByNul) {
            error({m_content.text.count(QLatin1Char('\n')) + 1, 0}, "nul-byte",
                  QStringLiteral("a zero byte ends the document here"),
                  QStringLiteral("save the document as UTF-8, not as UTF-16"));
        }
        if (m_content.firstBadByte) {
            error(*m_content.firstBadByte, "not-utf8",
                  QStringLiteral("this is not UTF-8; players see a replacement mark"),
                  QStringLiteral("save the document as UTF-8, whatever its first line says"));
        }
    }

    void checkLaunchers()
    {
        for (const LauncherElement &element : m_content.launchers) {
            if (element.version > DocumentLimits::launcherVersion) {
                warning(element.place, "newer-launcher",
                        QStringLiteral("launchers up to version %1 show a warning, open the "
                                       "website and end")
                            .arg(DocumentLimits::launcherVersion),
                        QStringLiteral("ask for version %1 until a newer launcher can be had")
                            .arg(DocumentLimits::launcherVersion));
            }
            bool isNumber = false;
            (void)element.written.toInt(&isNumber);
            if (element.hasVersion && !isNumber) {
                warning(element.place, "launcher-version",
                        QStringLiteral("the launcher's version %1 is no whole number and counts "
                                       "as 0")
                            .arg(quoted(element.written)),
                        QStringLiteral("write a whole number"));
            }
        }
    }

    void checkNames(const ClientEntry &entry)
    {
        if (entry.info.server.isEmpty() && isFirst(QStringLiteral("server"), {})) {
            error(entry.place, "empty-server",
                  QStringLiteral("the entry names no server: its download fails"),
                  QStringLiteral("add a server attribute"));
        }
        checkName(entry, QStringLiteral("server"), entry.info.server);
        checkName(entry, QStringLiteral("version"), entry.info.version);
    }

    // Says it once, however often the name comes back.
    bool isFirst(const QString &attribute, const QString &name)
    {
        const int before = m_names.size();
        m_names.insert(joined(attribute, name));
        return m_names.size() > before;
    }

    void checkName(const ClientEntry &entry, const QString &attribute, const QString &name)
    {
        if (name.isEmpty() || !isFirst(attribute, name)) {
            return;
        }
        const QString what = attribute + QLatin1Char(' ') + quoted(name);
        const QString rename = QStringLiteral("use another name");
        if (attribute == QLatin1String("server")) {
            checkSelection(entry, what);
        }
        QString flat = name;
        const QStringList parts =
            flat.replace(QLatin1Char('\\'), QLatin1Char('/')).split(QLatin1Char('/'));
        if (std::any_of(parts.begin(), parts.end(), isDots)) {
            error(entry.place, "dot-name",
                  what + QStringLiteral(" leads out of its own folder: the download fails, or "
                                        "the client is removed as soon as it is unpacked"),
                  rename);
        } else if (parts.size() > 1) {
            error(entry.place, "slash-in-name",
                  what + QStringLiteral(" is more than one folder: the logo is not kept, and the "
                                        "installed client is not found"),
                  rename);
        }
        // A server's "|" breaks more than the folder, and has its own finding.
        const bool isServer = attribute == QLatin1String("server");
        if (std::any_of(name.begin(), name.end(), [isServer](QChar letter) {
                return isForbiddenOnWindows(letter) && !(isServer && letter == QLatin1Char('|'));
            })) {
            error(entry.place, "forbidden-character",
                  what + QStringLiteral(" holds a character that Windows allows in no folder's "
                                        "name: the download fails"),
                  QStringLiteral("leave out < > : \" | ? * and control characters"));
        }
        if (isReservedName(name)) {
            error(entry.place, "reserved-name",
                  what + QStringLiteral(" is the name of a device on Windows: the download fails"),
                  rename);
        }
        if (!isDots(name) && (name.endsWith(QLatin1Char('.')) || name.endsWith(QLatin1Char(' ')))) {
            error(entry.place, "trailing-dot-or-blank",
                  what + QStringLiteral(" ends in a dot or a blank, which Windows drops from the "
                                        "folder's name"),
                  QStringLiteral("leave out what stands at the end"));
        }
    }

    void checkSelection(const ClientEntry &entry, const QString &what)
    {
        const ServerPanel::Selection chosen = ServerPanel::parseSelectionKey(
            ServerPanel::selectionKey(entry.info.server, entry.info.client));
        if (chosen.server != entry.info.server) {
            error(entry.place, "bar-in-name",
                  what + QStringLiteral(" holds a \"|\": a click on its buttons selects %1, which "
                                        "is nothing")
                             .arg(quoted(chosen.server)),
                  QStringLiteral("leave out the \"|\""));
        }
    }

    void checkVersion(const ClientEntry &entry)
    {
        const QString &version = entry.info.version;
        const QString what = QStringLiteral("version ") + quoted(version);
        const qint32 weight = versionWeight(version);
        const QString never = QStringLiteral(": it never counts as installed, and Play is never "
                                             "offered");
        const QString number = QStringLiteral("number versions from 0.0.0.0.1 to 21.47");
        if (versionWeightWraps(version)) {
            const QString text = what + QStringLiteral(" is too great and wraps around");
            if (weight > 0) {
                warning(entry.place, "version-wraps",
                        text + QStringLiteral(": it counts less than an earlier one"), number);
            } else {
                error(entry.place, "version-wraps", text + never, number);
            }
        } else if (weight == 0) {
            error(entry.place, "version-zero", what + QStringLiteral(" weighs nothing") + never,
                  number);
        } else if (weight < 0) {
            error(entry.place, "version-negative",
                  what + QStringLiteral(" weighs less than nothing") + never, number);
        }
        if (version.count(QLatin1Char('.')) > 4) {
            warning(entry.place, "version-parts",
                    what + QStringLiteral(" has more than five parts: those behind the fifth do "
                                          "not count"),
                    QStringLiteral("use at most five parts"));
        }
    }

    void checkAuth(const ClientEntry &entry)
    {
        static const QRegularExpression sha1(QStringLiteral("^[0-9A-Fa-f]{40}$"));
        if (!entry.hasAuth) {
            return;
        }
        if (!sha1.match(entry.info.auth).hasMatch()) {
            error(entry.place, "auth-not-sha1",
                  QStringLiteral("auth is no SHA-1 sum: no code shows the entry"),
                  QStringLiteral("write the 40 hexadecimal digits that sha1sum prints for the "
                                 "code, without a line end"));
        } else if (entry.info.auth.toLower() == authCodeSum({})) {
            warning(entry.place, "auth-of-no-code",
                    QStringLiteral("auth is the sum of an empty code: everybody without a code "
                                   "sees the entry"),
                    QStringLiteral("write the sum of the code, or leave auth out"));
        }
    }

    void checkAddress(Place place, const QString &what, const QUrl &url, const QString &loss)
    {
        if (!isUsableAddress(url)) {
            error(place, "unusable-address",
                  what + QStringLiteral(" %1 is no web address: ").arg(quoted(url.toString())) +
                      loss,
                  QStringLiteral("write the whole address, https:// included"));
        } else if (isOpenToOthers(url)) {
            m_findings << openToOthers(place, what, url);
        }
    }

    void checkArchiveUrl(const ClientEntry &entry)
    {
        const QUrl url(entry.info.url);
        checkAddress(entry.place, QStringLiteral("url"), url, QStringLiteral("the download fails"));
        if (!isUsableAddress(url)) {
            return;
        }
        const QString name = wantedSaveFileName(url);
        const QString leftBehind =
            QStringLiteral("a broken-off download stays in the player's folder for ever as ");
        if (url.path().isEmpty() || url.path().endsWith(QLatin1Char('/'))) {
            warning(entry.place, "archive-url-ends-in-slash",
                    QStringLiteral("url names no file: ") + leftBehind + quoted(name),
                    QStringLiteral("end the address in a file name with .zip"));
        } else if (!name.endsWith(QLatin1String(".zip"), Qt::CaseInsensitive)) {
            warning(entry.place, "archive-not-zip",
                    QStringLiteral("the archive's name does not end in .zip: ") + leftBehind +
                        quoted(name),
                    QStringLiteral("end the address in .zip"));
        }
        const ClientEntry *&first = m_saveNames[name.toLower()];
        if (first == nullptr) {
            first = &entry;
        } else if (first->info.url != entry.info.url) {
            warning(entry.place, "archive-name-collides",
                    QStringLiteral("the archive is saved as %1 like the one in line %2: of two "
                                   "downloads at once, one unpacks and removes the other's file")
                        .arg(quoted(name))
                        .arg(first->place.line),
                    QStringLiteral("put server, client and version into the file's name"));
        }
    }

    // An entry is lost to everybody when a later one of the same server and kind is seen by all who
    // would see it. A later one behind another code is a tester's, and meant so.
    void checkDuplicates()
    {
        QHash<QString, Place> later;
        for (int i = m_content.clients.size() - 1; i >= 0; --i) {
            const ClientEntry &entry = m_content.clients.at(i);
            const QString open = keyOf(entry);
            if (m_entriesOfKey.value(open) == 1) {
                continue;
            }
            const QString own = keyForAudience(entry);
            const auto found = later.contains(open) ? later.constFind(open) : later.constFind(own);
            if (found != later.cend()) {
                error(entry.place, "duplicate-client",
                      QStringLiteral("the entry in line %1 replaces this one of server %2, client "
                                     "%3: nobody sees it")
                          .arg(QString::number(found->line), quoted(entry.info.server),
                               quoted(entry.info.client)),
                      QStringLiteral("remove one of the two"));
            }
            later.insert(own, entry.place);
        }
    }

    // Two entries of one server and kind share a folder: a tester's beside everybody's.
    void checkEqualVersions()
    {
        QHash<QString, const ClientEntry *> earlier;
        for (const ClientEntry &entry : m_content.clients) {
            if (m_entriesOfKey.value(keyOf(entry)) == 1) {
                continue;
            }
            const qint32 weight = versionWeight(entry.info.version);
            const QString key =
                joined(entry.info.server, entry.info.client, QString::number(weight));
            const ClientEntry *&other = earlier[key];
            if (other != nullptr && weight > 0 &&
                other->info.auth.toLower() != entry.info.auth.toLower() &&
                (other->info.version != entry.info.version || other->info.url != entry.info.url)) {
                warning(entry.place, "version-equal",
                        QStringLiteral("version %1 counts the same as %2 in line %3: whoever has "
                                       "one is not brought to the other")
                            .arg(quoted(entry.info.version), quoted(other->info.version))
                            .arg(other->place.line),
                        QStringLiteral("give one of the two a greater version"));
            }
            other = &entry;
        }
    }

    void checkPrevious()
    {
        if (m_previous == nullptr) {
            return;
        }
        QHash<QString, const ClientEntry *> before;
        before.reserve(m_previous->clients.size());
        for (const ClientEntry &entry : m_previous->clients) {
            before.insert(keyForAudience(entry), &entry);
        }
        for (const ClientEntry &entry : m_content.clients) {
            const ClientEntry *old = before.value(keyForAudience(entry));
            if (old != nullptr && old->info.version != entry.info.version) {
                checkStep(entry, old->info.version);
            }
        }
    }

    void checkStep(const ClientEntry &entry, const QString &before)
    {
        const qint32 weight = versionWeight(entry.info.version);
        const qint32 weightBefore = versionWeight(before);
        const QString versions =
            quoted(entry.info.version) + QStringLiteral(" after ") + quoted(before);
        const QString consequence =
            QStringLiteral(": its label stays orange behind the update, and where the earlier one "
                           "cannot be removed, Play goes on starting that");
        if (weight < weightBefore) {
            warning(entry.place, "version-lower",
                    QStringLiteral("the version falls: ") + versions + consequence,
                    QStringLiteral("publish the older build again under a greater version"));
        } else if (weight == weightBefore) {
            warning(entry.place, "version-equal",
                    QStringLiteral("the versions count the same: ") + versions + consequence,
                    QStringLiteral("give the new build a greater version"));
        }
    }

    void checkServerFolders()
    {
        QHash<QString, const ClientEntry *> folders;
        for (const ClientEntry &entry : m_content.clients) {
            // Entries of one server mostly follow each other.
            if (&entry != m_content.clients.cbegin() &&
                (&entry - 1)->info.server == entry.info.server) {
                continue;
            }
            const ClientEntry *&first = folders[entry.info.server.toLower()];
            if (first == nullptr) {
                first = &entry;
            } else if (first->info.server != entry.info.server &&
                       isFirst(QStringLiteral("folder"), entry.info.server)) {
                error(entry.place, "same-folder",
                      QStringLiteral("servers %1 and %2 differ in letter case only and share a "
                                     "folder on Windows: updating one removes the other's client")
                          .arg(quoted(first->info.server), quoted(entry.info.server)),
                      QStringLiteral("rename one of the two"));
            }
        }
    }

    void checkButtons()
    {
        QHash<QString, QStringList> kinds;
        QHash<QString, Place> places;
        QHash<QString, bool> known;
        for (const ClientEntry &entry : m_content.clients) {
            const QString &kind = entry.info.client;
            if (!known.contains(kind)) {
                known.insert(kind, isKnownKind(kind));
            }
            if (!known.value(kind)) {
                error(entry.place, "unknown-kind",
                      QStringLiteral("client %1 is neither \"Official\" nor \"Beta\": no button "
                                     "shows it")
                          .arg(quoted(entry.info.client)),
                      QStringLiteral("name it \"Official\" or \"Beta\", in these letters"));
            }
            if (entry.visible) {
                if (!places.contains(entry.info.server)) {
                    places.insert(entry.info.server, entry.place);
                }
                kinds[entry.info.server] << entry.info.client;
            }
        }
        for (auto server = kinds.cbegin(); server != kinds.cend(); ++server) {
            const ServerPanel::ClientButtons buttons = ServerPanel::clientButtons(server.value());
            if (buttons.beta && !buttons.betaSelects) {
                error(places.value(server.key()), "empty-beta-button",
                      QStringLiteral("server %1 has a \"Beta\" button that selects nothing")
                          .arg(quoted(server.key())),
                      QStringLiteral("give the server an \"Official\" or a \"Beta\" client"));
            }
        }
    }

    void checkNews(const QVector<NewsItem> &items, const QString &kind, int room)
    {
        for (const NewsItem &item : items) {
            if (item.index >= room) {
                error(item.place,
                      kind == QLatin1String("slide") ? "too-many-slides" : "too-many-tiles",
                      QStringLiteral("the window has room for %1 %2s; this one is not shown, but "
                                     "counts toward the nine that are read")
                          .arg(room)
                          .arg(kind),
                      QStringLiteral("remove it"));
                continue;
            }
            const bool isSlide = kind == QLatin1String("slide");
            checkText(item, QStringLiteral("title"), item.title, isSlide);
            checkText(item, QStringLiteral("description"), item.description, isSlide);
            checkAddress(item.place, QStringLiteral("imageUrl"), QUrl(item.shown.imageUrl),
                         QStringLiteral("there is no picture"));
            checkAddress(item.place, QStringLiteral("clickUrl"), QUrl(item.shown.clickUrl),
                         QStringLiteral("a click opens nothing"));
        }
    }

    void checkText(const NewsItem &item, const QString &attribute, const QString &written,
                   bool isSlide)
    {
        if (isSlide && throughLatin1(written) != written) {
            error(item.place, "latin1-damage",
                  QStringLiteral("players see the %1 %2 as %3")
                      .arg(attribute, quoted(written),
                           quoted(withoutLeadingQuestionMark(throughLatin1(written)))),
                  QStringLiteral("use plain ASCII letters in the texts of slides"));
        } else if (withoutLeadingQuestionMark(written) != written) {
            warning(item.place, "leading-question-mark",
                    QStringLiteral("the %1 loses the \"?\" at its beginning").arg(attribute),
                    QStringLiteral("begin with another character, or write \"??\""));
        }
    }

    // An element without attributes is taken for a container, which does no harm.
    void checkStrangers()
    {
        for (const DocumentElement &element : m_content.strangers) {
            if (!element.attributes.isEmpty()) {
                warning({element.line, element.column}, "unknown-element",
                        QStringLiteral("the launcher does not know the element %1 and skips it")
                            .arg(quoted(element.name)),
                        QStringLiteral("write launcher, client, homenews or news, in these "
                                       "letters"));
            }
        }
    }

    QString lostThings() const
    {
        QHash<QString, int> counts;
        for (const DocumentElement &element : m_content.lost) {
            ++counts[element.name];
        }
        QStringList words;
        for (const char *name : {"client", "homenews", "news"}) {
            if (const int count = counts.value(QLatin1String(name))) {
                words << QStringLiteral("%1 %2").arg(count).arg(QLatin1String(name));
            }
        }
        return words.join(QStringLiteral(", "));
    }

    void checkEnd()
    {
        const DocumentEnd &end = m_content.end;
        const QString lost = lostThings();
        if (end.reason == DocumentEnd::NotXml) {
            error({end.line, end.column}, "not-well-formed",
                  QStringLiteral("the text stops being XML, and what follows is lost: ") +
                      end.error,
                  QStringLiteral("mend the text here or shortly before"));
        } else if (end.reason == DocumentEnd::BrokenElement) {
            const QStringList missing =
                missingAttributes(m_content.broken.name, m_content.broken.attributes);
            error({m_content.broken.line, m_content.broken.column}, "missing-attribute",
                  QStringLiteral("the %1 element lacks %2: it is lost, and so is what follows (%3)")
                      .arg(m_content.broken.name, missing.join(QStringLiteral(", ")),
                           lost.isEmpty() ? QStringLiteral("nothing else") : lost),
                  QStringLiteral("add the attribute, empty if need be"));
        } else if (end.reason == DocumentEnd::EnoughNews && !lost.isEmpty()) {
            const DocumentElement &first = m_content.lost.constFirst();
            error({first.line, first.column}, "after-ninth-news",
                  QStringLiteral("the launcher reads no further than the ninth homenews or news "
                                 "element; lost from here on: ") +
                      lost,
                  QStringLiteral("put client elements first, and no more than nine homenews and "
                                 "news elements"));
        }
        if (m_content.restIsNotXml) {
            warning({m_content.restIsNotXml->line, m_content.restIsNotXml->column},
                    "not-well-formed",
                    QStringLiteral("the text stops being XML behind what the launcher reads: ") +
                        m_content.restIsNotXml->error,
                    QStringLiteral("mend the text here or shortly before"));
        }
    }

    const DocumentContent &m_content;
    const DocumentContent *m_previous;
    QHash<QString, int> m_entriesOfKey;
    QHash<QString, const ClientEntry *> m_saveNames;
    QSet<QString> m_names;
    Findings m_findings;
};
} // namespace

Findings findingsOf(const DocumentContent &content, const DocumentContent *previous)
{
    return Rules(content, previous).all();
}

bool isUsableAddress(const QUrl &url)
{
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http"));
}

bool isOpenToOthers(const QUrl &url)
{
    static const QRegularExpression loopback(
        QStringLiteral("^(localhost|127(\\.[0-9]{1,3}){3}|::1)$"));
    return url.scheme() == QLatin1String("http") && !loopback.match(url.host()).hasMatch();
}

Finding openToOthers(const Place &place, const QString &what, const QUrl &url)
{
    return {place.line,
            place.column,
            Finding::Warning,
            QStringLiteral("http"),
            what + QStringLiteral(" %1 is not encrypted: anybody on the way can read it and put "
                                  "something else in its place")
                       .arg(quoted(url.toString())),
            QStringLiteral("serve it over https")};
}
