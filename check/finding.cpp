#include "check/finding.h"

#include <algorithm>
#include <iterator>
#include <tuple>

Finding errorAt(const Place &place, const char *id, const QString &text, const QString &mend)
{
    return {place.line, place.column, Finding::Error, QLatin1String(id), text, mend};
}

Finding warningAt(const Place &place, const char *id, const QString &text, const QString &mend)
{
    return {place.line, place.column, Finding::Warning, QLatin1String(id), text, mend};
}

Finding noteAt(const Place &place, const char *id, const QString &text, const QString &mend)
{
    return {place.line, place.column, Finding::Note, QLatin1String(id), text, mend};
}

QString severityName(Finding::Severity severity)
{
    switch (severity) {
    case Finding::Error:
        return QStringLiteral("error");
    case Finding::Warning:
        return QStringLiteral("warning");
    case Finding::Note:
        break;
    }
    return QStringLiteral("note");
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

int exitCodeOf(const Findings &findings, Finding::Severity failOn)
{
    Finding::Severity worst = Finding::Note;
    for (const Finding &finding : findings) {
        worst = std::max(worst, finding.severity);
    }
    if (worst == Finding::Note || worst < failOn) {
        return ExitCode::clean;
    }
    return worst == Finding::Error ? ExitCode::errors : ExitCode::warnings;
}

Findings withoutIds(const Findings &findings, const QStringList &ids)
{
    Findings others;
    std::copy_if(findings.begin(), findings.end(), std::back_inserter(others),
                 [&ids](const Finding &finding) { return !ids.contains(finding.id); });
    return others;
}
