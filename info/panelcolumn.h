#pragma once

#include "info/serverpanel.h"

#include <QVBoxLayout>

class ServerButton;

// A column of the selection panel: the server's logo and two client buttons under it, added in this
// order. Their places come from the row; the logo has its own from the start, whether its picture
// has arrived or not.
class PanelColumn : public QVBoxLayout
{
public:
    // The server button is not owned, and outlives the panel.
    explicit PanelColumn(ServerButton *server);

    // Puts the three there, and has the logo made to fit.
    void placeAt(const ServerPanel::ColumnPlace &place);

    void setGeometry(const QRect &rect) override;

private:
    void placeParts();

    ServerButton *m_server;
    ServerPanel::ColumnPlace m_place; // empty until the row has placed the column
};
