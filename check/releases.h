#pragma once

#include "check/clientkeys.h"
#include "check/documentcontent.h"
#include "check/finding.h"

// Entries that another one replaces.
void checkDuplicates(const QVector<ClientEntry> &clients, const EntryCounts &counts,
                     Findings &findings);

// Archives that are offered as several versions.
void checkSharedArchives(const QVector<ClientEntry> &clients, Findings &findings);

// What players get who have had the clients of the document before.
void checkPrevious(const QVector<ClientEntry> &clients, const QVector<ClientEntry> &previous,
                   Findings &findings);
