#pragma once

#include <QSizeGrip>

// A size grip for the launcher's window: resizing is left to the platform, and when the grip is
// released every launcher window rescales to its size. Ready for use; the window makes none.
class MySizeGrip : public QSizeGrip
{
public:
    explicit MySizeGrip(QWidget *parent);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
};
