#include "bench/turns.h"

#include "bench/measuring.h"

#include <utility>

void Turns::start()
{
    m_beat.setTimerType(Qt::PreciseTimer);
    connect(&m_beat, &QTimer::timeout, this, &Turns::beat);
    beat();
    m_beat.start(1);
}

void Turns::beat()
{
    m_times.append(Measuring::milliseconds());
    m_work.append(Measuring::threadMilliseconds());
}

Pull::Pull(std::function<void(QSize)> resizeWindow)
    : m_resizeWindow(std::move(resizeWindow))
{
    connect(&m_timer, &QTimer::timeout, this, &Pull::step);
}

void Pull::start()
{
    m_timer.start(16);
    m_turns.start();
}

void Pull::step()
{
    constexpr int steps = 200;
    ++m_steps;
    const int grow = m_steps <= steps / 2 ? m_steps : steps - m_steps;
    m_resizeWindow({974 + grow * 7, 571 + grow * 5});
    if (m_steps == steps) {
        Measuring::report(
            {{QStringLiteral("turns"), m_turns.times()}, {QStringLiteral("work"), m_turns.work()}});
        Measuring::endHere();
    }
}
