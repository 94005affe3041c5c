#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"

// What becomes of the texts of slides and tiles in the window: what is cut off, and what reads
// otherwise than it was meant.
void checkTexts(const DocumentContent &content, Findings &findings);
