#include "check/terminal.h"

#include "base/console.h"

#include <QString>

#include <cstdio>

#ifdef Q_OS_WIN
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace
{
constexpr int lineWidth = 78;
constexpr qint64 mebibyte = 1024 * 1024;

bool isTerminal(std::FILE *stream)
{
#ifdef Q_OS_WIN
    return _isatty(_fileno(stream)) != 0;
#else
    return isatty(fileno(stream)) != 0;
#endif
}

bool isWatched()
{
    static const bool watched = isTerminal(stderr);
    return watched;
}

// On Windows a console has to be asked first, and an old one refuses.
bool obeys()
{
#ifdef Q_OS_WIN
    constexpr DWORD virtualTerminal = 4;
    const HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(console, &mode) != 0 &&
           SetConsoleMode(console, mode | virtualTerminal) != 0;
#else
    return qgetenv("TERM") != "dumb";
#endif
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

bool Terminal::showsColours()
{
    return qEnvironmentVariableIsEmpty("NO_COLOR") && isTerminal(stdout) && obeys();
}
