#pragma once

#include <QStringList>

// Every id that a finding can have, in alphabetical order: what --ignore takes.
const QStringList &findingIds();
