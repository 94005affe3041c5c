#pragma once

#include <QtGlobal>

class QString;

// The line on standard error that says how far a fetch is, silent where nobody watches it; and
// whether somebody watches the standard output in colours.
namespace Terminal
{
// total is -1 when it is not known.
void showProgress(const QString &what, qint64 received, qint64 total);
void clearProgress();

// A terminal that obeys, where the variable NO_COLOR does not say that nobody wants them.
bool showsColours();
} // namespace Terminal
