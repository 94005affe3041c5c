#include "install/staleinput.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>
#include <QTimerEvent>

namespace
{
// The system hands over all that has piled up in the first turn; the second is for what its own
// thread was still reading.
constexpr int turnsOfOldInput = 2;

bool isInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::NonClientAreaMouseButtonPress:
    case QEvent::NonClientAreaMouseButtonRelease:
    case QEvent::NonClientAreaMouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::TabletRelease:
    case QEvent::ContextMenu:
        return true;
    default:
        return false;
    }
}
} // namespace

void StaleInput::drop()
{
    QCoreApplication *const application = QCoreApplication::instance();
    if (application == nullptr) {
        return;
    }
    // Belongs to the application, as the input does.
    static QPointer<StaleInput> dropping;
    if (dropping == nullptr) {
        dropping = new StaleInput(application);
        application->installEventFilter(dropping);
        dropping->m_timer = dropping->startTimer(0);
    }
    dropping->m_turns = turnsOfOldInput;
}

bool StaleInput::eventFilter(QObject *obj, QEvent *event)
{
    return isInput(event->type()) || QObject::eventFilter(obj, event);
}

// A timer of no length fires in a turn that has no input left.
void StaleInput::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_timer) {
        QObject::timerEvent(event);
    } else if (m_turns-- == 0) {
        killTimer(m_timer);
        deleteLater();
    }
}
