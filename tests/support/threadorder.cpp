// For the thread sanitizer, which does not see into the toolkit's own library: what the pool
// promises about order. A task sees all that was done before it was started, and whoever waited for
// the pool sees all that its tasks did. Without this every hand-over would be reported as a race;
// what is touched at any other time still is.

#if defined(__SANITIZE_THREAD__)

#include <QRunnable>
#include <QThreadPool>

#include <dlfcn.h>

extern "C" {
void __tsan_acquire(void *address); // NOLINT(bugprone-reserved-identifier): the sanitizer's name
void __tsan_release(void *address); // NOLINT(bugprone-reserved-identifier): the sanitizer's name
}

namespace
{
char allTasks; // its address stands for the end of each

class Ordered : public QRunnable
{
public:
    explicit Ordered(QRunnable *task)
        : m_task(task)
    {
    }
    void run() override
    {
        __tsan_acquire(this);
        const bool owned = m_task->autoDelete();
        m_task->run();
        if (owned) {
            delete m_task;
        }
        __tsan_release(&allTasks);
    }

private:
    QRunnable *m_task;
};

template<typename Function>
Function next(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}
} // namespace

// Found before the library's own, by the launcher's code as by the toolkit's.
void QThreadPool::start(QRunnable *task, int priority)
{
    static const auto start =
        next<void (*)(QThreadPool *, QRunnable *, int)>("_ZN11QThreadPool5startEP9QRunnablei");
    auto *ordered = new Ordered(task);
    __tsan_release(ordered);
    start(this, ordered, priority);
}

bool QThreadPool::waitForDone(int milliseconds)
{
    static const auto wait = next<bool (*)(QThreadPool *, int)>("_ZN11QThreadPool11waitForDoneEi");
    const bool done = wait(this, milliseconds);
    __tsan_acquire(&allTasks);
    return done;
}

#endif
