#pragma once

#include "check/clientkeys.h"
#include "check/documentcontent.h"
#include "check/finding.h"

// What an entry's version weighs.
void checkVersion(const ClientEntry &entry, Findings &findings);

// Versions of one server and kind that count the same: a tester's beside everybody's.
void checkEqualVersions(const QVector<ClientEntry> &clients, const EntryCounts &counts,
                        Findings &findings);
