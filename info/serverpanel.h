#pragma once

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

// As many columns as the window is wide enough for. With more, buttons are cut or overlap.
constexpr int mostSideBySide = designWidth / clientButtonSize.width();
bool fitSideBySide(int columns);

// Height of a column with a logo of this size and two client buttons under it.
int columnHeight(QSize logo);

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
