#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Where documents come from that are not fetched.
namespace Input
{
// The name that stands for the standard input.
QString standardInput();

// What could be read, or a few words that say why nothing could.
struct Content {
    std::optional<QByteArray> bytes;
    QString problem;
};

// Of the file, or of the standard input up to its end.
Content contentOf(const QString &name);
} // namespace Input
