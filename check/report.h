#pragma once

#include "check/commandline.h"
#include "check/deepcheck.h"
#include "check/fetch.h"
#include "check/finding.h"
#include "check/playersview.h"

// All that one run has to say.
struct Report {
    CommandLine asked;
    PlayersView view;
    Findings findings;
    int ignored = 0; // findings that are not told
    int exitCode = ExitCode::clean;
    // Of a deep check.
    QVector<Transfer> transfers;
    QHash<QString, ArchiveSize> archives; // by their address
};
