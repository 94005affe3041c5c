#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"

#include <QUrl>

// Everything that can be said of a document without fetching what it names. previous is the
// document that players have seen before, or null.
Findings findingsOf(const DocumentContent &content, const DocumentContent *previous = nullptr);

// Whether the launcher can fetch from this address at all.
bool isUsableAddress(const QUrl &url);
// Whether what is fetched from there can be read and changed on its way. What does not leave the
// machine cannot.
bool isOpenToOthers(const QUrl &url);
// The finding about an address that is, found in this place; what names it for the reader.
Finding openToOthers(const Place &place, const QString &what, const QUrl &url);
