#include "info/panelrow.h"

#include "info/panelcolumn.h"
#include "info/serverpanel.h"

#include <QWidget>

// The toolkit comes here before the panel is shown, when its size changes, and in the turn of the
// event loop after something was done to its columns.
void PanelRow::setGeometry(const QRect & /*rect*/)
{
    const QSize panel = parentWidget()->size();
    // Asked for once: the style takes as long to tell them as a column to be placed.
    const QMargins margins = contentsMargins();
    const int between = spacing();
    for (int i = 0; i < count(); ++i) {
        const ServerPanel::ColumnPlace place =
            ServerPanel::scaledTo(panel, ServerPanel::columnPlace(i, count(), margins, between));
        QWidget *container = itemAt(i)->widget();
        container->setFixedHeight(place.column.height());
        container->setGeometry(place.column);
        static_cast<PanelColumn *>(container->layout())->placeAt(place);
    }
}
