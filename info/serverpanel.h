#pragma once

#include <QMargins>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>

// The selection panel's rules: order and sizes of its columns, keys and style sheets of its
// buttons. Sizes in pixels of the design (974 x 571).
namespace ServerPanel
{
constexpr QSize clientButtonSize(196, 81);
constexpr int designWidth = 974;

// Ascending by UTF-16 code units; a server named exactly "Beta" goes last.
QStringList orderedNames(QStringList names);

// Those that get a column, in this order: the first of them, as many as there may be.
QStringList shownNames(const QStringList &names);

// Size of a logo when the panel has this many columns.
QSize logoSize(int columns);

// As many columns as have buttons of their full size; with more they are smaller.
constexpr int mostSideBySide = designWidth / clientButtonSize.width();
bool fitSideBySide(int columns);

// Height of a column with a logo of this size and two client buttons under it.
int columnHeight(QSize logo);

// Where a column stands in the panel; where its logo and its two client buttons stand in it, and
// the size of the logo's picture there.
struct ColumnPlace {
    QRect column;
    QRect logo;
    QRect upper;
    QRect lower;
    QSize picture;
};
// The place of one of so many columns, in a panel of the design's size: side by side in cells of
// one width, within these margins and so far apart. Where a cell is narrower than a client button,
// logo and buttons are as narrow, in their proportions.
ColumnPlace columnPlace(int index, int columns, const QMargins &margins, int spacing);
// The same in a panel of this size, which has the design's proportions.
ColumnPlace scaledTo(QSize panel, const ColumnPlace &place);

// The file name of a server's logo, beside the document.
QString logoFileName(const QString &server);

// The buttons of a server that offers these client kinds.
struct ClientButtons {
    bool official = false;
    // A server without an "Official" client has a live "Beta" button in any case.
    bool beta = false;
    // Whether a click on it finds an entry.
    bool betaSelects = false;
};
ClientButtons clientButtons(const QStringList &kinds);

struct Selection {
    QString server;
    QString client;
};

// The key of a client button, and its way back; a missing part reads as empty.
QString selectionKey(const QString &server, const QString &client);
Selection parseSelectionKey(const QString &key);

QString officialStyleSheet();
QString betaStyleSheet();
// For the button without a client behind it.
QString placeholderStyleSheet();
} // namespace ServerPanel
