// The name under which an archive is saved: whatever the address, one name in the working
// directory, which is not taken.

#include "install/savefilename.h"

#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QUrl>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size)
{
    // The toolkit complains of names that no file can have.
    static const QtMessageHandler quiet =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    Q_UNUSED(quiet)
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<int>(size));
    for (const QUrl &url : {QUrl::fromEncoded(bytes), QUrl(QString::fromUtf8(bytes))}) {
        const QString name = freeSaveFileName(url);
        if (name.isEmpty() || name.contains(QLatin1Char('/')) || QFileInfo::exists(name)) {
            __builtin_trap();
        }
    }
    return 0;
}
