#include "news/tiletext.h"

#include <QEvent>
#include <QLabel>
#include <QTextBlock>
#include <QTextDocument>

namespace
{
bool hasLineFromRight(const QLabel &label)
{
    const QString text = label.text();
    if (label.textFormat() == Qt::PlainText || !Qt::mightBeRichText(text)) {
        return text.isRightToLeft();
    }
    QTextDocument document;
    document.setHtml(text);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (block.textDirection() == Qt::RightToLeft) {
            return true;
        }
    }
    return false;
}

// How much of the label its tile cuts off, in pixels.
int hiddenPart(const QLabel &label)
{
    const QWidget *const tile = label.parentWidget();
    return tile != nullptr ? label.geometry().right() - tile->rect().right() : 0;
}
} // namespace

void TileText::keepInTile(QLabel &label)
{
    auto *keeper = label.findChild<TileText *>(QString(), Qt::FindDirectChildrenOnly);
    if (keeper == nullptr && hiddenPart(label) > 0 && hasLineFromRight(label)) {
        keeper = new TileText(label);
    }
    if (keeper != nullptr) {
        keeper->setMargin();
    }
}

TileText::TileText(QLabel &label)
    : QObject(&label)
    , m_label(label)
{
    label.installEventFilter(this);
}

bool TileText::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize || event->type() == QEvent::Move) {
        setMargin();
    }
    return QObject::eventFilter(watched, event);
}

void TileText::setMargin()
{
    const int hidden = hiddenPart(m_label);
    if (hidden <= 0 || !hasLineFromRight(m_label)) {
        m_label.setContentsMargins(0, 0, 0, 0);
        return;
    }
    // The texts stand 6 of the tile's 276 pixels from what is left of them: so these do at the
    // right.
    constexpr int gapsInTile = 46;
    m_label.setContentsMargins(0, 0, hidden + m_label.parentWidget()->width() / gapsInTile, 0);
}
