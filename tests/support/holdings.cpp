#include "support/holdings.h"

#ifdef Q_OS_WIN
#include <QVector>
#include <qt_windows.h>

#include <tlhelp32.h>
#else
#include <QDir>
#include <QFile>

#include <cerrno>
#include <malloc.h>
#include <sys/wait.h>
#endif

#ifdef Q_OS_WIN
namespace
{
// Calls the function with each entry of a snapshot of all processes or all threads.
template<typename Entry, typename Function>
void forEach(DWORD kind, BOOL(WINAPI *first)(HANDLE, Entry *), BOOL(WINAPI *next)(HANDLE, Entry *),
             Function function)
{
    const HANDLE snapshot = CreateToolhelp32Snapshot(kind, 0);
    Entry entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = first(snapshot, &entry); more != FALSE; more = next(snapshot, &entry)) {
        function(entry);
    }
    CloseHandle(snapshot);
}
} // namespace

qint64 Holdings::memory()
{
    return -1;
}

qint64 Holdings::peakOfMemory()
{
    return -1;
}

void Holdings::forgetPeakOfMemory() {}

qint64 Holdings::heap()
{
    QVector<HANDLE> heaps(64);
    heaps.resize(int(GetProcessHeaps(DWORD(heaps.size()), heaps.data())));
    qint64 bytes = 0;
    for (const HANDLE heap : qAsConst(heaps)) {
        HeapLock(heap);
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heap, &entry) != FALSE) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
                bytes += entry.cbData;
            }
        }
        HeapUnlock(heap);
    }
    return bytes;
}

int Holdings::descriptors()
{
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return int(count);
}

int Holdings::threads()
{
    int count = 0;
    forEach<THREADENTRY32>(TH32CS_SNAPTHREAD, Thread32First, Thread32Next,
                           [&count](const THREADENTRY32 &thread) {
                               count += thread.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
                           });
    return count;
}

int Holdings::children()
{
    int count = 0;
    forEach<PROCESSENTRY32W>(TH32CS_SNAPPROCESS, Process32FirstW, Process32NextW,
                             [&count](const PROCESSENTRY32W &process) {
                                 count +=
                                     process.th32ParentProcessID == GetCurrentProcessId() ? 1 : 0;
                             });
    return count;
}
#else
namespace
{
// A value of this process's status in bytes, for example the memory it holds now (VmRSS).
qint64 processStatus(const char *name)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    Q_UNUSED(name)
#else
    QFile status(QStringLiteral("/proc/self/status"));
    if (status.open(QIODevice::ReadOnly)) {
        const QList<QByteArray> lines = status.readAll().split('\n');
        for (const QByteArray &line : lines) {
            if (line.startsWith(name)) {
                const QByteArray value = line.mid(line.indexOf(':') + 1).simplified();
                return value.split(' ').value(0).toLongLong() * 1024;
            }
        }
    }
#endif
    return -1;
}
} // namespace

qint64 Holdings::memory()
{
    return processStatus("VmRSS");
}

qint64 Holdings::peakOfMemory()
{
    return processStatus("VmHWM");
}

void Holdings::forgetPeakOfMemory()
{
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (file.open(QIODevice::WriteOnly)) {
        file.write("5");
    }
}

qint64 Holdings::heap()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return -1;
#else
    const auto info = mallinfo2();
    return static_cast<qint64>(info.uordblks + info.hblkhd);
#endif
}

int Holdings::descriptors()
{
    const QDir folder(QStringLiteral("/proc/self/fd"));
    return folder.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

int Holdings::threads()
{
    const QDir folder(QStringLiteral("/proc/self/task"));
    return folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
}

int Holdings::children()
{
    siginfo_t child{};
    const bool none = waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) != 0 && errno == ECHILD;
    return none ? 0 : 1;
}
#endif
