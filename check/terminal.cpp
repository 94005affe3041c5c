#include "check/terminal.h"

#include "base/console.h"

#include <QString>

#include <cstdio>

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <unistd.h>
#endif

namespace
{
constexpr int lineWidth = 78;
constexpr qint64 mebibyte = 1024 * 1024;

bool isWatched()
{
#ifdef Q_OS_WIN
    static const bool watched = _isatty(_fileno(stderr)) != 0;
#else
    static const bool watched = isatty(fileno(stderr)) != 0;
#endif
    return watched;
}

void writeLine(const QString &text)
{
    Console::error(QLatin1Char('\r') + text.leftJustified(lineWidth, QLatin1Char(' '), true) +
                   QLatin1Char('\r'));
}
} // namespace

void Terminal::showProgress(const QString &what, qint64 received, qint64 total)
{
    if (isWatched()) {
        const QString of = total > 0 ? QStringLiteral(" of %1").arg(total / mebibyte) : QString();
        writeLine(QStringLiteral("%1%2 MiB  %3").arg(received / mebibyte).arg(of, what));
    }
}

void Terminal::clearProgress()
{
    if (isWatched()) {
        writeLine({});
    }
}
