// emberwake-check: tells operators what players will see of a launcher document, before they do.

#include "base/buildsettings.h"
#include "base/console.h"
#include "check/addresses.h"
#include "check/commandline.h"
#include "check/deepcheck.h"
#include "check/documentcontent.h"
#include "check/fetch.h"
#include "check/output.h"
#include "check/playersview.h"
#include "check/rules.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <QSslConfiguration>

#include <optional>

namespace
{
int wrongUse(const QString &why)
{
    Console::error(QStringLiteral("emberwake-check: %1\nTry emberwake-check --help.\n").arg(why));
    return ExitCode::wrongUse;
}

std::optional<QByteArray> contentOf(const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return file.readAll();
}

bool isAddress(const QString &document)
{
    return document.startsWith(QLatin1String("https://")) ||
           document.startsWith(QLatin1String("http://"));
}

bool trust(const QString &fileName)
{
    const QList<QSslCertificate> authorities =
        QSslCertificate::fromData(contentOf(fileName).value_or(QByteArray()));
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.addCaCertificates(authorities);
    QSslConfiguration::setDefaultConfiguration(configuration);
    return !authorities.isEmpty();
}

// Fetched as the launcher does: whatever body comes is the document.
QByteArray fetchDocument(const QUrl &url, Fetcher &fetcher, Findings &findings)
{
    const QString what = QStringLiteral("document");
    QBuffer body;
    body.open(QIODevice::WriteOnly);
    findings << findingsOfFetch(fetcher.fetch(url, body, Fetcher::smallThings), {}, what, url);
    if (isOpenToOthers(url)) {
        findings << openToOthers({}, QStringLiteral("the document's address"), url);
    }
    return body.data();
}
// What players have now is the live document. Nothing when that cannot be had whole.
std::optional<QByteArray> previousDocument(const QString &previous, Fetcher &fetcher)
{
    if (!isAddress(previous)) {
        return contentOf(previous);
    }
    QBuffer body;
    body.open(QIODevice::WriteOnly);
    const Fetched fetched = fetcher.fetch(QUrl(previous), body, Fetcher::smallThings);
    return fetched.arrived ? std::make_optional(body.data()) : std::nullopt;
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
    if (!line.authority.isEmpty() && !trust(line.authority)) {
        return wrongUse(line.authority + QStringLiteral(" holds no certificate."));
    }

    Fetcher fetcher(line.timeout);
    Findings findings;
    QString base = BuildSettings::baseUrl();
    std::optional<QByteArray> body;
    if (isAddress(line.document)) {
        const QUrl url(line.document);
        base = url.adjusted(QUrl::RemoveFilename | QUrl::RemoveQuery | QUrl::RemoveFragment)
                   .toString();
        body = fetchDocument(url, fetcher, findings);
    } else {
        body = contentOf(line.document);
    }
    if (!body) {
        return wrongUse(line.document + QStringLiteral(" cannot be read."));
    }
    if (!line.base.isEmpty()) {
        base = line.base;
    }

    std::optional<DocumentContent> previous;
    if (!line.previous.isEmpty()) {
        const std::optional<QByteArray> bytes = previousDocument(line.previous, fetcher);
        if (!bytes) {
            return wrongUse(line.previous + QStringLiteral(" cannot be read."));
        }
        previous = readContent(*bytes, line.code);
    }

    const DocumentContent content = readContent(*body, line.code);
    findings << findingsOf(content, previous ? &*previous : nullptr);
    PlayersView view = playersViewOf(content);
    if (line.deep) {
        const DeepResult deep =
            checkDeeply(content, base, line.code, fetcher, previous ? &*previous : nullptr);
        findings << deep.findings;
        view.started = deep.started;
    }
    findings = sortedByPlace(findings);
    Console::out(line.json ? QString::fromUtf8(jsonOutput(view, findings))
                           : textOutput(line.document, view, findings));
    return exitCodeOf(findings);
}
