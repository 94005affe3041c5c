#include "check/addresses.h"

#include "base/documentlimits.h"
#include "install/savefilename.h"

#include <QRegularExpression>

namespace
{
Finding unusable(const Place &place, const QString &what, const QString &written,
                 const QString &loss)
{
    const QString named = what + QLatin1Char(' ') + quoted(written);
    return written.isEmpty()
               ? errorAt(place, "unusable-address", what + QStringLiteral(" is empty: ") + loss,
                         QStringLiteral("write the whole address, https:// included"))
               : errorAt(place, "unusable-address",
                         named + QStringLiteral(" is no web address: ") + loss,
                         QStringLiteral("write the whole address, https:// included"));
}

// An address that a player cannot download from, whatever lies there. False when it is none.
bool checkRefusedName(const Place &place, const QString &name, Findings &findings)
{
    const QString reason = whyNotSavedOnWindowsAs(name);
    if (reason.isEmpty()) {
        return false;
    }
    findings << errorAt(place, "archive-name-refused",
                        QStringLiteral("nothing is saved as %1, and nothing is downloaded (%2)")
                            .arg(quoted(name), reason),
                        name.contains(QLatin1Char('\\'))
                            ? QStringLiteral("write slashes in the address, and no backslashes")
                            : QStringLiteral("end the address in a plain file name with .zip"));
    return true;
}

bool isNamedLikeZip(const QString &name)
{
    return name.endsWith(QLatin1String(".zip"), Qt::CaseInsensitive);
}

bool isNamedLikeAnotherArchive(const QString &name)
{
    static const QRegularExpression another(
        QStringLiteral("\\.(7z|rar|tar|gz|tgz|bz2|tbz2?|xz|txz|zst|lz4|lzma|cab|iso|msi|dmg|arj|"
                       "z[0-9]{2}|r[0-9]{2}|[0-9]{3})$"),
        QRegularExpression::CaseInsensitiveOption);
    return another.match(name).hasMatch();
}

void checkArchiveEnding(const Place &place, const QUrl &url, const QString &name,
                        Findings &findings)
{
    const QString leftBehind =
        QStringLiteral("a broken-off download stays in the player's folder for ever as ");
    // What stands in an address behind "#" is not sent to the server.
    if (url.hasFragment() && !isNamedLikeZip(name)) {
        findings << errorAt(place, "archive-url-fragment",
                            QStringLiteral("the launcher asks for %1 only, since a \"#\" ends what "
                                           "is asked for: the download fails")
                                .arg(quoted(url.adjusted(QUrl::RemoveFragment).toString())),
                            QStringLiteral("write %23 for a \"#\" in a file's name, or use "
                                           "another name"));
    } else if (isNamedLikeAnotherArchive(name)) {
        findings << errorAt(place, "archive-not-zip",
                            quoted(name) + QStringLiteral(" is named like another kind of archive "
                                                          "than zip: what is one does not unpack, "
                                                          "and the download fails"),
                            QStringLiteral("pack a zip archive, and end the address in .zip"));
    } else if (url.path().isEmpty() || url.path().endsWith(QLatin1Char('/'))) {
        findings << warningAt(place, "archive-url-ends-in-slash",
                              QStringLiteral("url names no file: ") + leftBehind + quoted(name),
                              QStringLiteral("end the address in a file name with .zip"));
    } else if (!isNamedLikeZip(name)) {
        findings << warningAt(place, "archive-not-zip",
                              QStringLiteral("the archive's name does not end in .zip: ") +
                                  leftBehind + quoted(name),
                              QStringLiteral("end the address in .zip"));
    }
}

void checkCollision(const ClientEntry &entry, const QString &name, ArchiveNames &names,
                    Findings &findings)
{
    const ClientEntry *&first = names[name.toLower()];
    if (first == nullptr) {
        first = &entry;
    } else if (first->info.url != entry.info.url) {
        findings << noteAt(
            entry.place, "archive-name-collides",
            QStringLiteral("the archive is saved as %1 like the one in line %2: of two downloads "
                           "that a player runs at once, one unpacks and removes the other's file")
                .arg(quoted(name))
                .arg(first->place.line),
            QStringLiteral("put server, client and version into the file's name"));
    }
}
} // namespace

bool isUsableAddress(const QUrl &url)
{
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http"));
}

bool isOfThisMachine(const QUrl &url)
{
    static const QRegularExpression loopback(
        QStringLiteral("^(localhost|127(\\.[0-9]{1,3}){3}|::1)$"));
    return loopback.match(url.host()).hasMatch();
}

bool isOpenToOthers(const QUrl &url)
{
    return url.scheme() == QLatin1String("http") && !isOfThisMachine(url);
}

Finding openToOthers(const Place &place, const QString &what, const QUrl &url)
{
    return warningAt(place, "http",
                     what + QStringLiteral(" %1 is not encrypted: anybody on the way can read it "
                                           "and put something else in its place")
                                .arg(quoted(url.toString())),
                     QStringLiteral("serve it over https"));
}

void checkAddress(const Place &place, const QString &what, const QString &written,
                  const QString &loss, Findings &findings)
{
    const QUrl url(written);
    if (!isUsableAddress(url)) {
        findings << unusable(place, what, written, loss);
    } else if (isOpenToOthers(url)) {
        findings << openToOthers(place, what, url);
    }
}

void checkOptionalAddress(const Place &place, const QString &what, const QString &written,
                          const QString &loss, Findings &findings)
{
    if (written.isEmpty()) {
        findings << noteAt(place, "unusable-address", what + QStringLiteral(" is empty: ") + loss,
                           QStringLiteral("write an address, unless that is meant"));
    } else {
        checkAddress(place, what, written, loss, findings);
    }
}

void checkPageAddress(const Place &place, const QString &what, const QString &written,
                      Findings &findings)
{
    static const QRegularExpression ofOtherPrograms(QStringLiteral("^[a-z][a-z0-9+.-]+$"));
    // What a browser does not open from elsewhere.
    static const QStringList ofNone{QStringLiteral("http"),       QStringLiteral("https"),
                                    QStringLiteral("file"),       QStringLiteral("data"),
                                    QStringLiteral("javascript"), QStringLiteral("about"),
                                    QStringLiteral("ftp"),        QStringLiteral("vbscript")};
    const QString loss = QStringLiteral("a click opens nothing");
    const QUrl url(written, QUrl::TolerantMode);
    const QString scheme = url.scheme();
    const bool complete = url.isValid() && (!url.path().isEmpty() || !url.host().isEmpty());
    if (!complete || ofNone.contains(scheme) || !ofOtherPrograms.match(scheme).hasMatch()) {
        checkOptionalAddress(place, what, written, loss, findings);
    } else if (scheme != QLatin1String("mailto")) {
        findings << noteAt(place, "other-program",
                           what + QStringLiteral(" %1 is no web page: a click opens it only where "
                                                 "the player has a program for \"%2:\"")
                                      .arg(quoted(written), scheme),
                           QStringLiteral("name a web page for those who have none"));
    }
}

void checkLongAddresses(const QVector<LongAddress> &addresses, Findings &findings)
{
    for (const LongAddress &address : addresses) {
        findings << errorAt(address.place, "long-address",
                            QStringLiteral("the %1 of %2 characters is longer than %3: it counts "
                                           "as empty")
                                .arg(address.attribute)
                                .arg(address.length)
                                .arg(DocumentLimits::addressLength),
                            QStringLiteral("write a shorter address"));
    }
}

void checkArchiveUrl(const ClientEntry &entry, ArchiveNames &names, Findings &findings)
{
    const QUrl url(entry.info.url);
    checkAddress(entry.place, QStringLiteral("url"), entry.info.url,
                 QStringLiteral("the download fails"), findings);
    if (isUsableAddress(url)) {
        const QString name = wantedSaveFileName(url);
        if (!checkRefusedName(entry.place, name, findings)) {
            checkArchiveEnding(entry.place, url, name, findings);
            checkCollision(entry, name, names, findings);
        }
    }
}
