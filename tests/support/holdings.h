#pragma once

#include <QtGlobal>

// What this process holds of memory and of the system.
namespace Holdings
{
// Bytes in use on the heap, large blocks included. -1 under a sanitizer: its heap keeps what was
// freed.
qint64 heap();
// Descriptors: files, sockets, pipes; on Windows all handles.
int descriptors();
int threads();
// Whether there is a child process, be it one that ended and was never asked how.
bool hasChildren();
} // namespace Holdings
