#pragma once

#include "check/documentcontent.h"

#include <QHash>

// By what entries are told from each other.

// Separates what may hold any character of the document: XML has none for it.
constexpr QChar keySeparator(1);

// The same for all entries of one server and kind.
QString keyOf(const ClientEntry &entry);
// The same for those of one audience: everybody, or whoever has the code.
QString keyForAudience(const ClientEntry &entry);

// What was said last for each audience.
QHash<QString, ClientInfo> infosByAudience(const QVector<ClientEntry> &clients);

// How many entries have one server and kind, by their key.
using EntryCounts = QHash<QString, int>;
EntryCounts entryCountsOf(const QVector<ClientEntry> &clients);
