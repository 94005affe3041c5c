#pragma once

#include <QtGlobal>

// How many bytes of an archive may wait until the window comes for them; the host waits then. With
// too few a fast line stands still while the window paints, with too many they fill the memory.
namespace ReceiveAhead
{
constexpr qint64 least = 1024 * 1024;
constexpr qint64 most = 5 * least;
// Of an archive whose length the host does not tell, the toolkit brings pieces of up to so many
// bytes, and holds one back that does not fit any more. Others it cuts.
constexpr qint64 piece = 128 * 1024;

// How many from now on. So many were allowed and so many waited when the window came, after it had
// done something else for so many milliseconds.
qint64 next(qint64 allowed, qint64 waiting, qint64 millisecondsAway);
} // namespace ReceiveAhead
