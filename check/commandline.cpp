#include "check/commandline.h"

#include <QCommandLineParser>

CommandLine parseCommandLine(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Reads a launcher document as the launcher does, and prints what players will see and what "
        "will go wrong.\nEnds with 0 (clean), 1 (warnings), 2 (errors) or 64 (wrong use)."));
    parser.addPositionalArgument(QStringLiteral("document"),
                                 QStringLiteral("The document: a file, or an http or https "
                                                "address."));
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
        QStringLiteral("Where the logos lie, with a slash at the end. Without it: beside the "
                       "document's address, or for a file the address built into the launcher."),
        QStringLiteral("URL"));
    const QCommandLineOption authority(
        QStringLiteral("authority"),
        QStringLiteral("Trusts this certificate authority, too (PEM)."), QStringLiteral("FILE"));
    const QCommandLineOption timeout(
        QStringLiteral("timeout"),
        QStringLiteral("Gives a fetch up after so many seconds without a byte (30)."),
        QStringLiteral("SECONDS"), QStringLiteral("30"));
    parser.addOptions({help, json, code, previous, deep, base, authority, timeout});

    CommandLine line;
    const bool parsed = parser.parse(arguments);
    if (parser.isSet(help)) {
        line.help = parser.helpText();
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
    if (!parsed) {
        line.wrong = parser.errorText();
    } else if (parser.positionalArguments().size() != 1) {
        line.wrong = QStringLiteral("Name one document.");
    } else if (!isNumber || line.timeout < 1 || line.timeout > 3600) {
        line.wrong = QStringLiteral("--timeout needs a number of seconds from 1 to 3600.");
    } else if (parser.isSet(base) && !line.base.endsWith(QLatin1Char('/'))) {
        line.wrong = QStringLiteral("--base needs an address that ends in a slash.");
    } else {
        line.document = parser.positionalArguments().constFirst();
    }
    return line;
}
