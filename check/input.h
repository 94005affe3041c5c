#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Where documents come from that are not fetched.
namespace Input
{
// The name that stands for the standard input.
QString standardInput();

// The file's content, or that of the standard input up to its end; nothing when it cannot be read.
std::optional<QByteArray> contentOf(const QString &name);
} // namespace Input
