#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"

// The slides and tiles: their number, their texts and their addresses.
void checkNews(const DocumentContent &content, Findings &findings);
