#include "check/testerscode.h"

#include <algorithm>

void checkTestersCode(const DocumentContent &content, const QString &code, Findings &findings)
{
    const bool opensOne =
        std::any_of(content.clients.begin(), content.clients.end(),
                    [](const ClientEntry &entry) { return entry.hasAuth && entry.visible; });
    if (!code.isEmpty() && !opensOne) {
        findings << warningAt(
            {}, "code-opens-nothing",
            QStringLiteral("no entry has the sum of this code: a tester with it "
                           "sees what everybody sees"),
            QStringLiteral("write the code without a blank or a line end, or auth "
                           "as \"printf %s CODE | sha1sum\" prints it"));
    }
}
