#include "window/pixelratiowatch.h"

#include <QEvent>
#include <QWidget>

#include <utility>

PixelRatioWatch::PixelRatioWatch(QWidget &window, std::function<void()> changed)
    : QObject(&window)
    , m_window(window)
    , m_changed(std::move(changed))
    , m_ratio(window.devicePixelRatioF())
{
    window.installEventFilter(this);
}

bool PixelRatioWatch::eventFilter(QObject *watched, QEvent *event)
{
    // The toolkit has no event for it. Whatever it does instead, the window is painted anew.
    const QEvent::Type type = event->type();
    if (type == QEvent::Show || type == QEvent::ScreenChangeInternal || type == QEvent::Resize ||
        type == QEvent::Paint) {
        const qreal ratio = m_window.devicePixelRatioF();
        if (!qFuzzyCompare(ratio, std::exchange(m_ratio, ratio))) {
            m_changed();
        }
    }
    return QObject::eventFilter(watched, event);
}
