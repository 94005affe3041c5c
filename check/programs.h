#pragma once

#include "check/archive.h"
#include "check/documentcontent.h"
#include "check/finding.h"
#include "check/playersview.h"

// Which program Play will start of an entry's archive, and whether that is the one that is meant.
// named is the archive for the reader.
PlayersView::Started checkPrograms(const ClientEntry &entry, const QString &named,
                                   const Archive &archive, Findings &findings);

// Why a file that begins like this is no program that players can start, as the end of a sentence;
// empty when it may be one. Scripts are: Windows does not start them, but other systems do.
QString whyNotStarted(const QByteArray &beginning);
