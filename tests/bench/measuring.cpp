#include "bench/measuring.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QJsonDocument>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <sys/resource.h>
#include <unistd.h>

namespace
{
std::FILE *results = stdout;

// Different in each of the functions that are told apart by their names: the compiler would make
// one of two that do the same.
volatile char countedLast = ' ';

double inMilliseconds(const timeval &time)
{
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

double readClock(clockid_t clock)
{
    timespec now{};
    (void)clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}
} // namespace

void Measuring::silenceConsole()
{
    results = fdopen(dup(STDOUT_FILENO), "w");
    if (results == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) {
        qFatal("no place for the results");
    }
}

void Measuring::report(const QJsonObject &result)
{
    const QByteArray line = QJsonDocument(result).toJson(QJsonDocument::Compact) + '\n';
    if (std::fputs(line.constData(), results) < 0 || std::fflush(results) != 0) {
        qFatal("the results cannot be written");
    }
}

void Measuring::endHere()
{
    std::_Exit(0);
}

double Measuring::milliseconds()
{
    return readClock(CLOCK_MONOTONIC);
}

double Measuring::threadMilliseconds()
{
    return readClock(CLOCK_THREAD_CPUTIME_ID);
}

double Measuring::processorMilliseconds()
{
    rusage usage{};
    (void)getrusage(RUSAGE_SELF, &usage);
    return inMilliseconds(usage.ru_utime) + inMilliseconds(usage.ru_stime);
}

double Measuring::threadsMilliseconds(qint64 process)
{
    const QDir tasks(QStringLiteral("/proc/%1/task").arg(process));
    const QStringList names = tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    double sum = 0;
    for (const QString &name : names) {
        QFile file(tasks.filePath(name + QStringLiteral("/schedstat")));
        // A thread may have ended since the listing.
        if (file.open(QIODevice::ReadOnly)) {
            sum += file.readLine().split(' ').constFirst().toDouble() / 1e6;
        }
    }
    return sum;
}

qint64 Measuring::memory(const char *name)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("no /proc here");
    }
    const QByteArray wanted = QByteArray(name) + ':';
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(wanted)) {
            return line.mid(wanted.size()).trimmed().split(' ').constFirst().toLongLong();
        }
    }
    qFatal("/proc/self/status has no %s", name);
}

void Measuring::forgetPeak()
{
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write("5") != 1) {
        qFatal("the peak of memory cannot be reset");
    }
}

double Measuring::median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

void Measuring::ours(const std::function<void()> &work)
{
    work();
    countedLast = 'o';
}

void Measuring::bare(const std::function<void()> &work)
{
    work();
    countedLast = 'b';
}

void Measuring::warmUp(const std::function<void()> &work)
{
    work();
}
