#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"

// What reading a document meets, whatever is published with it.

// The document's bytes: none, or not the text that is meant.
void checkBytes(const DocumentContent &content, Findings &findings);
// The launcher's version that is asked for.
void checkLaunchers(const DocumentContent &content, Findings &findings);
// Elements that the launcher does not know.
void checkStrangers(const DocumentContent &content, Findings &findings);
// Where reading ends before the document does, and what is lost behind it.
void checkEnd(const DocumentContent &content, Findings &findings);
