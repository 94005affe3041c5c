#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"
#include "check/playersview.h"

#include <QHash>
#include <QUrl>

class Fetcher;
struct Fetched;

// What an archive that unpacks is made of.
struct ArchiveSize {
    int files = 0;
    qint64 unpacked = 0; // bytes
};

struct DeepResult {
    Findings findings;
    QVector<PlayersView::Started> started;
    QHash<QString, ArchiveSize> archives; // by their address
};

// Fetches what the document names and looks into it: logos beside the document (base ends in a
// slash), the pictures that are shown, and the archives. code unlocks the archives whose entries it
// shows. previous is the document that players have seen before, or null: archives are compared
// with those that it names, where these can still be had.
DeepResult checkDeeply(const DocumentContent &content, const QString &base, const QString &code,
                       Fetcher &fetcher, const DocumentContent *previous = nullptr);

// What there is to say of a fetch that did not bring what was wanted; what names it for the reader.
Findings findingsOfFetch(const Fetched &fetched, const Place &place, const QString &what,
                         const QUrl &url);
