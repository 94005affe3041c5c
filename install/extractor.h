#pragma once

#include <QString>

class QObject;

// The call of the program that unpacks client archives, which lies in the working directory.
namespace Extractor
{
// Unpacks the archive into the folder, which is made when missing, with "./unzip.exe" and the
// password (an empty one means none); blocks until the program has ended. Its process object
// belongs to parent, or is gone at the end without one. How it ended is not told: callers judge by
// what lies on the disk.
void unpack(const QString &archive, const QString &folder, QObject *parent,
            const QString &password);
} // namespace Extractor
