// emberwake-check: tells operators what players will see of a launcher document, before they do.

#include "base/buildsettings.h"
#include "base/console.h"
#include "check/addresses.h"
#include "check/commandline.h"
#include "check/deepcheck.h"
#include "check/documentcontent.h"
#include "check/fetch.h"
#include "check/input.h"
#include "check/json.h"
#include "check/output.h"
#include "check/playersview.h"
#include "check/report.h"
#include "check/rules.h"
#include "check/terminal.h"
#include "check/testerscode.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QSslConfiguration>

#include <optional>

namespace
{
int wrongUse(const QString &why)
{
    Console::error(QStringLiteral("emberwake-check: %1\nTry emberwake-check --help.\n").arg(why));
    return ExitCode::wrongUse;
}

bool isAddress(const QString &document)
{
    return document.startsWith(QLatin1String("https://")) ||
           document.startsWith(QLatin1String("http://"));
}

// Of a file nobody knows beside what it will lie: says so where a logo was looked for.
Findings withAssumedBase(Findings findings, const QString &base)
{
    for (Finding &finding : findings) {
        if (finding.text.startsWith(QStringLiteral("the logo ") + base)) {
            finding.mend += QStringLiteral("; without --base logos are looked for at %1, the "
                                           "address built into the launcher")
                                .arg(base);
        }
    }
    return findings;
}

QString notRead(const QString &name, const QString &why)
{
    return QStringLiteral("%1 cannot be read: %2.").arg(name, why);
}

// Returns what is wrong with the file, or an empty text.
QString trust(const QString &fileName)
{
    const Input::Content content = Input::contentOf(fileName);
    if (!content.bytes) {
        return notRead(fileName, content.problem);
    }
    const QList<QSslCertificate> authorities = QSslCertificate::fromData(*content.bytes);
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.addCaCertificates(authorities);
    QSslConfiguration::setDefaultConfiguration(configuration);
    return authorities.isEmpty() ? fileName + QStringLiteral(" holds no certificate.") : QString();
}

// Fetched as the launcher does, which takes whatever body comes for the document.
QByteArray fetchDocument(const QUrl &url, Fetcher &fetcher, Findings &findings)
{
    const QString what = QStringLiteral("document");
    QBuffer body;
    body.open(QIODevice::WriteOnly);
    findings << findingsOfFetch(fetcher.fetch(url, body, Fetcher::smallThings), {}, what, url);
    if (!findings.isEmpty() && url.fileName().isEmpty()) {
        findings.first().mend +=
            QStringLiteral("; the address of a document ends in its name, as in /launcher.xml");
    }
    return body.data();
}

// What players have now is the live document, which has to be had whole.
Input::Content previousDocument(const QString &previous, Fetcher &fetcher)
{
    if (!isAddress(previous)) {
        return Input::contentOf(previous);
    }
    QBuffer body;
    body.open(QIODevice::WriteOnly);
    const Fetched fetched = fetcher.fetch(QUrl(previous), body, Fetcher::smallThings);
    if (fetched.arrived) {
        return {body.data(), {}};
    }
    if (fetched.redirected) {
        return {std::nullopt, QStringLiteral("it is redirected to ") + fetched.target};
    }
    const QString hint = QStringLiteral("; before the first release leave --previous out");
    return {std::nullopt,
            fetched.failure == Fetched::Missing ? fetched.error + hint : fetched.error};
}
} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const CommandLine line = parseCommandLine(QCoreApplication::arguments());
    if (!line.help.isEmpty()) {
        Console::out(line.help);
        return ExitCode::clean;
    }
    if (!line.wrong.isEmpty()) {
        return wrongUse(line.wrong);
    }
    if (!line.authority.isEmpty()) {
        const QString problem = trust(line.authority);
        if (!problem.isEmpty()) {
            return wrongUse(problem);
        }
    }

    Fetcher fetcher(line.timeout);
    Findings findings;
    QString base = BuildSettings::baseUrl();
    Input::Content body;
    bool arrived = true;
    if (isAddress(line.document)) {
        const QUrl url(line.document);
        base = url.adjusted(QUrl::RemoveFilename | QUrl::RemoveQuery | QUrl::RemoveFragment)
                   .toString();
        body.bytes = fetchDocument(url, fetcher, findings);
        arrived = findings.isEmpty();
        if (isOpenToOthers(url)) {
            findings << openToOthers({}, QStringLiteral("the document's address"), url);
        }
    } else {
        body = Input::contentOf(line.document);
    }
    if (!body.bytes) {
        return wrongUse(notRead(line.document, body.problem));
    }
    const bool namesBase = !line.base.isEmpty() || isAddress(line.document);
    if (!line.base.isEmpty()) {
        base = line.base;
    }

    std::optional<DocumentContent> previous;
    if (!line.previous.isEmpty()) {
        const Input::Content before = previousDocument(line.previous, fetcher);
        if (!before.bytes) {
            return wrongUse(notRead(line.previous, before.problem));
        }
        previous = readContent(*before.bytes, line.code);
    }

    Report report;
    report.asked = line;
    const DocumentContent content = readContent(*body.bytes, line.code);
    report.view = playersViewOf(content);
    // Of the page that says so there is nothing to mend.
    if (arrived) {
        findings << findingsOf(content, previous ? &*previous : nullptr,
                               namesBase ? base : QString());
        checkTestersCode(content, line.code, findings);
    }
    if (line.deep && arrived) {
        const DeepResult deep =
            checkDeeply(content, base, line.code, fetcher, previous ? &*previous : nullptr);
        findings << (namesBase ? deep.findings : withAssumedBase(deep.findings, base));
        report.view.started = deep.started;
        report.archives = deep.archives;
    }
    report.transfers = fetcher.transfers();
    report.findings = withoutIds(sortedByPlace(findings), line.ignored);
    report.ignored = findings.size() - report.findings.size();
    report.exitCode = exitCodeOf(report.findings, line.failOn);
    Console::out(line.json ? QString::fromUtf8(jsonOutput(report))
                           : textOutput(report, Terminal::showsColours() ? Colours::Terminal
                                                                         : Colours::None));
    return report.exitCode;
}
