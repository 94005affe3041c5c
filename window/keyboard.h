#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

class FocusRing;
class QWidget;

// Where the keyboard is in the window, and where it can go: to the buttons that can be seen and
// used, and while the panel is open to those of the panel alone. Frames the button that was reached
// by keys. A child of the window.
class Keyboard : public QObject
{
public:
    enum class Direction { Next, Previous };

    // order: the stops in the order of Tab; lastOfPanel: those of the panel that come after the
    // buttons that it gets at run time. A stop that cannot be seen or used is passed over.
    Keyboard(QWidget *window, QWidget *panel, QList<QWidget *> order, QList<QWidget *> lastOfPanel);

    // To be told of buttons that were made since.
    void watchButtons();

    // To the next or previous stop, or round to the other end. False when there is none.
    bool move(Direction direction);
    // To the first of these that can be seen and used, or to none.
    void moveToFirstOf(const QList<QWidget *> &stops);

    // Clicks the button that has the keyboard. False when there is none.
    bool press();

    // Whether what has or had the keyboard last was reached by keys.
    bool isInUse() const { return !m_reachedByKeys.isNull(); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QList<QWidget *> stopsInOrder() const;
    bool canBeUsed(const QWidget *widget) const;
    bool isBehindPanel(const QWidget *widget) const;
    bool isTaken() const;
    void rest();
    void focusArrived(QWidget *button, Qt::FocusReason reason);
    void frame(QWidget *button);

    QWidget *m_window;
    QWidget *m_panel;
    QList<QWidget *> m_order;
    QList<QWidget *> m_lastOfPanel;
    QPointer<QWidget> m_reachedByKeys;
    FocusRing *m_ring = nullptr; // made when it is first needed
};
