#pragma once

#include <QObject>

class QLabel;

// Keeps a text that is written from right to left inside what can be seen of a label. Most labels
// of the tiles are wider than their tile, which cuts them off at the right, where such a text
// begins. One that is written from left to right stays as it is. A child of its label, whose right
// margin it sets, now and at each new size.
class TileText : public QObject
{
    Q_OBJECT

public:
    // To be called whenever the label has got its text.
    static void keepInTile(QLabel &label);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    explicit TileText(QLabel &label);

    void setMargin();

    QLabel &m_label;
};
