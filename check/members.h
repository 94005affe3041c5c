#pragma once

#include "check/archive.h"
#include "check/documentcontent.h"
#include "check/finding.h"

// What lies in an entry's archive beside the program. named is the archive for the reader.
void checkMembers(const ClientEntry &entry, const QString &named, const Archive &archive,
                  Findings &findings);

// What became of the archive that the same players have now.
void compareArchives(const ClientEntry &entry, const Archive &archive,
                     const ClientInfo &earlierInfo, const Archive &earlier, Findings &findings);
