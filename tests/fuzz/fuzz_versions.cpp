// Names of folders as versions: the greatest one is one of them and weighs more than nothing.

#include "install/versionweight.h"

#include <QByteArray>
#include <QStringList>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size)
{
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const QStringList names = text.split(QLatin1Char('\n'));
    const QString greatest = greatestVersion(names);
    if (!greatest.isEmpty() && !names.contains(greatest)) {
        __builtin_trap();
    }
    for (const QString &name : names) {
        if (versionWeight(name) > (greatest.isEmpty() ? 0 : versionWeight(greatest))) {
            __builtin_trap();
        }
    }
    return 0;
}
