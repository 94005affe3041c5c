#pragma once

#include <QByteArray>

// Whether the data of a PNG file unpack to more than the rows that its head asks for. The decoder
// unpacks all of it, only to complain. False for bytes of another kind, and for little data.
bool unpacksBeyondItsRows(const QByteArray &bytes);
