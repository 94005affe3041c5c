#pragma once

#include <QColor>
#include <QGraphicsEffect>
#include <QPixmap>

// A glow: a coloured, blurred copy of the widget painted under it. The widget it is set on owns it.
class QGraphicsGlowEffect : public QGraphicsEffect
{
public:
    explicit QGraphicsGlowEffect(QObject *parent = nullptr);

    QColor color() const { return _color; }
    // How many times the glow is painted; 0 or less paints none.
    int strength() const { return _strength; }
    // In pixels; the glow reaches as far, rounded up, beyond the widget.
    qreal blurRadius() const { return _blurRadius; }
    void setColor(QColor value);
    void setStrength(int value);
    void setBlurRadius(qreal value);

    QRectF boundingRectFor(const QRectF &rect) const override;

protected:
    void draw(QPainter *painter) override;

private:
    // Renders the picture through the effect, extent pixels larger on every side. Takes the
    // effect. A null picture stays one; without an effect the picture comes back as it is.
    static QPixmap applyEffectToPixmap(QPixmap src, QGraphicsEffect *effect, int extent);

    int _extent = 5;
    QColor _color = QColor(255, 255, 255);
    int _strength = 3;
    double _blurRadius = 5.0;
};
