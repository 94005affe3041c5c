#pragma once

#include <QString>

// The one way by which files and folders are removed. Whatever a document calls its servers,
// clients and versions: what does not lie strictly inside the working directory stays, but for the
// versions of a client that the player has moved, and a link is removed as a link, without a look
// at where it leads.
namespace Removal
{
// Whether the launcher may remove what this path names: a name of its own, without a way upwards
// in it, in the working directory or in a folder below it.
bool isAllowed(const QString &path);

// Removes a file or a link, a file marked read-only included. A folder stays. False when it is
// there afterwards.
bool removeFile(const QString &path);

// Removes a folder with all that it holds, or a link to a folder alone. A file stays. False when
// something of it is there afterwards; the rest is gone then.
bool removeFolder(const QString &path);

// The same for a version of a client, "<server>/<client>". Where both are plain names they may be
// links by which the player has moved games to another drive: these two are followed, wherever they
// lead but to the launcher's own folder or one around it.
bool removeVersion(const QString &client, const QString &version);

// Removes a link that stands in a version's place; anything else stays. False when there is one
// afterwards.
bool removeVersionLink(const QString &client, const QString &version);
} // namespace Removal
