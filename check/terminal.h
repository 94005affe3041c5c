#pragma once

#include <QtGlobal>

class QString;

// The line on standard error that says how far a fetch is. Silent where nobody watches it.
namespace Terminal
{
// total is -1 when it is not known.
void showProgress(const QString &what, qint64 received, qint64 total);
void clearProgress();
} // namespace Terminal
