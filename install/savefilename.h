#pragma once

#include <QString>

class QUrl;

// The name under which the archive of this URL would be saved in an empty folder: the last
// component of its path, or "download".
QString wantedSaveFileName(const QUrl &url);

// The name under which it is saved. Where the working directory has an entry of the wanted name
// already, a number and ".zip" follow.
QString freeSaveFileName(const QUrl &url);

// Why nothing may be saved in the launcher's folder under such a name, as a short text; empty when
// it may.
QString whyNotSavedAs(const QString &name);

// The same on Windows, where more names are none.
QString whyNotSavedOnWindowsAs(const QString &name);
