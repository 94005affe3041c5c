#pragma once

#include "info/clientinfo.h"

#include <QString>

// What an auth attribute may be the sum of, when it is not that of a code. Sums are in lower case.
namespace CodeSums
{
// Words for the blank or line end that this is the sum of; empty when it is another's.
QString blankOf(const QString &sum);

// Words for what the code became before it was summed, by a shell, an editor or another encoding;
// empty when it is not the sum of such a one, or when it is that of the code.
QString variantOf(const QString &sum, const QString &code);

// Whether it is the sum of a word that the entry itself says, or of one that everybody tries.
bool isGuessable(const QString &sum, const ClientInfo &info);
} // namespace CodeSums
