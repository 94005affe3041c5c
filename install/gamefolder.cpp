#include "install/gamefolder.h"

#include <QFileInfo>

namespace
{
bool hasExtractor(const QString &folder)
{
    return QFileInfo(folder + QStringLiteral("/unzip.exe")).isFile();
}
} // namespace

QString GameFolder::choose(const QString &workingDirectory, const QString &programFolder)
{
    return !hasExtractor(workingDirectory) && hasExtractor(programFolder) ? programFolder
                                                                          : workingDirectory;
}
