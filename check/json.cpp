#include "check/json.h"

#include "check/report.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{
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

// Null where nothing was given.
QJsonValue given(const QString &value)
{
    return value.isEmpty() ? QJsonValue() : QJsonValue(value);
}

// The code itself is a secret of testers, and outputs are kept.
QJsonObject optionsObject(const CommandLine &asked)
{
    return {{QStringLiteral("deep"), asked.deep},
            {QStringLiteral("code"), !asked.code.isEmpty()},
            {QStringLiteral("previous"), given(asked.previous)},
            {QStringLiteral("base"), given(asked.base)},
            {QStringLiteral("authority"), given(asked.authority)},
            {QStringLiteral("ignore"), QJsonArray::fromStringList(asked.ignored)},
            {QStringLiteral("failOn"), severityName(asked.failOn)},
            {QStringLiteral("timeout"), asked.timeout}};
}

QJsonArray findingsArray(const Findings &findings)
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
    return list;
}

QJsonArray fetchedArray(const Report &report)
{
    QJsonArray list;
    for (const Transfer &transfer : report.transfers) {
        const QString url = transfer.url.toString();
        QJsonObject object{{QStringLiteral("url"), url},
                           {QStringLiteral("bytes"), transfer.bytes},
                           {QStringLiteral("milliseconds"), transfer.milliseconds},
                           {QStringLiteral("arrived"), transfer.arrived}};
        const auto archive = report.archives.constFind(url);
        if (archive != report.archives.cend()) {
            object.insert(QStringLiteral("files"), archive->files);
            object.insert(QStringLiteral("unpackedBytes"), archive->unpacked);
        }
        list << object;
    }
    return list;
}
} // namespace

QByteArray jsonOutput(const Report &report)
{
    QJsonObject object{{QStringLiteral("program"),
                        QJsonObject{{QStringLiteral("name"), QStringLiteral("emberwake-check")},
                                    {QStringLiteral("version"), programVersion()}}},
                       {QStringLiteral("document"), report.asked.document},
                       {QStringLiteral("options"), optionsObject(report.asked)},
                       {QStringLiteral("players"), playersObject(report.view)},
                       {QStringLiteral("findings"), findingsArray(report.findings)},
                       {QStringLiteral("ignored"), report.ignored},
                       {QStringLiteral("exitCode"), report.exitCode}};
    if (report.asked.deep) {
        object.insert(QStringLiteral("fetched"), fetchedArray(report));
    }
    return QJsonDocument(object).toJson();
}
