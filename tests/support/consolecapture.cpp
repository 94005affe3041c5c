#include "support/consolecapture.h"

#include <QFile>

#include <cstdio>
#include <unistd.h>

namespace
{
int divert(int descriptor, QTemporaryFile &file)
{
    if (!file.open()) {
        qFatal("cannot capture the console");
    }
    const int saved = dup(descriptor);
    dup2(file.handle(), descriptor);
    return saved;
}

void restore(int descriptor, int saved)
{
    dup2(saved, descriptor);
    close(saved);
}

QByteArray content(const QTemporaryFile &file)
{
    QFile reader(file.fileName());
    return reader.open(QIODevice::ReadOnly) ? reader.readAll() : QByteArray();
}
} // namespace

ConsoleCapture::ConsoleCapture()
{
    std::fflush(stdout);
    std::fflush(stderr);
    m_savedOut = divert(STDOUT_FILENO, m_out);
    m_savedErr = divert(STDERR_FILENO, m_err);
}

ConsoleCapture::~ConsoleCapture()
{
    std::fflush(stdout);
    std::fflush(stderr);
    restore(STDOUT_FILENO, m_savedOut);
    restore(STDERR_FILENO, m_savedErr);
}

QByteArray ConsoleCapture::out()
{
    std::fflush(stdout);
    return content(m_out);
}

QByteArray ConsoleCapture::err()
{
    std::fflush(stderr);
    return content(m_err);
}
