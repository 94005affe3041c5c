#pragma once

#include <QString>
#include <QStringList>

// Short names for what test data consists of, in UTF-8 as the sources are.
namespace Texts
{
inline QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

// "a|b|c" as a list.
inline QStringList names(const char *list)
{
    return text(list).split(QLatin1Char('|'), Qt::SkipEmptyParts);
}
} // namespace Texts
