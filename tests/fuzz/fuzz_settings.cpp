// settings.txt: any text gives four fields, and what is written is read back as it was, unless a
// field holds the separator.

#include "info/settings.h"

#include <QByteArray>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size)
{
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const Settings read = parseSettings(text);
    const Settings again = parseSettings(formatSettings(read));
    if (again.server != read.server || again.client != read.client || again.auth != read.auth ||
        again.rememberSettings != read.rememberSettings) {
        __builtin_trap();
    }
    return 0;
}
