#include "check/finding.h"

#include <algorithm>
#include <tuple>

Finding errorAt(const Place &place, const char *id, const QString &text, const QString &mend)
{
    return {place.line, place.column, Finding::Error, QLatin1String(id), text, mend};
}

Finding warningAt(const Place &place, const char *id, const QString &text, const QString &mend)
{
    return {place.line, place.column, Finding::Warning, QLatin1String(id), text, mend};
}

QString quoted(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

Findings sortedByPlace(Findings findings)
{
    std::stable_sort(findings.begin(), findings.end(), [](const Finding &a, const Finding &b) {
        return std::tie(a.line, a.column) < std::tie(b.line, b.column);
    });
    return findings;
}

int exitCodeOf(const Findings &findings)
{
    int code = ExitCode::clean;
    for (const Finding &finding : findings) {
        code = std::max(code,
                        finding.severity == Finding::Error ? ExitCode::errors : ExitCode::warnings);
    }
    return code;
}
