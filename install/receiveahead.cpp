#include "install/receiveahead.h"

namespace
{
// What a line of 160 MiB/s brings in a millisecond. A gigabit is 119; the rest makes up for the
// time that taking them over needs.
constexpr qint64 bytesOfAMillisecond = 160 * 1024 * 1024 / 1000;
} // namespace

qint64 ReceiveAhead::next(qint64 allowed, qint64 waiting, qint64 millisecondsAway)
{
    // Where room was left, the line is slower than the window.
    if (waiting < allowed - piece) {
        return allowed;
    }
    // In whole steps: memory falls to pieces when the number changes with every turn.
    const qint64 steps = millisecondsAway * bytesOfAMillisecond / least + 1;
    // A slow disk does not keep the window away, but at its bytes: more of them would only wait.
    return qMin(steps * least, most);
}
