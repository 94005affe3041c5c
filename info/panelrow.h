#pragma once

#include <QHBoxLayout>

// The row of the selection panel's columns: containers with a PanelColumn for a layout, and nothing
// else. It places them, and through them what they hold, in the proportions of the panel it lies
// in, whatever was done to their sizes meanwhile.
class PanelRow : public QHBoxLayout
{
public:
    using QHBoxLayout::QHBoxLayout;

    void setGeometry(const QRect &rect) override;
};
