#pragma once

#include <QPointer>
#include <QWidget>

// The frame around the button that has the keyboard. It lies over the whole window, lets every
// click through, and follows its button wherever that is moved. A child of the window.
class FocusRing : public QWidget
{
public:
    explicit FocusRing(QWidget *window);

    // Frames this widget of the window; null hides the ring.
    void surround(QWidget *widget);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void watchWayUp(bool watch);
    void place();

    QPointer<QWidget> m_surrounded;
};
