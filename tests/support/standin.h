#pragma once

#include <QByteArray>

namespace Standin
{
// Stands between the program's own bytes and its orders. Put together here, so that the program
// itself does not contain it.
inline QByteArray mark()
{
    return QByteArray("\n== orders of the ") + "stand-in ==\n";
}
} // namespace Standin
