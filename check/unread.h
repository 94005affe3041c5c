#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"

// What stands in the document, and nobody reads: texts between elements, elements inside comments
// and CDATA sections, attributes and elements that seem to switch something off. And what a
// template has left, which everybody reads.
void checkUnread(const DocumentContent &content, Findings &findings);
