#include "check/output.h"

#include "base/documentlimits.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTextStream>

#include <algorithm>
#include <iterator>

namespace
{
const char *const tilePlaces[] = {"big", "medium 1", "medium 2", "small 1", "small 2", "small 3"};
static_assert(std::size(tilePlaces) == DocumentLimits::tiles, "every tile needs its place's name");

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

QString tilePlace(int index)
{
    return QLatin1String(tilePlaces[index]);
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
    out << "  Servers, from left to right:\n";
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
    for (const NewsItem &slide : view.slides) {
        out << "    " << slide.index + 1 << "  " << printable(slide.shown.title) << '\n';
    }
    out << "  Tiles:\n";
    for (const NewsItem &tile : view.tiles) {
        out << "    " << tilePlace(tile.index) << "  " << printable(tile.shown.title) << '\n';
    }
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

QString counted(qsizetype count, const char *thing)
{
    return QStringLiteral("%1 %2%3").arg(count).arg(QLatin1String(thing),
                                                    count == 1 ? QString() : QStringLiteral("s"));
}

// Notes are told of only where there are any.
QString countsText(const Findings &findings)
{
    const auto number = [&findings](Finding::Severity severity) {
        return std::count_if(findings.begin(), findings.end(), [severity](const Finding &finding) {
            return finding.severity == severity;
        });
    };
    const QString text = counted(number(Finding::Error), "error") + QStringLiteral(", ") +
                         counted(number(Finding::Warning), "warning");
    const auto notes = number(Finding::Note);
    return notes == 0 ? text : text + QStringLiteral(", ") + counted(notes, "note");
}

QJsonObject newsObject(const NewsItem &item)
{
    return {{QStringLiteral("title"), item.shown.title},
            {QStringLiteral("description"), item.shown.description},
            {QStringLiteral("imageUrl"), item.shown.imageUrl},
            {QStringLiteral("clickUrl"), item.shown.clickUrl}};
}

QJsonObject serverObject(const PlayersView::Column &column)
{
    QJsonArray buttons;
    if (column.buttons.official) {
        buttons << QJsonObject{{QStringLiteral("client"), QStringLiteral("Official")},
                               {QStringLiteral("version"), column.officialVersion},
                               {QStringLiteral("selects"), true}};
    }
    if (column.buttons.beta) {
        buttons << QJsonObject{{QStringLiteral("client"), QStringLiteral("Beta")},
                               {QStringLiteral("version"), column.betaVersion},
                               {QStringLiteral("selects"), column.buttons.betaSelects}};
    }
    return {{QStringLiteral("server"), column.server}, {QStringLiteral("buttons"), buttons}};
}

QJsonArray startedArray(const PlayersView &view)
{
    QJsonArray starts;
    for (const PlayersView::Started &started : view.started) {
        starts << QJsonObject{
            {QStringLiteral("server"), started.server},
            {QStringLiteral("client"), started.client},
            {QStringLiteral("version"), started.version},
            {QStringLiteral("programs"), QJsonArray::fromStringList(started.programs)}};
    }
    return starts;
}

QJsonObject playersObject(const PlayersView &view)
{
    QJsonArray servers;
    for (const PlayersView::Column &column : view.columns) {
        servers << serverObject(column);
    }
    QJsonArray hidden;
    for (const ClientEntry &entry : view.hidden) {
        hidden << QJsonObject{{QStringLiteral("server"), entry.info.server},
                              {QStringLiteral("client"), entry.info.client},
                              {QStringLiteral("version"), entry.info.version}};
    }
    QJsonArray slides;
    for (const NewsItem &slide : view.slides) {
        slides << newsObject(slide);
    }
    QJsonArray tiles;
    for (const NewsItem &tile : view.tiles) {
        QJsonObject object = newsObject(tile);
        object.insert(QStringLiteral("place"), tilePlace(tile.index));
        tiles << object;
    }
    QJsonObject players{{QStringLiteral("connected"), view.connected},
                        {QStringLiteral("outdated"), view.outdated},
                        {QStringLiteral("servers"), servers},
                        {QStringLiteral("hidden"), hidden},
                        {QStringLiteral("slides"), slides},
                        {QStringLiteral("tiles"), tiles}};
    if (!view.started.isEmpty()) {
        players.insert(QStringLiteral("starts"), startedArray(view));
    }
    return players;
}
} // namespace

QString textOutput(const QString &source, const PlayersView &view, const Findings &findings)
{
    QString text;
    QTextStream out(&text);
    writePlayersView(out, view);
    writeStarted(out, view);
    out << '\n';
    for (const Finding &finding : findings) {
        out << source << ':' << finding.line << ':' << finding.column << ": "
            << severityName(finding.severity) << ": " << printable(finding.text) << " ["
            << finding.id << "]\n    mend: " << printable(finding.mend) << '\n';
    }
    out << countsText(findings) << '\n';
    return text;
}

QByteArray jsonOutput(const PlayersView &view, const Findings &findings, int exitCode)
{
    QJsonArray list;
    for (const Finding &finding : findings) {
        list << QJsonObject{{QStringLiteral("line"), finding.line},
                            {QStringLiteral("column"), finding.column},
                            {QStringLiteral("severity"), severityName(finding.severity)},
                            {QStringLiteral("id"), finding.id},
                            {QStringLiteral("text"), finding.text},
                            {QStringLiteral("mend"), finding.mend}};
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("players"), playersObject(view)},
                                     {QStringLiteral("findings"), list},
                                     {QStringLiteral("exitCode"), exitCode}})
        .toJson();
}
