#include "check/input.h"

#include <QFile>

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
} // namespace

QString Input::standardInput()
{
    return QStringLiteral("-");
}

std::optional<QByteArray> Input::contentOf(const QString &name)
{
    QFile file(name);
    const bool isOpen =
        name == standardInput() ? openStandardInput(file) : file.open(QIODevice::ReadOnly);
    if (!isOpen) {
        return std::nullopt;
    }
    return file.readAll();
}
