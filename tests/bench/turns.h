#pragma once

#include <QJsonArray>
#include <QObject>
#include <QSize>
#include <QTimer>

#include <functional>

// When the event loop comes round: a turn is asked for every millisecond, however little there is
// to do. Turns without work between them would outnumber, in every percentile, those that make a
// player wait.
class Turns : public QObject
{
public:
    void start();
    void stop() { m_beat.stop(); }

    // The time of each turn, and what the calling thread had worked by then; in milliseconds.
    const QJsonArray &times() const { return m_times; }
    const QJsonArray &work() const { return m_work; }

private:
    void beat();

    QTimer m_beat;
    QJsonArray m_times;
    QJsonArray m_work;
};

// Pulls a window of the design's size larger and smaller again, at most sixty times a second. Tells
// its turns in the end, and ends the process.
class Pull : public QObject
{
public:
    explicit Pull(std::function<void(QSize)> resizeWindow);

    void start();

private:
    void step();

    std::function<void(QSize)> m_resizeWindow;
    Turns m_turns;
    QTimer m_timer;
    int m_steps = 0;
};
