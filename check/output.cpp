#include "check/output.h"

#include "base/documentlimits.h"
#include "check/input.h"
#include "check/report.h"

#include <QRegularExpression>
#include <QTextStream>

#include <algorithm>

namespace
{
// One line, without characters that would do something to a terminal.
QString printable(QString text)
{
    for (QChar &letter : text) {
        if (letter.category() == QChar::Other_Control) {
            letter = QLatin1Char(' ');
        }
    }
    return text;
}

QString buttonsText(const PlayersView::Column &column)
{
    QStringList buttons;
    if (column.buttons.official) {
        buttons << QStringLiteral("[Official] ") + column.officialVersion;
    }
    if (column.buttons.beta) {
        buttons << QStringLiteral("[Beta] ") + (column.buttons.betaSelects
                                                    ? column.betaVersion
                                                    : QStringLiteral("(selects nothing)"));
    }
    return buttons.join(QStringLiteral("  "));
}

void writeNews(QTextStream &out, const QString &place, const NewsItem &item, bool isThere)
{
    out << "    " << place << "  "
        << (isThere ? printable(item.shown.title) : QStringLiteral("(empty)")) << '\n';
    if (isThere && !item.shown.description.isEmpty()) {
        out << QString(6 + place.size(), QLatin1Char(' ')) << printable(item.shown.description)
            << '\n';
    }
}

void writePlayersView(QTextStream &out, const PlayersView &view)
{
    out << "What players see\n";
    if (!view.connected) {
        out << "  Connecting to server... (for ever)\n";
        return;
    }
    if (view.outdated) {
        out << "  You current launcher is outdated! Please download a new one!\n";
    }
    out << "  Servers, from left to right:\n" << (view.columns.isEmpty() ? "    (none)\n" : "");
    for (const PlayersView::Column &column : view.columns) {
        out << "    " << printable(column.server) << "  " << printable(buttonsText(column)) << '\n';
    }
    if (!view.hidden.isEmpty()) {
        out << "  Hidden entries:\n";
        for (const ClientEntry &entry : view.hidden) {
            out << "    " << printable(entry.info.server) << "  " << printable(entry.info.client)
                << ' ' << printable(entry.info.version) << '\n';
        }
    }
    out << "  Slides:\n";
    for (int i = 0; i < DocumentLimits::slides; ++i) {
        writeNews(out, QString::number(i + 1), view.slides.value(i), i < view.slides.size());
    }
    out << "  Tiles:\n";
    for (int i = 0; i < DocumentLimits::tiles; ++i) {
        writeNews(out, tilePlace(i), view.tiles.value(i), i < view.tiles.size());
    }
}

QString counted(qsizetype count, const char *thing)
{
    return QStringLiteral("%1 %2%3").arg(count).arg(QLatin1String(thing),
                                                    count == 1 ? QString() : QStringLiteral("s"));
}

QString sizeText(qint64 bytes)
{
    constexpr double step = 1024;
    auto size = static_cast<double>(bytes);
    QString unit = QStringLiteral("bytes");
    for (const char *larger : {"KiB", "MiB", "GiB"}) {
        if (size < step) {
            break;
        }
        size /= step;
        unit = QLatin1String(larger);
    }
    return QStringLiteral("%1 %2").arg(size, 0, 'f', bytes < qint64(step) ? 0 : 1).arg(unit);
}

QString timeText(qint64 milliseconds)
{
    return QStringLiteral("%1 s").arg(double(milliseconds) / 1000, 0, 'f', 1);
}

// While an archive is unpacked, it lies beside what comes of it.
qint64 roomFor(const Transfer &transfer, const ArchiveSize &archive)
{
    return transfer.bytes + archive.unpacked;
}

void writeFetched(QTextStream &out, const Report &report)
{
    out << "  Fetched:\n";
    for (const Transfer &transfer : report.transfers) {
        const QString url = transfer.url.toString();
        out << "    " << printable(url) << "  "
            << (transfer.arrived ? sizeText(transfer.bytes) : QStringLiteral("(did not arrive)"))
            << " in " << timeText(transfer.milliseconds);
        const auto archive = report.archives.constFind(url);
        if (archive != report.archives.cend()) {
            out << ", unpacks to " << counted(archive->files, "file") << " of "
                << sizeText(archive->unpacked) << ", needs "
                << sizeText(roomFor(transfer, *archive)) << " of free space";
        }
        out << '\n';
    }
}

void writeSummary(QTextStream &out, const Report &report)
{
    qint64 bytes = 0;
    qint64 milliseconds = 0;
    qint64 room = 0;
    int arrived = 0;
    for (const Transfer &transfer : report.transfers) {
        bytes += transfer.bytes;
        milliseconds += transfer.milliseconds;
        arrived += transfer.arrived ? 1 : 0;
        const auto archive = report.archives.constFind(transfer.url.toString());
        if (archive != report.archives.cend()) {
            room = std::max(room, roomFor(transfer, *archive));
        }
    }
    out << "fetched " << arrived << " of " << counted(report.transfers.size(), "file") << ", "
        << sizeText(bytes) << " in " << timeText(milliseconds);
    if (room > 0) {
        out << "; the largest client needs " << sizeText(room) << " of free space";
    }
    out << '\n';
}

// As compilers colour theirs.
QString severityText(Finding::Severity severity, Colours colours)
{
    QString name = severityName(severity);
    if (colours == Colours::None) {
        return name;
    }
    const QString colour = severity == Finding::Error     ? QStringLiteral("31")
                           : severity == Finding::Warning ? QStringLiteral("35")
                                                          : QStringLiteral("36");
    return QStringLiteral("\x1b[1;%1m%2\x1b[0m").arg(colour, name);
}

void writeStarted(QTextStream &out, const PlayersView &view)
{
    if (!view.started.isEmpty()) {
        out << "  Play starts:\n";
    }
    for (const PlayersView::Started &started : view.started) {
        QStringList programs = started.programs;
        programs.replaceInStrings(QRegularExpression(QStringLiteral("^$")),
                                  QStringLiteral("(nothing)"));
        out << "    " << printable(started.server) << "  " << printable(started.client) << ' '
            << printable(started.version) << ": " << printable(programs.join(QStringLiteral(", ")))
            << '\n';
    }
}

// Notes and what is ignored are told of only where there are any.
QString countsText(const Report &report)
{
    const Findings &findings = report.findings;
    const auto number = [&findings](Finding::Severity severity) {
        return std::count_if(findings.begin(), findings.end(), [severity](const Finding &finding) {
            return finding.severity == severity;
        });
    };
    const QString text = counted(number(Finding::Error), "error") + QStringLiteral(", ") +
                         counted(number(Finding::Warning), "warning");
    const auto notes = number(Finding::Note);
    const QString told = notes == 0 ? text : text + QStringLiteral(", ") + counted(notes, "note");
    return report.ignored == 0 ? told : told + QStringLiteral(", %1 ignored").arg(report.ignored);
}

} // namespace

QString textOutput(const Report &report, Colours colours)
{
    QString text;
    QTextStream out(&text);
    writePlayersView(out, report.view);
    if (report.asked.deep) {
        writeFetched(out, report);
    }
    writeStarted(out, report.view);
    out << '\n';
    const QString source = report.asked.document == Input::standardInput()
                               ? QStringLiteral("<stdin>")
                               : printable(report.asked.document);
    for (const Finding &finding : report.findings) {
        out << source << ':' << finding.line << ':' << finding.column << ": "
            << severityText(finding.severity, colours) << ": " << printable(finding.text) << " ["
            << finding.id << "]\n    mend: " << printable(finding.mend) << '\n';
    }
    if (report.asked.deep) {
        writeSummary(out, report);
    }
    out << countsText(report) << '\n';
    return text;
}
