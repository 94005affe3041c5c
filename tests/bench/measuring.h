#pragma once

#include <QJsonObject>
#include <QtGlobal>

#include <functional>
#include <vector>

// What the benchmarks measure with, and how they tell it. Linux only: memory is read from /proc.
namespace Measuring
{
// From here on what the launcher prints goes nowhere, as with a player; results still reach the
// standard output that the program was started with. Call it first.
void silenceConsole();
// How long a window may take to become complete, in milliseconds: a program that counts its
// instructions runs fifty times slower.
constexpr int patience = 300000;
// One line of JSON.
void report(const QJsonObject &result);
// Ends the process at once, so that no clean-up is measured.
[[noreturn]] void endHere();

// On the clock that all processes share.
double milliseconds();
// Processor time of the calling thread. What one thread does by itself is measured with it: other
// work on the machine disturbs it least.
double threadMilliseconds();
// Processor time of this process, all threads that ever ran.
double processorMilliseconds();
// Processor time of a process's living threads; finer than what the system tells of other processes
// otherwise.
double threadsMilliseconds(qint64 process);
// A line of this process's /proc/self/status, for example "VmHWM" (peak) or "VmRSS"; in KiB.
qint64 memory(const char *name);
// Lets the peak start anew from what is in use now.
void forgetPeak();

double median(std::vector<double> values);

// One piece of the launcher's own work, and of its yardstick's: all that is counted in
// instructions, where they are, in the thread that calls. rows_instructions.py knows the two by
// their names.
void ours(const std::function<void()> &work);
void bare(const std::function<void()> &work);
// The same for what only warms up: nobody counts it.
void warmUp(const std::function<void()> &work);
} // namespace Measuring
