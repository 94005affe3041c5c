#include "check/commandline.h"

#include "check/findingids.h"
#include "check/spelling.h"

#include <QCommandLineParser>

#include <algorithm>
#include <iterator>

namespace
{
QStringList idsIn(const QStringList &values)
{
    QStringList ids;
    for (const QString &value : values) {
        ids << value.split(QLatin1Char(','));
    }
    return ids;
}

QStringList unknownIds(const QStringList &ids)
{
    QStringList unknown;
    std::copy_if(ids.begin(), ids.end(), std::back_inserter(unknown),
                 [](const QString &id) { return !findingIds().contains(id); });
    return unknown;
}

// With the ids that may have been meant.
QString noSuchFinding(const QString &written)
{
    QStringList meant;
    for (const QString &id : findingIds()) {
        if (!written.isEmpty() && isAlmost(written, QString(id).remove(QLatin1Char('-')))) {
            meant << id;
        }
    }
    const QString problem = QStringLiteral("--ignore: there is no finding \"%1\"").arg(written);
    return meant.isEmpty()
               ? problem + QLatin1Char('.')
               : QStringLiteral("%1; perhaps %2?").arg(problem, meant.join(QStringLiteral(" or ")));
}

// As the setting of the launcher's build has it.
bool isBase(const QString &address)
{
    const bool isOfTheWeb = address.startsWith(QLatin1String("https://")) ||
                            address.startsWith(QLatin1String("http://"));
    return isOfTheWeb && address.endsWith(QLatin1Char('/'));
}
} // namespace

QString programVersion()
{
    return QStringLiteral(EMBERWAKE_VERSION);
}

CommandLine parseCommandLine(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Reads a launcher document as the launcher does, and prints what players will see and what "
        "will go wrong.\nEnds with 0 (clean), 1 (warnings), 2 (errors) or 64 (wrong use). Notes "
        "count "
        "for nothing."));
    parser.addPositionalArgument(QStringLiteral("document"),
                                 QStringLiteral("The document: a file, an http or https address, "
                                                "or \"-\" for the standard input."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("This text."));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Prints JSON."));
    const QCommandLineOption code(QStringLiteral("code"),
                                  QStringLiteral("Shows what a tester with this code sees."),
                                  QStringLiteral("CODE"));
    const QCommandLineOption previous(
        QStringLiteral("previous"),
        QStringLiteral("The document that players have now, a file or an address: what becomes of "
                       "what they have."),
        QStringLiteral("FILE"));
    const QCommandLineOption deep(
        QStringLiteral("deep"),
        QStringLiteral("Fetches logos, pictures and archives and checks them too."));
    const QCommandLineOption base(
        QStringLiteral("base"),
        QStringLiteral(
            "Where the logos lie: an address with a slash at the end. Without it: beside "
            "the document's address, or for a file the address built into the "
            "launcher."),
        QStringLiteral("URL"));
    const QCommandLineOption authority(
        QStringLiteral("authority"),
        QStringLiteral("Trusts this certificate authority, too (PEM)."), QStringLiteral("FILE"));
    const QCommandLineOption timeout(
        QStringLiteral("timeout"),
        QStringLiteral("Gives a fetch up after so many seconds without a byte (30)."),
        QStringLiteral("SECONDS"), QStringLiteral("30"));
    const QCommandLineOption ignore(
        QStringLiteral("ignore"),
        QStringLiteral("Does not tell findings of these ids, and does not count them. May be given "
                       "more than once."),
        QStringLiteral("ID[,ID]"));
    const QCommandLineOption failOn(
        QStringLiteral("fail-on"),
        QStringLiteral("Ends with 0 unless there is something of this severity or a greater one: "
                       "error or warning (warning)."),
        QStringLiteral("SEVERITY"), QStringLiteral("warning"));
    const QCommandLineOption version(QStringLiteral("version"),
                                     QStringLiteral("The version of this program."));
    parser.addOptions(
        {help, json, code, previous, deep, base, authority, timeout, ignore, failOn, version});

    CommandLine line;
    const bool parsed = parser.parse(arguments);
    if (parser.isSet(help)) {
        line.help = parser.helpText();
        return line;
    }
    if (parser.isSet(version)) {
        line.help = QStringLiteral("emberwake-check ") + programVersion() + QLatin1Char('\n');
        return line;
    }
    bool isNumber = false;
    line.timeout = parser.value(timeout).toInt(&isNumber);
    line.json = parser.isSet(json);
    line.deep = parser.isSet(deep);
    line.code = parser.value(code);
    line.previous = parser.value(previous);
    line.base = parser.value(base);
    line.authority = parser.value(authority);
    line.ignored = idsIn(parser.values(ignore));
    line.failOn =
        parser.value(failOn) == severityName(Finding::Error) ? Finding::Error : Finding::Warning;
    const QStringList unknown = unknownIds(line.ignored);
    if (!parsed) {
        line.wrong = parser.errorText();
    } else if (parser.positionalArguments().size() != 1) {
        line.wrong = QStringLiteral("Name one document: a file, an address, or - for the standard "
                                    "input.");
    } else if (!isNumber || line.timeout < 1 || line.timeout > 3600) {
        line.wrong = QStringLiteral("--timeout needs a number of seconds from 1 to 3600.");
    } else if (!unknown.isEmpty()) {
        line.wrong = noSuchFinding(unknown.constFirst());
    } else if (parser.value(failOn) != severityName(line.failOn)) {
        line.wrong = QStringLiteral("--fail-on needs error or warning.");
    } else if (parser.isSet(base) && !isBase(line.base)) {
        line.wrong = QStringLiteral("--base needs an address that begins with https:// or http:// "
                                    "and ends in a slash.");
    } else {
        line.document = parser.positionalArguments().constFirst();
    }
    return line;
}
