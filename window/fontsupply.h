#pragma once

#include <QString>

// The letters of the form, where the system has none of them.
namespace FontSupply
{
// Where the packages have the font's files: beside the program.
QString shippedFolder();

// Lets the form's family be found: from this folder when the system has none, and under the name
// of its bold face as well. A system that has the family keeps its own. Without the files the
// toolkit's substitute stays. Needs the application object; doing it again changes nothing.
void provide(const QString &folder);
} // namespace FontSupply
