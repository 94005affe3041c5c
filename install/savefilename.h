#pragma once

#include <QString>

class QUrl;

// The name under which the archive of this URL is saved: the last component of its path, or
// "download". Where the working directory has such an entry already, a number and ".zip" follow.
QString freeSaveFileName(const QUrl &url);
