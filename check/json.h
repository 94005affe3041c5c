#pragma once

#include <QByteArray>

struct Report;

// As docs/emberwake-check.schema.json describes it.
QByteArray jsonOutput(const Report &report);
