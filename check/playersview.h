#pragma once

#include "check/documentcontent.h"
#include "info/serverpanel.h"

// What players see of a document.
struct PlayersView {
    struct Column {
        QString server;
        ServerPanel::ClientButtons buttons;
        QString officialVersion;
        QString betaVersion;
    };

    // What Play starts once an archive is unpacked, for each way in which Play looks; an empty name
    // for nothing. Known of archives that were fetched.
    struct Started {
        QString server;
        QString client;
        QString version;
        QStringList programs;
    };

    bool connected = false;  // otherwise the window waits for a document for ever
    bool outdated = false;   // the launcher asks for a newer one, and ends
    QVector<Column> columns; // from left to right
    QVector<ClientEntry> hidden;
    QVector<NewsItem> slides;
    QVector<NewsItem> tiles;
    QVector<Started> started;
};

// What the place of the tile with this index is called.
QString tilePlace(int index);

PlayersView playersViewOf(const DocumentContent &content);
