#include "check/addressforms.h"

#include "base/plainname.h"
#include "check/addresses.h"
#include "check/spelling.h"
#include "install/savefilename.h"

#include <QRegularExpression>
#include <QUrl>
#include <QUrlQuery>

#include <algorithm>

namespace
{
enum class Use {
    Archive,
    Picture,
    Page,
};

struct Address {
    Place place;
    QString what;
    QString written;
    Use use = Use::Archive;
};

void checkWriting(const Address &address, Findings &findings)
{
    const QString named = address.what + QLatin1Char(' ') + quoted(address.written);
    if (address.written.trimmed() != address.written) {
        findings << errorAt(address.place, "blank-around-address",
                            named + QStringLiteral(" begins or ends in a blank or a line end, "
                                                   "which is a part of it"),
                            QStringLiteral("leave out what stands around the address"));
    } else if (holdsInvisible(address.written)) {
        findings << errorAt(address.place, "invisible-character",
                            named + QStringLiteral(" holds a character that nobody sees"),
                            QStringLiteral("write the address anew, by hand"));
    }
    if (!mixedWord(address.written).isEmpty()) {
        findings << warningAt(address.place, "look-alike-letters",
                              named + QStringLiteral(" mixes letters of several scripts that look "
                                                     "the same: it is another one than it seems"),
                              QStringLiteral("write the address anew, with one keyboard"));
    }
}

// For this time or for these people only.
void checkAccess(const Address &address, const QUrl &url, Findings &findings)
{
    static const QRegularExpression passing(
        QStringLiteral("(^|[-_])(expires?|expiry|exp|signature|sig|token|hmac|policy|hdnts)$"));
    const auto items = QUrlQuery(url).queryItems();
    const bool expires = std::any_of(items.begin(), items.end(), [](const auto &item) {
        return passing.match(item.first.toLower()).hasMatch();
    });
    if (expires) {
        findings << warningAt(address.place, "address-expires",
                              address.what + QStringLiteral(" is signed for a time: after that, "
                                                            "nobody gets it any more"),
                              QStringLiteral("publish the file for everybody, and for good"));
    }
    if (!url.userInfo().isEmpty()) {
        findings << warningAt(address.place, "password-in-address",
                              address.what + QStringLiteral(" holds a name or a password, which "
                                                            "everybody can read"),
                              QStringLiteral("publish the file without one, and lock the archive "
                                             "with a code"));
    }
}

// Where nobody but the operator comes. The machine itself is left out, as for http.
bool isPrivate(const QString &host)
{
    static const QRegularExpression ranges(QStringLiteral(
        "^(10\\.|192\\.168\\.|169\\.254\\.|172\\.(1[6-9]|2[0-9]|3[01])\\.)[0-9.]+$"));
    static const QRegularExpression names(
        QStringLiteral("\\.(local|lan|internal|intranet|home|corp)$"));
    const bool isName = !host.contains(QLatin1Char('.')) && !host.contains(QLatin1Char(':'));
    return ranges.match(host).hasMatch() || names.match(host).hasMatch() ||
           (isName && host != QLatin1String("localhost"));
}

void checkHost(const Address &address, const QUrl &url, Findings &findings)
{
    if (isPrivate(url.host())) {
        findings << warningAt(address.place, "private-address",
                              address.what + QStringLiteral(" lies on %1, which players cannot "
                                                            "reach from elsewhere")
                                                 .arg(quoted(url.host())),
                              QStringLiteral("name a host of the public network"));
    }
}

// About the file, in place of the file.
void checkPage(const Address &address, const QUrl &url, Findings &findings)
{
    static const QRegularExpression pages(
        QStringLiteral("\\.(html?|php|aspx?|jsp)$|/(blob|tree|view|preview|edit)(/|$)"),
        QRegularExpression::CaseInsensitiveOption);
    const bool asksForPage =
        QUrlQuery(url).queryItemValue(QStringLiteral("dl")) == QLatin1String("0");
    if (address.use != Use::Page && (asksForPage || pages.match(url.path()).hasMatch())) {
        findings << warningAt(address.place, "page-address",
                              address.what + QStringLiteral(" %1 looks like that of a page about "
                                                            "the file, and not of the file")
                                                 .arg(quoted(address.written)),
                              QStringLiteral("name the address that begins the download by "
                                             "itself"));
    }
}

void checkSavedName(const Address &address, const QUrl &url, Findings &findings)
{
    static const QRegularExpression odd(QStringLiteral("%[0-9A-Fa-f]{2}|^[ .]|^\\.zip$"));
    const QString name = wantedSaveFileName(url);
    if (isTooLongForAName(name)) {
        findings << errorAt(address.place, "archive-name-too-long",
                            QStringLiteral("the archive's name of %1 characters is longer than any "
                                           "file's: nothing is downloaded")
                                .arg(name.size()),
                            QStringLiteral("end the address in a shorter name"));
    } else if (odd.match(name).hasMatch() || isCutByWindows(name)) {
        findings << noteAt(address.place, "archive-name-odd",
                           QStringLiteral("the archive is saved as %1").arg(quoted(name)),
                           QStringLiteral("end the address in a plain file name, encoded once "
                                          "at most"));
    }
}

void checkForms(const Address &address, Findings &findings)
{
    checkWriting(address, findings);
    const QUrl url(address.written);
    if (!isUsableAddress(url)) {
        return; // told already
    }
    checkAccess(address, url, findings);
    checkHost(address, url, findings);
    checkPage(address, url, findings);
    if (address.use == Use::Archive && whyNotSavedOnWindowsAs(wantedSaveFileName(url)).isEmpty()) {
        checkSavedName(address, url, findings);
    }
}
} // namespace

void checkAddressForms(const DocumentContent &content, Findings &findings)
{
    for (const ClientEntry &entry : content.clients) {
        checkForms({entry.place, QStringLiteral("url"), entry.info.url, Use::Archive}, findings);
    }
    for (const QVector<NewsItem> &items : {content.slides, content.tiles}) {
        for (const NewsItem &item : items) {
            checkForms({item.place, QStringLiteral("imageUrl"), item.shown.imageUrl, Use::Picture},
                       findings);
            checkForms({item.place, QStringLiteral("clickUrl"), item.shown.clickUrl, Use::Page},
                       findings);
        }
    }
}
