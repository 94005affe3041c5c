#pragma once

#include <QObject>

// Drops what the player clicked or typed while the window was blocked. It would be obeyed when the
// block ends, by buttons that stand where others stood: four clicks at a frozen Download would
// start the game four times.
class StaleInput : public QObject
{
    Q_OBJECT

public:
    // To be called at the end of a block. What was clicked and typed until now is dropped in the
    // next turns of the event loop; later input counts. Does nothing without an application.
    static void drop();

    bool eventFilter(QObject *obj, QEvent *event) override;

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    using QObject::QObject;

    int m_timer = 0;
    int m_turns = 0; // until input counts again
};
