#include "window/qgraphicsgloweffect.h"

#include <QGraphicsPixmapItem>
#include <QGraphicsScene>
#include <QPainter>

#include <cmath>

QGraphicsGlowEffect::QGraphicsGlowEffect(QObject *parent)
    : QGraphicsEffect(parent)
{
}

void QGraphicsGlowEffect::setColor(QColor value)
{
    _color = value;
}

void QGraphicsGlowEffect::setStrength(int value)
{
    _strength = value;
}

void QGraphicsGlowEffect::setBlurRadius(qreal value)
{
    _blurRadius = value;
    _extent = static_cast<int>(std::ceil(value));
    updateBoundingRect();
}

QRectF QGraphicsGlowEffect::boundingRectFor(const QRectF &rect) const
{
    return QRect(static_cast<int>(rect.left() - _extent), static_cast<int>(rect.top() - _extent),
                 static_cast<int>(rect.width() + 2 * _extent),
                 static_cast<int>(rect.height() + 2 * _extent));
}

void QGraphicsGlowEffect::draw(QPainter *painter)
{
    QPoint offset;
    const QPixmap source =
        sourcePixmap(Qt::LogicalCoordinates, &offset, QGraphicsEffect::PadToEffectiveBoundingRect);

    auto *colorize = new QGraphicsColorizeEffect;
    colorize->setColor(_color);
    colorize->setStrength(1.0);
    QPixmap glow = applyEffectToPixmap(source, colorize, 0);

    auto *blur = new QGraphicsBlurEffect;
    blur->setBlurRadius(_blurRadius);
    glow = applyEffectToPixmap(glow, blur, _extent);

    // Painting the same translucent picture again makes the glow stronger.
    for (int i = 0; i < _strength; ++i) {
        painter->drawPixmap(QPointF(offset) - QPointF(_extent, _extent), glow);
    }
    drawSource(painter);
}

QPixmap QGraphicsGlowEffect::applyEffectToPixmap(QPixmap src, QGraphicsEffect *effect, int extent)
{
    if (src.isNull()) {
        // No item comes to own it.
        delete effect;
        return {};
    }
    if (effect == nullptr) {
        return src;
    }
    QGraphicsScene scene;
    // Owned by the scene, as the effect is by the item.
    auto *item = new QGraphicsPixmapItem(src);
    item->setGraphicsEffect(effect);
    scene.addItem(item);

    // As fine as the source, which has the screen's pixels.
    const qreal pixelRatio = src.devicePixelRatio();
    const QSizeF size = QSizeF(src.size()) / pixelRatio + QSizeF(extent * 2, extent * 2);
    QPixmap result((size * pixelRatio).toSize());
    result.setDevicePixelRatio(pixelRatio);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    scene.render(&painter, QRectF(QPointF(), size), QRectF(QPointF(-extent, -extent), size));
    return result;
}
