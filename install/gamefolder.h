#pragma once

#include <QString>

// Which folder the launcher works in. All it reads, writes, removes and runs lies there.
namespace GameFolder
{
// The working directory that it was started with, unless the extractor lies beside the program and
// not there: started from a terminal or a shortcut, it would take some other folder for the game's,
// and remove that folder's archives. Both folders as absolute paths.
QString choose(const QString &workingDirectory, const QString &programFolder);
} // namespace GameFolder
