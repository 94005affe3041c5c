#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"

// Everything that can be said of a document without fetching what it names. previous is the
// document that players have seen before, or null; base is where the document lies, or empty when
// nobody knows.
Findings findingsOf(const DocumentContent &content, const DocumentContent *previous = nullptr,
                    const QString &base = {});
