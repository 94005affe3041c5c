#pragma once

#include <QByteArray>
#include <QString>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#endif

namespace LocalEncoding
{
// The text as the system's own 8-bit encoding writes it: the ANSI code page of Windows, and UTF-8
// where the tests run otherwise. Asked from the system, not from the toolkit.
inline QByteArray bytes(const QString &text)
{
#ifdef Q_OS_WIN
    const std::wstring wide = text.toStdWString();
    const int length = int(wide.size());
    const int size =
        WideCharToMultiByte(CP_ACP, 0, wide.c_str(), length, nullptr, 0, nullptr, nullptr);
    QByteArray result(size, Qt::Uninitialized);
    WideCharToMultiByte(CP_ACP, 0, wide.c_str(), length, result.data(), size, nullptr, nullptr);
    return result;
#else
    return text.toUtf8();
#endif
}
} // namespace LocalEncoding
