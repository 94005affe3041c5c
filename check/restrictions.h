#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"

// Whom entries are for, and whether they are for nobody else.

// Attributes that are almost those which the launcher reads, or that it reads elsewhere. Of "auth"
// that opens to everybody what was meant for a few.
void checkAttributes(const QVector<DocumentElement> &elements, Findings &findings);

// The sum that closes an entry. code is the one that the document is read with, or empty.
void checkAuth(const ClientEntry &entry, const QString &code, Findings &findings);

// Archives of closed entries that an open one offers to everybody.
void checkClosedArchives(const QVector<ClientEntry> &clients, Findings &findings);

// What becomes of a tester's code in the player's folder.
void checkCode(const QString &code, Findings &findings);
