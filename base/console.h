#pragma once

#include <QString>

// The console lines that an operator reads, as UTF-8. Each call writes the text as it stands and
// flushes; a closed or missing console (the usual case on Windows) is ignored.
namespace Console
{
void out(const QString &text);
void error(const QString &text);

// What others wrote, for one line: a terminal obeys control characters, which become "?".
QString harmless(QString text);
} // namespace Console
