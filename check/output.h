#pragma once

#include "check/finding.h"
#include "check/playersview.h"

#include <QByteArray>
#include <QString>

// What the program prints. source names the document in front of every line and column.
QString textOutput(const QString &source, const PlayersView &view, const Findings &findings);
// {"players": {...}, "findings": [...], "exitCode": n}
QByteArray jsonOutput(const PlayersView &view, const Findings &findings, int exitCode);
