#pragma once

#include <QString>

class QFileInfo;

// Guards against removing or overwriting what is not the launcher's: ".." and links are resolved,
// and a directory that does not exist lies nowhere.

// Whether a colon stands elsewhere than behind the drive of a whole path. On Windows "C:folder"
// lies wherever that drive was last worked on, and a colon further on names a stream of a file.
// Nowhere else has it a meaning.
bool hasStrayColon(const QString &path);

// Whether the directory lies inside the working directory and is not that directory itself.
bool liesInsideWorkingDirectory(const QString &directory);

// The same by the path's text alone, for a directory that may not exist yet.
bool wouldLieInsideWorkingDirectory(const QString &directory);

// Whether a file of the launcher's own, existing or not, may be written under this name: no link,
// which may lead anywhere, and nothing else that is no file, such as a pipe, at which a writer
// would wait for ever.
bool isFileOrFree(const QString &fileName);

// Whether the entry is a link, or on Windows a junction, wherever it leads.
bool isLinkOrJunction(const QFileInfo &entry);

// Whether a folder lies there itself, no link to one. The links above it count as folders; behind a
// slash at the end nothing is looked at.
bool isFolderItself(const QString &path);
