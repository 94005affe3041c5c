#pragma once

#include "check/place.h"

#include <QString>
#include <QStringList>
#include <QVector>

// Something in the document that players will notice, or that is probably not what is meant.
struct Finding {
    enum Severity {
        Note,    // said, and counts for nothing: an operator may well have meant it
        Warning, // probably not what is meant
        Error,   // players lose something
    };

    int line = 0; // 0: the document as a whole
    int column = 0;
    Severity severity = Warning;
    QString id; // in kebab case; never changes, scripts rely on it
    QString text;
    QString mend; // what to do about it
};

using Findings = QVector<Finding>;

Finding errorAt(const Place &place, const char *id, const QString &text, const QString &mend);
Finding warningAt(const Place &place, const char *id, const QString &text, const QString &mend);
Finding noteAt(const Place &place, const char *id, const QString &text, const QString &mend);
// The word by which operators and scripts know it.
QString severityName(Finding::Severity severity);
// What the document says, as the texts of findings repeat it.
QString quoted(const QString &text);

namespace ExitCode
{
constexpr int clean = 0;
constexpr int warnings = 1;
constexpr int errors = 2;
constexpr int wrongUse = 64;
} // namespace ExitCode

// In the order of the document; those of one place stay as they are.
Findings sortedByPlace(Findings findings);
// Clean when all of them are less than failOn.
int exitCodeOf(const Findings &findings, Finding::Severity failOn = Finding::Warning);
// Those of other ids than these.
Findings withoutIds(const Findings &findings, const QStringList &ids);
