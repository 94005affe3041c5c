#pragma once

#include <QString>

// The speed of a download as shown to the player, for example "12.5 kB/s", from the bytes received
// and the milliseconds passed. Bytes in no time give an infinite speed,
// shown in MB/s.
QString speedText(qint64 bytesReceived, qint64 elapsedMilliseconds);
