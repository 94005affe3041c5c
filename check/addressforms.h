#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"

// Addresses that can be used, but not for long, not by everybody, or not for what is meant.
void checkAddressForms(const DocumentContent &content, Findings &findings);
