#pragma once

#include "check/clientkeys.h"
#include "check/documentcontent.h"
#include "check/finding.h"

// Whom an entry is for.
void checkAuth(const ClientEntry &entry, Findings &findings);

// Entries that another one replaces.
void checkDuplicates(const QVector<ClientEntry> &clients, const EntryCounts &counts,
                     Findings &findings);

// What players get who have had the clients of the document before.
void checkPrevious(const QVector<ClientEntry> &clients, const QVector<ClientEntry> &previous,
                   Findings &findings);
