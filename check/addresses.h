#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"

#include <QHash>
#include <QUrl>

// Whether the launcher can fetch from this address at all.
bool isUsableAddress(const QUrl &url);
// Whether it leads to the machine that it is opened on.
bool isOfThisMachine(const QUrl &url);
// Whether what is fetched from there can be read and changed on its way. What does not leave the
// machine cannot.
bool isOpenToOthers(const QUrl &url);
// The finding about an address that is, found in this place; what names it for the reader.
Finding openToOthers(const Place &place, const QString &what, const QUrl &url);

// What there is to say of any address as it is written, and what players lose when it cannot be
// used.
void checkAddress(const Place &place, const QString &what, const QString &written,
                  const QString &loss, Findings &findings);
// The same of an address that may be left empty on purpose.
void checkOptionalAddress(const Place &place, const QString &what, const QString &written,
                          const QString &loss, Findings &findings);
// Of one that is not fetched, but opened by the player's system, which knows other kinds as well.
void checkPageAddress(const Place &place, const QString &what, const QString &written,
                      Findings &findings);

// Addresses that count as empty; what comes of that is another finding.
void checkLongAddresses(const QVector<LongAddress> &addresses, Findings &findings);

// The first entry of those whose archives are saved under one name, by that name in lower case.
using ArchiveNames = QHash<QString, const ClientEntry *>;
// Entries are handed over in their order, with the names of those before.
void checkArchiveUrl(const ClientEntry &entry, ArchiveNames &names, Findings &findings);
