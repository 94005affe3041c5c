#pragma once

#include <QtGlobal>

// What this process holds of memory and of the system.
namespace Holdings
{
// Bytes in use on the heap, large blocks included. -1 under a sanitizer: its heap keeps what was
// freed.
qint64 heap();
// Memory of this process in bytes: what it holds now, and the most it held since the peak was last
// forgotten. -1 where the system cannot be asked (only Linux lets a peak be forgotten) and under a
// sanitizer.
qint64 memory();
qint64 peakOfMemory();
void forgetPeakOfMemory();
// Descriptors: files, sockets, pipes; on Windows all handles. Wine counts none.
int descriptors();
int threads();
// Child processes; outside Windows 1 stands for any number, and those that ended and were never
// asked how are among them.
int children();
} // namespace Holdings
