#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"

// The document was read with a tester's code: whether that shows anything. Empty: there was none.
void checkTestersCode(const DocumentContent &content, const QString &code, Findings &findings);
