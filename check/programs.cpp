#include "check/programs.h"

#include "check/spelling.h"
#include "install/executables.h"

#include <QDir>
#include <QRegularExpression>
#include <QtEndian>

#include <algorithm>

namespace
{
struct Magic {
    const char *bytes;
    const char *words;
};

// Beginnings of files that are often packed under a program's name.
constexpr Magic magics[] = {
    {"\x7F"
     "ELF",
     "is a program of Linux"},
    {"\xFE\xED\xFA\xCE", "is a program of macOS"},
    {"\xFE\xED\xFA\xCF", "is a program of macOS"},
    {"\xCE\xFA\xED\xFE", "is a program of macOS"},
    {"\xCF\xFA\xED\xFE", "is a program of macOS"},
    {"\xCA\xFE\xBA\xBE", "is a program of macOS"},
    {"PK\x03\x04", "is a zip archive"},
    {"version https://git-lfs.", "is a pointer of git-lfs to the file"},
};

// Whether it looks like a program that comes with games, and is none.
bool looksLikeAHelper(const QString &name)
{
    static const QRegularExpression helper(QStringLiteral(
        "crash|report|bugsplat|unins|setup|install|redist|prereq|directx|dotnet|update|patch|"
        "config|"
        "settings|helper|handler|subprocess|cefprocess|webengine|diagnos|anticheat|benchmark|"
        "editor|"
        "server|cleanup|overlay|(^|[^a-z])(test|tool|tools|service|repair)([^a-z]|$)"));
    return helper.match(lookOf(name)).hasMatch();
}

// Whether its name is that of a copy somebody kept beside the game: "Game - Copy.exe" comes before
// "Game.exe", and so does "Game(1).exe".
bool looksLikeACopy(const QString &name)
{
    static const QRegularExpression copy(
        QStringLiteral("[^a-z](copy|kopie|backup|bak|old|orig)[ ()0-9]*\\.exe$|"
                       "\\([0-9]+\\)\\.exe$|^(copy of|kopie von) "));
    return copy.match(lookOf(name)).hasMatch();
}

// What lies beside every game's folder already, and comes before a game of the product's name.
bool isLauncher(const QString &name)
{
    return name.compare(QLatin1String("emberwake-launcher.exe"), Qt::CaseInsensitive) == 0 ||
           name.compare(QLatin1String("unzip.exe"), Qt::CaseInsensitive) == 0;
}

// What Windows reads of a program's own header. Offsets are those of the format.
QString whyNotStartedByWindows(const QByteArray &bytes)
{
    constexpr int placeOfHeader = 0x3C;
    constexpr int lengthOfHeader = 24;
    const auto number = [&bytes](int at) {
        return qFromLittleEndian<quint16>(bytes.constData() + at);
    };
    if (bytes.size() < placeOfHeader + 4) {
        return QStringLiteral("is cut off");
    }
    const auto header = qFromLittleEndian<qint32>(bytes.constData() + placeOfHeader);
    if (header < 0 || header > bytes.size() - lengthOfHeader) {
        // A long stub for DOS; what follows is not looked at.
        return header > bytes.size() ? QString()
                                     : QStringLiteral("is a program of DOS, or cut off");
    }
    if (bytes.mid(header, 4) != QByteArray("PE\0\0", 4)) {
        return QStringLiteral("is a program of DOS");
    }
    constexpr quint16 x86 = 0x014C;
    constexpr quint16 x64 = 0x8664;
    const quint16 machine = number(header + 4);
    if (machine != x86 && machine != x64) {
        return QStringLiteral("is for another processor (0x%1) than players have")
            .arg(machine, 4, 16, QLatin1Char('0'));
    }
    constexpr quint16 library = 0x2000;
    constexpr quint16 executable = 0x0002;
    const quint16 flags = number(header + 22);
    if ((flags & library) != 0) {
        return QStringLiteral("is a library");
    }
    return (flags & executable) == 0 ? QStringLiteral("is not linked whole") : QString();
}

// The file that Play opens, found by this filter.
void checkStarted(const ClientEntry &entry, const QString &named, const QString &program,
                  const Archive &archive, Findings &findings)
{
    const auto found = archive.programs.constFind(program);
    if (found == archive.programs.cend()) {
        return;
    }
    const QString why = whyNotStarted(*found);
    if (!why.isEmpty()) {
        findings << errorAt(entry.place, "not-a-program",
                            QStringLiteral("Play opens %1 of %2, which %3: nothing starts")
                                .arg(quoted(program), named, why),
                            QStringLiteral("pack the program for Windows, 32 or 64 bits for x86"));
    }
}

// Which of the programs that this filter finds is the game.
void checkChoice(const ClientEntry &entry, const QString &named, const QString &started,
                 QStringList candidates, Findings &findings)
{
    candidates.removeOne(started);
    // A copy alone is the game, whatever its name.
    const bool isAlone = candidates.isEmpty();
    const auto isHelper = [isAlone](const QString &name) {
        return looksLikeAHelper(name) || isLauncher(name) || (!isAlone && looksLikeACopy(name));
    };
    QStringList games;
    std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(games),
                 [&](const QString &name) { return !isHelper(name); });
    if (isHelper(started)) {
        findings << warningAt(
            entry.place, "helper-starts",
            QStringLiteral("Play starts %1 of %2, the first by name, which looks like no game; "
                           "beside it: %3")
                .arg(quoted(started), named,
                     games.isEmpty() ? QStringLiteral("no other program")
                                     : games.join(QStringLiteral(", "))),
            QStringLiteral("put it into a folder, or give the game a name that comes first"));
    } else if (!games.isEmpty()) {
        findings << noteAt(entry.place, "several-programs",
                           QStringLiteral("Play starts %1 of %2, the first by name, and never %3")
                               .arg(quoted(started), named, games.join(QStringLiteral(", "))),
                           QStringLiteral("if that is not the game, put it into a folder"));
    }
}

QStringList matching(const QStringList &names, const QString &filter)
{
    QStringList found;
    std::copy_if(names.begin(), names.end(), std::back_inserter(found),
                 [&filter](const QString &name) { return QDir::match(filter, name); });
    found.sort(Qt::CaseInsensitive);
    return found;
}
} // namespace

PlayersView::Started checkPrograms(const ClientEntry &entry, const QString &named,
                                   const Archive &archive, Findings &findings)
{
    PlayersView::Started started{entry.info.server, entry.info.client, entry.info.version, {}};
    const QStringList filters = Executables::filters(entry.info.client);
    for (const QString &filter : filters) {
        QString first = Executables::firstOf(archive.top, filter);
        if (first.isEmpty()) {
            findings << errorAt(
                entry.place, "archive-without-executable",
                QStringLiteral("at the top of %1 there is no %2: Play starts nothing")
                    .arg(named, filter),
                QStringLiteral("pack the program itself, not a folder around it"));
        } else if (archive.topFolders.contains(first)) {
            findings << errorAt(
                entry.place, "archive-without-executable",
                QStringLiteral("the first %1 at the top of %2 is the folder %3: Play opens that")
                    .arg(filter, named, first),
                QStringLiteral("give the folder another name"));
            first.clear();
        } else {
            checkChoice(entry, named, first, matching(archive.top, filter), findings);
            checkStarted(entry, named, first, archive, findings);
        }
        started.programs << first;
    }
    return started;
}

QString whyNotStarted(const QByteArray &beginning)
{
    if (beginning.isEmpty()) {
        return QStringLiteral("is empty");
    }
    if (beginning.startsWith("MZ")) {
        return whyNotStartedByWindows(beginning);
    }
    const auto *const magic =
        std::find_if(std::begin(magics), std::end(magics),
                     [&beginning](const Magic &each) { return beginning.startsWith(each.bytes); });
    if (magic != std::end(magics)) {
        return QLatin1String(magic->words);
    }
    const QByteArray text = beginning.trimmed().left(16).toLower();
    if (text.startsWith("<!doctype") || text.startsWith("<html")) {
        return QStringLiteral("is a web page");
    }
    return beginning.startsWith("#!") ? QString() : QStringLiteral("is no program");
}
