// Numbers of bytes as a server and the network may tell them: texts of bounded length, and a
// percentage that a progress bar can show while no more has come than was announced.

#include "install/speedtext.h"
#include "install/textprogressbar.h"

#include <QtGlobal>

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size)
{
    qint64 numbers[3] = {};
    std::memcpy(numbers, data, qMin(size, sizeof numbers));
    TextProgressBar bar;
    bar.setMessage(speedText(numbers[0], numbers[2]));
    // Twice: with the size that was announced, and with one that is too small.
    for (int turn = 0; turn < 2; ++turn) {
        bar.setStatus(numbers[0], numbers[1]);
        if (bar.getMessage().size() > 500) {
            __builtin_trap();
        }
        const int percentage = bar.getProgress();
        if (numbers[0] >= 0 && numbers[0] <= numbers[1] && (percentage < 0 || percentage > 100)) {
            __builtin_trap();
        }
        bar.update();
    }
    bar.clear();
    return 0;
}
