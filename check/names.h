#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"

#include <QSet>

// The names that were looked at before. What is wrong with one is said once, however often it comes
// back.
struct NamesTold {
    QSet<QString> servers;
    QSet<QString> versions;
};
// What comes of an entry's server and version as folders and in the panel. Entries are handed over
// in their order.
void checkNames(const ClientEntry &entry, NamesTold &told, Findings &findings);

// Servers that are one folder on Windows.
void checkServerFolders(const QVector<ClientEntry> &clients, Findings &findings);

// Clients that no button shows, and buttons that show no client.
void checkButtons(const QVector<ClientEntry> &clients, Findings &findings);
