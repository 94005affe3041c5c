#pragma once

#include <QString>

class QUrl;

// The name under which the archive of this URL would be saved in an empty folder: the last
// component of its path, or "download".
QString wantedSaveFileName(const QUrl &url);

// The name under which it is saved. Where the working directory has an entry of the wanted name
// already, a number and ".zip" follow.
QString freeSaveFileName(const QUrl &url);
