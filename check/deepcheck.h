#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"
#include "check/playersview.h"

#include <QUrl>

class Fetcher;
struct Fetched;

struct DeepResult {
    Findings findings;
    QVector<PlayersView::Started> started;
};

// Fetches what the document names and looks into it: logos beside the document (base ends in a
// slash), the pictures that are shown, and the archives. code unlocks the archives whose entries it
// shows.
DeepResult checkDeeply(const DocumentContent &content, const QString &base, const QString &code,
                       Fetcher &fetcher);

// What there is to say of a fetch that did not bring what was wanted; what names it for the reader.
Findings findingsOfFetch(const Fetched &fetched, const Place &place, const QString &what,
                         const QUrl &url);
