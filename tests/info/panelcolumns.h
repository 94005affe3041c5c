#pragma once

#include "ui_testform.h"
#include "window/testform.h"

#include <QGroupBox>
#include <QLayout>
#include <QList>
#include <QPushButton>

// One column of the built panel, from the top.
struct Column {
    QGroupBox *container = nullptr;
    QPushButton *logo = nullptr;
    QPushButton *upper = nullptr;
    QPushButton *lower = nullptr;
};

// In the order of the layout.
inline QList<Column> columnsOf(const testform &window)
{
    const auto buttonAt = [](const QLayout *column, int place) {
        return qobject_cast<QPushButton *>(column->itemAt(place)->widget());
    };
    QList<Column> columns;
    const QLayout *row = window.ui->serverButtonsGroup->layout();
    for (int i = 0; row != nullptr && i < row->count(); ++i) {
        Column column;
        column.container = qobject_cast<QGroupBox *>(row->itemAt(i)->widget());
        if (column.container == nullptr || column.container->layout() == nullptr ||
            column.container->layout()->count() != 3) {
            qFatal("a column of the panel is none");
        }
        column.logo = buttonAt(column.container->layout(), 0);
        column.upper = buttonAt(column.container->layout(), 1);
        column.lower = buttonAt(column.container->layout(), 2);
        columns << column;
    }
    return columns;
}

// In the window's coordinates.
inline QRect placeOf(const testform &window, const QWidget *widget)
{
    return {widget->mapTo(&window, QPoint()), widget->size()};
}
