#include "check/deepcheck.h"

#include "base/documentlimits.h"
#include "check/addresses.h"
#include "check/archive.h"
#include "check/clientkeys.h"
#include "check/fetch.h"
#include "check/members.h"
#include "check/pictures.h"
#include "check/programs.h"
#include "check/twins.h"
#include "check/webpage.h"
#include "fetch/picturesize.h"
#include "info/serverpanel.h"

#include <QBuffer>
#include <QFile>
#include <QHash>
#include <QSet>
#include <QTemporaryDir>

#include <algorithm>
#include <utility>

namespace
{
// What is known of one archive, however many entries name it.
struct FetchedArchive {
    Fetched fetched;
    Archive archive;
    bool isWebPage = false;
    QString damage; // without a password, or with the code
};

QByteArray beginningOf(const QString &fileName)
{
    constexpr int enough = 1024;
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.read(enough) : QByteArray();
}

// What to do about something that does not arrive.
QString mendOf(const Fetched &fetched, const QString &what)
{
    switch (fetched.failure) {
    case Fetched::Missing:
        return what == QLatin1String("logo")
                   ? QStringLiteral("publish it under this address: the server's name with .png, "
                                    "capital letters as in the document")
                   : QStringLiteral("publish the file, or mend the address, in which capital "
                                    "letters count");
    case Fetched::NoHost:
        return QStringLiteral("mend the host's name in the address, or see whether this machine is "
                              "connected");
    case Fetched::NobodyListens:
        return QStringLiteral("start the web server, or mend the host and the port of the address");
    case Fetched::CutShort:
        return QStringLiteral(
            "compare the file on the server with yours and upload it again; if it "
            "is whole, the server says a wrong Content-Length, or a limit of time "
            "or size on the way ends the transfer");
    case Fetched::Silent:
        return QStringLiteral("see whether the server is overloaded, or give it longer with "
                              "--timeout");
    case Fetched::TooMuch:
        return QStringLiteral("publish a smaller file");
    case Fetched::Forbidden:
        return QStringLiteral("let everybody read the file: the launcher has no password");
    case Fetched::ServerFault:
        return QStringLiteral("look into the server's log of errors");
    case Fetched::Other:
        break;
    }
    return QStringLiteral("publish the file, or mend the address");
}

class DeepCheck
{
public:
    DeepCheck(const DocumentContent &content, QString base, QString code, Fetcher &fetcher,
              const DocumentContent *previous)
        : m_content(content)
        , m_base(std::move(base))
        , m_code(std::move(code))
        , m_fetcher(fetcher)
        , m_before(previous == nullptr ? QHash<QString, ClientInfo>()
                                       : infosByAudience(previous->clients))
    {
    }

    DeepResult all()
    {
        checkLogos();
        checkPictures();
        checkArchives();
        return {m_findings, m_started, m_sizes};
    }

private:
    void checkLogos()
    {
        QSet<QString> servers;
        for (const ClientEntry &entry : m_content.clients) {
            const QString &server = entry.info.server;
            if (!servers.contains(server)) {
                servers.insert(server);
                const QByteArray logo = checkPicture(
                    entry.place, QStringLiteral("logo"),
                    QUrl(m_base + ServerPanel::logoFileName(server)), shownSizeOfLogo());
                if (!logo.isEmpty()) {
                    m_twins.addLogo(entry.place, server, logo, m_findings);
                }
            }
        }
    }

    void checkPictures()
    {
        const QVector<NewsItem> slides = m_content.slides.mid(0, DocumentLimits::slides);
        for (const NewsItem &slide : slides) {
            checkNewsPicture(slide, shownSizeOfSlide());
        }
        const QVector<NewsItem> tiles = m_content.tiles.mid(0, DocumentLimits::tiles);
        for (const NewsItem &tile : tiles) {
            checkNewsPicture(tile, shownSizeOfTile(tile.index));
        }
    }

    void checkNewsPicture(const NewsItem &item, const QSize &shown)
    {
        const QUrl url(item.shown.imageUrl);
        // An address that is none has been told already.
        if (isUsableAddress(url)) {
            const QByteArray picture =
                checkPicture(item.place, QStringLiteral("picture"), url, shown);
            if (!picture.isEmpty()) {
                m_twins.addPicture(item.place, url.toString(), picture, m_findings);
            }
        }
    }

    // Returns what arrived, when that is a picture.
    QByteArray checkPicture(const Place &place, const QString &what, const QUrl &url,
                            const QSize &shown)
    {
        QBuffer body;
        body.open(QIODevice::WriteOnly);
        const Fetched fetched = m_fetcher.fetch(url, body, Fetcher::smallThings);
        m_findings << findingsOfFetch(fetched, place, what, url);
        if (!fetched.arrived) {
            return {};
        }
        const Findings findings = findingsOfPicture(
            body.data(), shown, place, QStringLiteral("the %1 %2").arg(what, url.toString()));
        m_findings << findings;
        const bool isPicture =
            std::none_of(findings.begin(), findings.end(),
                         [](const Finding &finding) { return finding.severity == Finding::Error; });
        return isPicture ? body.data() : QByteArray();
    }

    void checkArchives()
    {
        for (const ClientEntry &entry : m_content.clients) {
            const QUrl url(entry.info.url);
            if (!isUsableAddress(url)) {
                continue;
            }
            const FetchedArchive known = archiveAt(url, entry.info.url);
            checkArchive(entry, url, known);
            compareWithEarlier(entry, known.archive);
        }
    }

    FetchedArchive archiveAt(const QUrl &url, const QString &written)
    {
        auto known = m_archives.find(written);
        if (known == m_archives.end()) {
            known = m_archives.insert(written, fetchArchive(url));
        }
        return *known;
    }

    // The archive that the same players have now, where it is another one and can still be had.
    void compareWithEarlier(const ClientEntry &entry, const Archive &archive)
    {
        const auto old = m_before.constFind(keyForAudience(entry));
        if (old == m_before.cend() || old->url == entry.info.url || !archive.opens) {
            return;
        }
        const QUrl url(old->url);
        if (isUsableAddress(url)) {
            const Archive earlier = archiveAt(url, old->url).archive;
            if (earlier.opens) {
                compareArchives(entry, archive, *old, earlier, m_findings);
            }
        }
    }

    // The file is gone when this returns: a document may name more than the disk holds.
    FetchedArchive fetchArchive(const QUrl &url)
    {
        FetchedArchive result;
        // In a folder of its own: a temporary file of the toolkit's stays open, and on Windows the
        // extractor's code reads nothing that somebody may still write to.
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("archive.zip")));
        if (!file.open(QIODevice::WriteOnly)) {
            result.fetched.error = QStringLiteral("it cannot be kept: ") + file.errorString();
            return result;
        }
        result.fetched = m_fetcher.fetch(url, file, Fetcher::archives);
        file.close();
        if (result.fetched.arrived) {
            result.isWebPage = isWebPage(beginningOf(file.fileName()));
            result.archive = openArchive(file.fileName());
            const bool locked = result.archive.encryptedFiles > 0;
            if (result.archive.opens && (!locked || !m_code.isEmpty())) {
                result.damage =
                    testArchive(file.fileName(), locked ? m_code : QString(), result.archive);
            }
        }
        return result;
    }

    void checkArchive(const ClientEntry &entry, const QUrl &url, const FetchedArchive &known)
    {
        const QString what = QStringLiteral("archive");
        m_findings << findingsOfFetch(known.fetched, entry.place, what, url);
        if (!known.fetched.arrived) {
            return;
        }
        const QString named = QStringLiteral("the archive ") + url.toString();
        if (known.isWebPage) {
            m_findings << errorAt(entry.place, "archive-broken",
                                  named + QStringLiteral(" is a web page: the download fails"),
                                  QStringLiteral("name the address of the file itself, not that "
                                                 "of a page about it or behind a login"));
            return;
        }
        if (!known.fetched.sizeStated) {
            m_findings << warningAt(
                entry.place, "no-size",
                QStringLiteral("the server does not say how big %1 is: players see no progress")
                    .arg(named),
                QStringLiteral("let the server send Content-Length, without compression on the "
                               "way"));
        }
        if (known.archive.opens) {
            m_sizes.insert(url.toString(), {known.archive.files, known.archive.unpackedSize});
            checkContent(entry, named, known);
            m_started << checkPrograms(entry, named, known.archive, m_findings);
            checkMembers(entry, named, known.archive, m_findings);
        } else if (known.archive.refused) {
            m_findings << errorAt(entry.place, "archive-refused",
                                  named + QStringLiteral(" is refused by the extractor: ") +
                                      known.archive.refusal,
                                  QStringLiteral("pack it anew without that, with Deflate where "
                                                 "the program offers other methods"));
        } else {
            m_findings << errorAt(entry.place, "archive-broken",
                                  named + QStringLiteral(" cannot be opened: ") +
                                      known.archive.refusal,
                                  QStringLiteral("pack a zip archive, upload it whole, and "
                                                 "compare its size with yours"));
        }
    }

    void checkContent(const ClientEntry &entry, const QString &named, const FetchedArchive &known)
    {
        const Archive &archive = known.archive;
        const bool locked = archive.encryptedFiles > 0;
        if (locked && !entry.hasAuth) {
            m_findings << errorAt(
                entry.place, "archive-locked",
                named + QStringLiteral(" is locked, and the entry has no auth: the launcher hands "
                                       "the extractor no password"),
                QStringLiteral("publish it without a password, or give the entry its auth"));
        } else if (entry.hasAuth && archive.encryptedFiles < archive.files) {
            m_findings << warningAt(
                entry.place, "archive-open",
                named + QStringLiteral(" is not locked, though the entry has auth: whoever knows "
                                       "the address can unpack it"),
                QStringLiteral("lock every file in it with the code"));
        }
        // Another tester's code does not open what this one's archive is locked with.
        const bool codeFits = entry.hasAuth && entry.visible;
        if (!known.damage.isEmpty() && (!locked || codeFits)) {
            m_findings << errorAt(entry.place, "archive-damaged",
                                  named +
                                      (locked ? QStringLiteral(" does not unpack with the code: ")
                                              : QStringLiteral(" does not unpack: ")) +
                                      known.damage,
                                  locked ? QStringLiteral("lock it with the code whose sum auth is")
                                         : QStringLiteral("pack and upload it again"));
        }
    }

    const DocumentContent &m_content;
    const QString m_base;
    const QString m_code;
    Fetcher &m_fetcher;
    PictureTwins m_twins;
    const QHash<QString, ClientInfo> m_before; // by audience
    QHash<QString, FetchedArchive> m_archives; // by address
    Findings m_findings;
    QVector<PlayersView::Started> m_started;
    QHash<QString, ArchiveSize> m_sizes; // by address
};
} // namespace

Findings findingsOfFetch(const Fetched &fetched, const Place &place, const QString &what,
                         const QUrl &url)
{
    const QString named = QStringLiteral("the %1 %2 ").arg(what, url.toString());
    if (fetched.redirected) {
        return {errorAt(place, "redirect",
                        named + QStringLiteral("is redirected to %1, and the launcher follows "
                                               "no redirect")
                                    .arg(fetched.target),
                        QStringLiteral("name the address where the file really lies"))};
    }
    if (fetched.distrusted) {
        return {errorAt(place, "tls-error", named + QStringLiteral("is refused: ") + fetched.error,
                        QStringLiteral("give the server a certificate that players' machines "
                                       "trust, for this host name; for a try, --authority trusts "
                                       "one of your own"))};
    }
    if (!fetched.arrived) {
        return {errorAt(place, "unreachable",
                        named + QStringLiteral("does not arrive: ") + fetched.error,
                        mendOf(fetched, what))};
    }
    return {};
}

DeepResult checkDeeply(const DocumentContent &content, const QString &base, const QString &code,
                       Fetcher &fetcher, const DocumentContent *previous)
{
    return DeepCheck(content, base, code, fetcher, previous).all();
}
