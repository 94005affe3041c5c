#include "window/tooltip.h"

#include <QHelpEvent>
#include <QTextDocument>
#include <QToolTip>
#include <QWidget>

ToolTip::ToolTip(QWidget *widget, const QString &text)
    : QObject(widget)
{
    widget->setToolTip(text);
    widget->installEventFilter(this);
}

bool ToolTip::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::ToolTip) {
        return QObject::eventFilter(watched, event);
    }
    const auto *widget = static_cast<QWidget *>(watched);
    QWidget *window = widget->window(); // which has no sheet
    const QRect place(widget->mapTo(window, QPoint()), widget->size());
    QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                       Qt::convertFromPlainText(widget->toolTip(), Qt::WhiteSpaceNormal), window,
                       place);
    return true;
}
