#pragma once

#include <QObject>

#include <functional>

class QWidget;

// Tells when a window comes to a screen of another density, or its own screen gets one. Belongs to
// the window.
class PixelRatioWatch : public QObject
{
public:
    PixelRatioWatch(QWidget &window, std::function<void()> changed);

    // Never consumes an event.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget &m_window;
    std::function<void()> m_changed;
    qreal m_ratio;
};
