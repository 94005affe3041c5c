#pragma once

#include <QHash>
#include <QString>

// One client entry of the launcher document: a build of one client kind for one server.
struct ClientInfo {
    ClientInfo() = default;
    ClientInfo(QString theVersion, QString theUrl, QString theClient, QString theServer,
               QString theAuth = {});

    QString version; // as published; also the folder name of the installed build
    QString url;     // where the zip archive lies
    QString client;  // client kind: "Official", "Beta" or any other word
    QString server;
    QString auth; // SHA-1 of the code that unlocks the entry, in hex; empty: open to everybody
};

// The client table: server name to client kind to entry.
using ClientInfoTable = QHash<QString, QHash<QString, ClientInfo>>;
