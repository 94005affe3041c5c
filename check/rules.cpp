#include "check/rules.h"

#include "check/addresses.h"
#include "check/addressforms.h"
#include "check/clientkeys.h"
#include "check/looks.h"
#include "check/mixups.h"
#include "check/names.h"
#include "check/news.h"
#include "check/reading.h"
#include "check/releases.h"
#include "check/restrictions.h"
#include "check/texts.h"
#include "check/unread.h"
#include "check/versions.h"

namespace
{
void checkEachEntry(const QVector<ClientEntry> &clients, const QString &code, Findings &findings)
{
    NamesTold namesTold;
    ArchiveNames archiveNames;
    namesTold.servers.reserve(clients.size());
    archiveNames.reserve(clients.size());
    for (const ClientEntry &entry : clients) {
        checkNames(entry, namesTold, findings);
        checkVersion(entry, findings);
        checkAuth(entry, code, findings);
        checkArchiveUrl(entry, archiveNames, findings);
    }
}
} // namespace

// What is found in one place is printed in this order.
Findings findingsOf(const DocumentContent &content, const DocumentContent *previous,
                    const QString &base)
{
    Findings findings;
    checkBytes(content, findings);
    checkLaunchers(content, findings);
    checkCode(content.code, findings);
    checkAttributes(content.elements, findings);
    checkEachEntry(content.clients, content.code, findings);
    checkClosedArchives(content.clients, findings);
    const EntryCounts counts = entryCountsOf(content.clients);
    checkDuplicates(content.clients, counts, findings);
    checkEqualVersions(content.clients, counts, findings);
    checkSharedArchives(content.clients, findings);
    if (previous != nullptr) {
        checkPrevious(content.clients, previous->clients, findings);
    }
    checkLooks(content.clients, findings);
    checkCrowding(content.clients, findings);
    checkAddressForms(content, findings);
    checkMixUps(content, base, findings);
    checkServerFolders(content.clients, findings);
    checkButtons(content.clients, findings);
    checkNews(content, findings);
    checkTexts(content, findings);
    checkLongAddresses(content.longAddresses, findings);
    checkStrangers(content, findings);
    checkUnread(content, findings);
    checkEnd(content, findings);
    return sortedByPlace(findings);
}
