#pragma once

#include <QSemaphore>
#include <QThreadPool>
#include <QtConcurrent>

// Keeps the only thread of the pool busy, so that what is started meanwhile waits for its turn.
class BusyPool
{
public:
    BusyPool()
        : m_threads(QThreadPool::globalInstance()->maxThreadCount())
    {
        QThreadPool::globalInstance()->setMaxThreadCount(1);
        QtConcurrent::run([this] { m_release.acquire(); });
    }
    ~BusyPool()
    {
        release();
        QThreadPool::globalInstance()->waitForDone();
        QThreadPool::globalInstance()->setMaxThreadCount(m_threads);
    }
    BusyPool(const BusyPool &) = delete;
    BusyPool &operator=(const BusyPool &) = delete;

    void release()
    {
        if (!m_released) {
            m_released = true;
            m_release.release();
        }
    }

private:
    QSemaphore m_release;
    int m_threads;
    bool m_released = false;
};
