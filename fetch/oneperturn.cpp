#include "fetch/oneperturn.h"

#include <QCoreApplication>
#include <QTimerEvent>

#include <utility>

void OnePerTurn::take(QObject *owner, std::function<void()> work)
{
    // Belongs to the application, which has one event loop for all.
    static QPointer<OnePerTurn> turns;
    if (turns == nullptr) {
        turns = new OnePerTurn(QCoreApplication::instance());
    }
    turns->enqueue(owner, std::move(work));
}

void OnePerTurn::enqueue(QObject *owner, std::function<void()> work)
{
    m_waiting.enqueue({owner, std::move(work)});
    if (m_timer == 0) {
        // Fires at most once in each turn of the event loop.
        m_timer = startTimer(0);
        doNext();
    }
}

void OnePerTurn::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_timer) {
        QObject::timerEvent(event);
    } else if (m_painting) {
        // What the last piece changed is painted in this turn.
        m_painting = false;
    } else if (m_waiting.isEmpty()) {
        killTimer(m_timer);
        m_timer = 0;
    } else {
        doNext();
    }
}

void OnePerTurn::doNext()
{
    const Piece next = m_waiting.dequeue();
    m_painting = true;
    if (next.owner != nullptr) {
        next.work();
    }
}
