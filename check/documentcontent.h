#pragma once

#include "check/place.h"
#include "info/clientinfo.h"
#include "info/launcherdocumentreader.h"

#include <QByteArray>
#include <QString>
#include <QVector>

#include <optional>

// What one launcher document says, with the place of everything.

struct ClientEntry {
    ClientInfo info;
    bool hasAuth = false; // the attribute is there, empty or not
    bool visible = false; // to a player with the code that the document was read with
    Place place;
};

struct NewsItem {
    int index = 0;   // within its kind
    NewsEntry shown; // as the window shows it
    QString title;   // as written
    QString description;
    Place place;
};

struct LauncherElement {
    int version = 0;
    QString written;
    bool hasVersion = false;
    Place place;
};

// An attribute that counts as empty.
struct LongAddress {
    QString attribute;
    int length = 0;
    Place place; // of its element
};

struct DocumentContent {
    QString text;
    QString code; // that it was read with
    bool cutByNul = false;
    std::optional<Place> firstBadByte; // of what is not UTF-8

    QVector<LauncherElement> launchers;
    QVector<ClientEntry> clients;
    QVector<NewsItem> slides;
    QVector<NewsItem> tiles;
    QVector<DocumentElement> elements;  // all that are read
    QVector<DocumentElement> strangers; // elements that the launcher does not know

    QVector<LongAddress> longAddresses;

    DocumentEnd end;
    DocumentElement broken; // when end says that there is one
    QVector<DocumentElement> lost;
    std::optional<DocumentEnd> restIsNotXml;
};

// Reads the document as the launcher of a player with this code does.
DocumentContent readContent(const QByteArray &body, const QString &code);
