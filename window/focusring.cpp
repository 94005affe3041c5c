#include "window/focusring.h"

#include <QEvent>
#include <QPainter>

namespace
{
// Dark, light, dark, in pixels: whatever lies beside it, one of them stands out from that, and the
// light line always from the dark ones.
constexpr int darkLine = 1;
constexpr int lightLine = 2;
constexpr int thickness = darkLine + lightLine + darkLine;

QMargins margins(int width)
{
    return {width, width, width, width};
}

void drawFrame(QPainter &painter, const QRect &outside, int width, Qt::GlobalColor colour)
{
    const QRegion frame = QRegion(outside) - QRegion(outside - margins(width));
    for (const QRect &side : frame) {
        painter.fillRect(side, colour);
    }
}
} // namespace

FocusRing::FocusRing(QWidget *window)
    : QWidget(window)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    hide();
}

void FocusRing::surround(QWidget *widget)
{
    if (widget != m_surrounded) {
        watchWayUp(false);
        m_surrounded = widget;
        watchWayUp(true);
    }
    if (widget == nullptr) {
        hide();
        return;
    }
    place();
    raise();
    show();
}

// The widget moves on the screen when any of those that hold it does.
void FocusRing::watchWayUp(bool watch)
{
    for (QWidget *widget = m_surrounded; widget != nullptr && widget != parentWidget();
         widget = widget->parentWidget()) {
        if (watch) {
            widget->installEventFilter(this);
        } else {
            widget->removeEventFilter(this);
        }
    }
}

bool FocusRing::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Move || event->type() == QEvent::Resize) {
        place();
    }
    return QWidget::eventFilter(watched, event);
}

// Nobody else places the ring. A rescale of the window tries to, since it has no design geometry.
void FocusRing::moveEvent(QMoveEvent * /*event*/)
{
    place();
}

void FocusRing::resizeEvent(QResizeEvent * /*event*/)
{
    place();
}

// Around the widget, and inside it where the window ends.
void FocusRing::place()
{
    if (m_surrounded != nullptr) {
        const QRect inside(m_surrounded->mapTo(parentWidget(), QPoint()), m_surrounded->size());
        setGeometry((inside + margins(thickness)) & parentWidget()->rect());
    }
}

void FocusRing::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    drawFrame(painter, rect(), darkLine, Qt::black);
    drawFrame(painter, rect() - margins(darkLine), lightLine, Qt::white);
    drawFrame(painter, rect() - margins(darkLine + lightLine), darkLine, Qt::black);
}
