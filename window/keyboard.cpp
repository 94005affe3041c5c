#include "window/keyboard.h"

#include "window/focusring.h"

#include <QAbstractButton>
#include <QFocusEvent>

#include <algorithm>
#include <utility>

Keyboard::Keyboard(QWidget *window, QWidget *panel, QList<QWidget *> order,
                   QList<QWidget *> lastOfPanel)
    : QObject(window)
    , m_window(window)
    , m_panel(panel)
    , m_order(std::move(order))
    , m_lastOfPanel(std::move(lastOfPanel))
{
    window->installEventFilter(this);
    panel->installEventFilter(this);
    watchButtons();
}

void Keyboard::watchButtons()
{
    const auto buttons = m_window->findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons) {
        button->installEventFilter(this);
    }
}

bool Keyboard::move(Direction direction)
{
    QWidget *from = m_window->focusWidget();
    const bool vanished = from != nullptr && (!from->isVisible() || !from->isEnabled());
    // The toolkit moves on when a button is hidden or disabled. Who uses a mouse would find the
    // keyboard on a button that nobody chose.
    if (vanished && (from != m_reachedByKeys || m_panel->isAncestorOf(from))) {
        rest();
        return true;
    }
    const QList<QWidget *> order = stopsInOrder();
    const int count = order.size();
    const int step = direction == Direction::Next ? 1 : -1;
    int place = order.indexOf(from);
    if (place < 0 && direction == Direction::Previous) {
        place = 0;
    }
    for (int i = 0; i < count; ++i) {
        place = (place + step + count) % count;
        if (canBeUsed(order[place])) {
            order[place]->setFocus(direction == Direction::Next ? Qt::TabFocusReason
                                                                : Qt::BacktabFocusReason);
            return true;
        }
    }
    return false;
}

void Keyboard::moveToFirstOf(const QList<QWidget *> &stops)
{
    const auto first = std::find_if(stops.begin(), stops.end(),
                                    [this](const QWidget *stop) { return canBeUsed(stop); });
    if (first != stops.end()) {
        (*first)->setFocus(Qt::OtherFocusReason);
    } else {
        rest();
    }
}

bool Keyboard::press()
{
    auto *button = qobject_cast<QAbstractButton *>(m_window->focusWidget());
    if (button == nullptr || !canBeUsed(button)) {
        return false;
    }
    button->click();
    return true;
}

bool Keyboard::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window || watched == m_panel) {
        if (event->type() == QEvent::Show && !isTaken()) {
            rest();
        }
    } else if (event->type() == QEvent::FocusIn) {
        focusArrived(static_cast<QWidget *>(watched),
                     static_cast<const QFocusEvent *>(event)->reason());
    } else if (event->type() == QEvent::FocusOut) {
        frame(nullptr);
    }
    return QObject::eventFilter(watched, event);
}

// Children stand in the order in which the layouts took them: column by column, from the top.
QList<QWidget *> Keyboard::stopsInOrder() const
{
    if (!m_panel->isVisible()) {
        return m_order;
    }
    QList<QWidget *> stops;
    const auto buttons = m_panel->findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons) {
        if (!m_lastOfPanel.contains(button)) {
            stops << button;
        }
    }
    return stops + m_lastOfPanel;
}

// Where the pointer would reach it, too.
bool Keyboard::canBeUsed(const QWidget *widget) const
{
    return widget->isVisible() && widget->isEnabled() &&
           (widget->focusPolicy() & Qt::TabFocus) != 0 &&
           m_window->childAt(widget->mapTo(m_window, widget->rect().center())) == widget;
}

bool Keyboard::isBehindPanel(const QWidget *widget) const
{
    return m_panel->isVisible() && widget != nullptr && !m_panel->isAncestorOf(widget);
}

// Whether a button that can be seen has the keyboard. Without any the toolkit would give it to the
// window's first as soon as the window is active.
bool Keyboard::isTaken() const
{
    const QWidget *widget = m_window->focusWidget();
    return widget != nullptr && !isBehindPanel(widget);
}

// With the window itself no key presses anything, and Tab begins anew.
void Keyboard::rest()
{
    m_window->setFocus(Qt::OtherFocusReason);
}

void Keyboard::focusArrived(QWidget *button, Qt::FocusReason reason)
{
    if (isBehindPanel(button)) {
        // A screen reader may try.
        rest();
        return;
    }
    switch (reason) {
    case Qt::MouseFocusReason:
        m_reachedByKeys = nullptr;
        break;
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
    case Qt::MenuBarFocusReason:
        // Back from another window: as it was.
        break;
    default:
        m_reachedByKeys = button;
        break;
    }
    frame(m_reachedByKeys == button ? button : nullptr);
}

void Keyboard::frame(QWidget *button)
{
    if (m_ring == nullptr && button != nullptr) {
        m_ring = new FocusRing(m_window);
    }
    if (m_ring != nullptr) {
        m_ring->surround(button);
    }
}
