#include "info/panelcolumn.h"

#include "info/serverbutton.h"

PanelColumn::PanelColumn(ServerButton *server)
    : m_server(server)
{
}

void PanelColumn::placeAt(const ServerPanel::ColumnPlace &place)
{
    m_place = place;
    placeParts();
}

// The toolkit comes here when a part has changed: a logo that has arrived brings its own size.
void PanelColumn::setGeometry(const QRect & /*rect*/)
{
    placeParts();
}

void PanelColumn::placeParts()
{
    if (m_place.column.isEmpty()) {
        return;
    }
    itemAt(0)->widget()->setGeometry(m_place.logo);
    itemAt(1)->widget()->setGeometry(m_place.upper);
    itemAt(2)->widget()->setGeometry(m_place.lower);
    m_server->showAt(m_place.picture);
}
