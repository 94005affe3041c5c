#pragma once

#include <QString>

// Names that others have chosen, before a folder is made or a file is opened by them. A name that
// is not plain may be a way, lead elsewhere, or be something else than it looks like.

// Whether the name can be that of one entry in a folder, and of nothing else, on this system.
bool isPlainName(const QString &name);

// Whether it is a way down over such names, so many at most. An empty one leads nowhere.
bool isPlainWay(const QString &path, int mostNames);

// What Windows asks of such a name, beyond what every system does.
bool isPlainOnWindows(const QString &name);

// The single rules. "." and "..".
bool isDots(const QString &name);
// Whether it has more letters than any disk takes.
bool isTooLongForAName(const QString &name);
// Whether a letter in it is a control character, a zero byte included.
bool holdsControlCharacter(const QString &name);
// Whether a letter in it can be in no file's name there. Separators are another matter.
bool holdsLetterForbiddenOnWindows(const QString &name);
// Whether it is the name of a device there, which has one everywhere: in each folder, with whatever
// extension and with blanks around it.
bool isDeviceOnWindows(const QString &name);
// Whether it ends in dots or blanks, which Windows drops.
bool isCutByWindows(const QString &name);
