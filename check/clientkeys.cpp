#include "check/clientkeys.h"

QString keyOf(const ClientEntry &entry)
{
    return entry.info.server + keySeparator + entry.info.client;
}

QString keyForAudience(const ClientEntry &entry)
{
    return entry.hasAuth ? keyOf(entry) + keySeparator + entry.info.auth.toLower() : keyOf(entry);
}

EntryCounts entryCountsOf(const QVector<ClientEntry> &clients)
{
    EntryCounts counts;
    counts.reserve(clients.size());
    for (const ClientEntry &entry : clients) {
        ++counts[keyOf(entry)];
    }
    return counts;
}

QHash<QString, ClientInfo> infosByAudience(const QVector<ClientEntry> &clients)
{
    QHash<QString, ClientInfo> infos;
    infos.reserve(clients.size());
    for (const ClientEntry &entry : clients) {
        infos.insert(keyForAudience(entry), entry.info);
    }
    return infos;
}
