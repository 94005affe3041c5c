#include "check/input.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>

#ifdef Q_OS_WIN
#include <fcntl.h>
#include <io.h>
#endif

namespace
{
bool openStandardInput(QFile &file)
{
#ifdef Q_OS_WIN
    // Places are counted in the document as it is, line ends included.
    (void)_setmode(_fileno(stdin), _O_BINARY);
#endif
    return file.open(stdin, QIODevice::ReadOnly);
}

// In the same words on every system.
QString whyNotRead(const QFile &file)
{
    const QFileInfo info(file.fileName());
    if (!info.exists()) {
        return QStringLiteral("there is no such file, and an address begins with https:// or "
                              "http://");
    }
    return info.isDir() ? QStringLiteral("it is a folder") : file.errorString();
}
} // namespace

QString Input::standardInput()
{
    return QStringLiteral("-");
}

Input::Content Input::contentOf(const QString &name)
{
    QFile file(name);
    const bool isOpen =
        name == standardInput() ? openStandardInput(file) : file.open(QIODevice::ReadOnly);
    if (!isOpen) {
        return {std::nullopt, whyNotRead(file)};
    }
    return {file.readAll(), {}};
}
