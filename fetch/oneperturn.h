#pragma once

#include <QObject>
#include <QPointer>
#include <QQueue>

#include <functional>

class QTimerEvent;

// Spreads work that comes all at once, such as a dozen pictures to decode, over turns of the event
// loop: one piece in every second turn, so that the window paints and answers in between. The work
// must not open an event loop of its own: the pieces after it would wait for its end.
class OnePerTurn : public QObject
{
    Q_OBJECT

public:
    // Does the work at once when there was none lately, else in a later turn, in the order of
    // asking; never once its owner is gone. For the GUI thread only.
    static void take(QObject *owner, std::function<void()> work);

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    using QObject::QObject;
    void enqueue(QObject *owner, std::function<void()> work);
    void doNext();

    struct Piece {
        QPointer<QObject> owner;
        std::function<void()> work;
    };

    QQueue<Piece> m_waiting;
    bool m_painting = false; // the next turn belongs to painting
    int m_timer = 0;         // runs while that is so, or pieces wait
};
