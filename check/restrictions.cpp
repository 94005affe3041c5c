#include "check/restrictions.h"

#include "check/addresses.h"
#include "check/codesums.h"
#include "check/spelling.h"
#include "info/settings.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>

namespace
{
QString authName()
{
    return QStringLiteral("auth");
}

QStringList namesReadOf(const QString &element)
{
    if (element == QLatin1String("client")) {
        return {QStringLiteral("server"), QStringLiteral("name"), QStringLiteral("version"),
                QStringLiteral("url")};
    }
    if (element == QLatin1String("homenews") || element == QLatin1String("news")) {
        return {QStringLiteral("id"), QStringLiteral("title"), QStringLiteral("description"),
                QStringLiteral("imageUrl"), QStringLiteral("clickUrl")};
    }
    return element == QLatin1String("launcher") ? QStringList{QStringLiteral("version")}
                                                : QStringList();
}

bool isSum(const QString &text)
{
    static const QRegularExpression sum(QStringLiteral("^\\s*[0-9A-Fa-f]{40}\\s*$"));
    return sum.match(text).hasMatch();
}

// Whoever writes one of these closes an entry, in a word of their own.
bool isWordForClosed(const QString &look)
{
    static const QStringList words{
        QStringLiteral("code"),   QStringLiteral("password"),   QStringLiteral("passwd"),
        QStringLiteral("pass"),   QStringLiteral("pwd"),        QStringLiteral("secret"),
        QStringLiteral("key"),    QStringLiteral("token"),      QStringLiteral("private"),
        QStringLiteral("locked"), QStringLiteral("restricted"), QStringLiteral("access")};
    return look.contains(authName()) || words.contains(look);
}

// These as well, or somebody notes the sum of the archive.
bool isWordForSum(const QString &look)
{
    static const QRegularExpression words(QStringLiteral("sha|hash|sum|digest"));
    return words.match(look).hasMatch();
}

bool isNamedLikeAuth(const QXmlStreamAttribute &attribute)
{
    return isAlmost(attribute.qualifiedName().toString(), authName());
}

Place placeIn(const DocumentElement &element)
{
    return {element.line, element.column};
}

void checkOpenAttribute(const DocumentElement &element, const QXmlStreamAttribute &attribute,
                        Findings &findings)
{
    const QString name = attribute.qualifiedName().toString();
    const QString look = lookOf(name);
    const QString mend = QStringLiteral("write auth, in these four letters, or leave it out");
    const bool hasSum = isSum(attribute.value().toString());
    if (isNamedLikeAuth(attribute) || isWordForClosed(look) || (hasSum && !isWordForSum(look))) {
        findings << errorAt(placeIn(element), "auth-misspelled",
                            QStringLiteral("the attribute %1 closes nothing, for only \"auth\" "
                                           "does: everybody sees the entry")
                                .arg(quoted(name)),
                            mend);
    } else if (hasSum) {
        findings << warningAt(placeIn(element), "auth-misspelled",
                              QStringLiteral("the sum in the attribute %1 closes nothing, for only "
                                             "\"auth\" does: everybody sees the entry")
                                  .arg(quoted(name)),
                              mend + QStringLiteral("; the launcher compares no archive with it"));
    }
}

void checkOpenClient(const DocumentElement &element, Findings &findings)
{
    if (element.attributes.hasAttribute(authName())) {
        return;
    }
    const QStringList read = namesReadOf(element.name);
    for (const QXmlStreamAttribute &attribute : element.attributes) {
        if (!read.contains(attribute.qualifiedName().toString())) {
            checkOpenAttribute(element, attribute, findings);
        }
    }
}

void checkAuthElsewhere(const DocumentElement &element, Findings &findings)
{
    // What is almost a client is skipped as a whole, and opens nothing.
    const QString client = QStringLiteral("client");
    if (element.name == client || isAlmost(element.name, client)) {
        return;
    }
    const bool has = std::any_of(element.attributes.begin(), element.attributes.end(),
                                 [](const QXmlStreamAttribute &attribute) {
                                     return attribute.qualifiedName() == authName() ||
                                            isNamedLikeAuth(attribute);
                                 });
    if (has || element.name == authName() || isAlmost(element.name, authName())) {
        findings << errorAt(placeIn(element), "auth-elsewhere",
                            QStringLiteral("the element %1 closes nothing, for only an attribute "
                                           "of a client does: everybody sees what is in it")
                                .arg(quoted(element.name)),
                            QStringLiteral("give each client its own auth attribute"));
    }
}

void checkSpelling(const DocumentElement &element, Findings &findings)
{
    const QStringList read = namesReadOf(element.name);
    for (const QXmlStreamAttribute &attribute : element.attributes) {
        const QString name = attribute.qualifiedName().toString();
        if (read.contains(name) || name == authName()) {
            continue;
        }
        const auto meant = std::find_if(read.begin(), read.end(), [&](const QString &wanted) {
            return !element.attributes.hasAttribute(wanted) && isAlmost(name, wanted);
        });
        if (meant != read.end()) {
            findings << errorAt(placeIn(element), "attribute-misspelled",
                                QStringLiteral("the launcher reads no attribute %1, and finds no "
                                               "%2 in the element")
                                    .arg(quoted(name), quoted(*meant)),
                                QStringLiteral("write %1, in these letters").arg(*meant));
        }
    }
}

// Whoever copies the sample document has it; there, and in the guide's try, it is right.
bool isOfTheGuide(const QString &sum, const QUrl &archive)
{
    return sum == authCodeSum(QStringLiteral("our-code")) && !isOfThisMachine(archive) &&
           !archive.host().endsWith(QLatin1String(".example"));
}

void checkSum(const ClientEntry &entry, const QString &code, Findings &findings)
{
    const QString sum = entry.info.auth.toLower();
    const QString blank = CodeSums::blankOf(sum);
    const QString variant = CodeSums::variantOf(sum, code);
    if (sum == authCodeSum({})) {
        findings << warningAt(entry.place, "auth-of-no-code",
                              QStringLiteral("auth is the sum of an empty code: everybody without "
                                             "a code sees the entry"),
                              QStringLiteral("write the sum of the code, or leave auth out"));
    } else if (!blank.isEmpty()) {
        findings << errorAt(entry.place, "auth-of-blank",
                            QStringLiteral("auth is the sum of %1, and of no code").arg(blank),
                            QStringLiteral("write what printf %s our-code | sha1sum prints"));
    } else if (!variant.isEmpty()) {
        findings << errorAt(
            entry.place, "auth-of-other-text",
            QStringLiteral("auth is the sum of %1: the code does not show the "
                           "entry")
                .arg(variant),
            QStringLiteral("write %1, which is the sum of the code itself").arg(authCodeSum(code)));
    } else if (CodeSums::isGuessable(sum, entry.info)) {
        findings << warningAt(entry.place, "auth-guessable",
                              QStringLiteral("auth is the sum of a word that anybody tries first: "
                                             "whoever does sees the entry"),
                              QStringLiteral("choose a longer code that nobody guesses"));
    } else if (isOfTheGuide(sum, QUrl(entry.info.url))) {
        findings << warningAt(entry.place, "auth-guessable",
                              QStringLiteral("auth is the sum of \"our-code\", which the guide has "
                                             "for an example: whoever has read it sees the entry"),
                              QStringLiteral("choose a code of your own"));
    }
}

// Nobody can lock one archive with two codes.
void checkCodesOfArchives(const QVector<ClientEntry> &clients, Findings &findings)
{
    QHash<QString, const ClientEntry *> closed;
    for (const ClientEntry &entry : clients) {
        if (!entry.hasAuth || entry.info.url.isEmpty()) {
            continue;
        }
        const ClientEntry *&first = closed[entry.info.url];
        if (first == nullptr) {
            first = &entry;
        } else if (first->info.auth.toLower() != entry.info.auth.toLower()) {
            findings << warningAt(entry.place, "archive-of-two-codes",
                                  QStringLiteral("the entry in line %1 has the same archive and "
                                                 "another auth: an archive has one password, and "
                                                 "if it is locked it does not unpack for whoever "
                                                 "has the other code")
                                      .arg(first->place.line),
                                  QStringLiteral("give each code an archive of its own, locked "
                                                 "with it"));
        }
    }
}
} // namespace

void checkAttributes(const QVector<DocumentElement> &elements, Findings &findings)
{
    for (const DocumentElement &element : elements) {
        if (element.name == QLatin1String("client")) {
            checkOpenClient(element, findings);
        }
        checkAuthElsewhere(element, findings);
        checkSpelling(element, findings);
    }
}

void checkAuth(const ClientEntry &entry, const QString &code, Findings &findings)
{
    static const QRegularExpression sha1(QStringLiteral("^[0-9A-Fa-f]{40}$"));
    if (!entry.hasAuth) {
        return;
    }
    if (sha1.match(entry.info.auth).hasMatch()) {
        checkSum(entry, code, findings);
        return;
    }
    const QString mend = isSum(entry.info.auth)
                             ? QStringLiteral("leave out the blanks around the sum")
                             : QStringLiteral("write the 40 hexadecimal digits that sha1sum prints "
                                              "for the code, without a line end");
    findings << errorAt(entry.place, "auth-not-sha1",
                        QStringLiteral("auth is no SHA-1 sum: no code shows the entry"), mend);
}

void checkClosedArchives(const QVector<ClientEntry> &clients, Findings &findings)
{
    checkCodesOfArchives(clients, findings);
    QHash<QString, Place> open;
    for (const ClientEntry &entry : clients) {
        if (!entry.hasAuth && !entry.info.url.isEmpty()) {
            open.insert(entry.info.url, entry.place);
        }
    }
    for (const ClientEntry &entry : clients) {
        const auto found = open.constFind(entry.info.url);
        if (entry.hasAuth && found != open.cend()) {
            findings << warningAt(entry.place, "closed-archive-is-open",
                                  QStringLiteral("the entry in line %1 offers the archive of this "
                                                 "closed one to everybody")
                                      .arg(found->line),
                                  QStringLiteral("give the closed entry an archive of its own, "
                                                 "locked with the code"));
        }
    }
}

void checkCode(const QString &code, Findings &findings)
{
    const QString kept =
        parseSettings(formatSettings({QStringLiteral("S"), QStringLiteral("C"), true, code})).auth;
    if (kept != code) {
        findings << errorAt({}, "code-not-kept",
                            QStringLiteral("of the code, the player's settings.txt keeps only %1: "
                                           "the launcher forgets the rest with its restart")
                                .arg(quoted(kept)),
                            QStringLiteral("choose a code without \"|\""));
    }
    if (code.contains(QLatin1Char('\n')) || code.contains(QLatin1Char('\r'))) {
        findings << errorAt({}, "code-with-line-end",
                            QStringLiteral("the code holds a line end, which nobody can type"),
                            QStringLiteral("choose a code without line ends"));
    }
    const bool isAscii =
        std::all_of(code.begin(), code.end(), [](QChar letter) { return letter.unicode() < 0x80; });
    if (!isAscii) {
        findings << noteAt({}, "code-beyond-ascii",
                           QStringLiteral("the code has letters beyond ASCII: a player's system "
                                          "whose 8-bit encoding lacks one of them forgets the "
                                          "code with the launcher's restart"),
                           QStringLiteral("choose a code of ASCII letters, digits and signs"));
    }
    if (code != code.trimmed()) {
        findings << warningAt({}, "code-with-blanks",
                              QStringLiteral("the code begins or ends with a blank, which counts "
                                             "and which testers do not see"),
                              QStringLiteral("choose a code without blanks around it"));
    }
}
