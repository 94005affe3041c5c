#pragma once

#include "check/documentcontent.h"
#include "check/finding.h"

// Names that are not what they look like, or that do what nobody thinks of.
void checkLooks(const QVector<ClientEntry> &clients, Findings &findings);

// Servers that the panel cannot show side by side.
void checkCrowding(const QVector<ClientEntry> &clients, Findings &findings);

// The longest way below the game's folder that leaves room for the folder's own on Windows.
constexpr int longestWay = 180;
