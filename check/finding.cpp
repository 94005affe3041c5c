#include "check/finding.h"

#include <algorithm>
#include <tuple>

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
