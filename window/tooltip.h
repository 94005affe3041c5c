#pragma once

#include <QObject>

class QWidget;

// A widget's tooltip, shown as the system shows them and letter by letter. By itself the toolkit
// would style it by the widget's sheet, and most of the form's sheets would leave it without a
// ground or give it the button's picture. Belongs to the widget.
class ToolTip : public QObject
{
public:
    ToolTip(QWidget *widget, const QString &text);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
};
