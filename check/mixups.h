#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"

// Addresses that are fine as such, and lead elsewhere than they should: to the operator's own
// machine, to an archive of another server or version, to a file in place of a page. base is where
// the document lies; empty when nobody knows.
void checkMixUps(const DocumentContent &content, const QString &base, Findings &findings);
