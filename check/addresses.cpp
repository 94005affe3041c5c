#include "check/addresses.h"

#include "base/documentlimits.h"
#include "install/savefilename.h"

#include <QRegularExpression>

namespace
{
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
                        QStringLiteral("end the address in a plain file name with .zip"));
    return true;
}

void checkArchiveEnding(const Place &place, const QUrl &url, const QString &name,
                        Findings &findings)
{
    const QString leftBehind =
        QStringLiteral("a broken-off download stays in the player's folder for ever as ");
    if (url.path().isEmpty() || url.path().endsWith(QLatin1Char('/'))) {
        findings << warningAt(place, "archive-url-ends-in-slash",
                              QStringLiteral("url names no file: ") + leftBehind + quoted(name),
                              QStringLiteral("end the address in a file name with .zip"));
    } else if (!name.endsWith(QLatin1String(".zip"), Qt::CaseInsensitive)) {
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
        findings << warningAt(
            entry.place, "archive-name-collides",
            QStringLiteral("the archive is saved as %1 like the one in line %2: of two downloads "
                           "at once, one unpacks and removes the other's file")
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

bool isOpenToOthers(const QUrl &url)
{
    static const QRegularExpression loopback(
        QStringLiteral("^(localhost|127(\\.[0-9]{1,3}){3}|::1)$"));
    return url.scheme() == QLatin1String("http") && !loopback.match(url.host()).hasMatch();
}

Finding openToOthers(const Place &place, const QString &what, const QUrl &url)
{
    return warningAt(place, "http",
                     what + QStringLiteral(" %1 is not encrypted: anybody on the way can read it "
                                           "and put something else in its place")
                                .arg(quoted(url.toString())),
                     QStringLiteral("serve it over https"));
}

void checkAddress(const Place &place, const QString &what, const QUrl &url, const QString &loss,
                  Findings &findings)
{
    if (!isUsableAddress(url)) {
        findings << errorAt(
            place, "unusable-address",
            what + QStringLiteral(" %1 is no web address: ").arg(quoted(url.toString())) + loss,
            QStringLiteral("write the whole address, https:// included"));
    } else if (isOpenToOthers(url)) {
        findings << openToOthers(place, what, url);
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
    checkAddress(entry.place, QStringLiteral("url"), url, QStringLiteral("the download fails"),
                 findings);
    if (isUsableAddress(url)) {
        const QString name = wantedSaveFileName(url);
        if (!checkRefusedName(entry.place, name, findings)) {
            checkArchiveEnding(entry.place, url, name, findings);
            checkCollision(entry, name, names, findings);
        }
    }
}
