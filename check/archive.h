#pragma once

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

// A client archive as the extractor sees it: by the extractor's own code.
struct Archive {
    bool opens = false;
    QString refusal;      // the extractor's words when it does not open
    bool refused = false; // because of a member; otherwise it is no archive
    int files = 0;
    int encryptedFiles = 0;
    QByteArray sum;          // of the archive's own bytes
    qint64 unpackedSize = 0; // in bytes
    QStringList top;         // what will lie in the version's folder itself
    QSet<QString> topFolders;
    QString longest;     // of the members' names
    QStringList saves;   // members that look like a player's
    QStringList strays;  // members that no game needs
    QSet<QString> names; // of all files

    // Known once the archive was tested, unless something in it is damaged.
    QHash<QString, QByteArray> programs; // how those at the top begin
    QStringList pointers;                // members that stand for files which are elsewhere
};

Archive openArchive(const QString &file);

// Unpacks the archive to nowhere with this password (or none), and takes into it what shows only
// then. Returns the extractor's words when a file in it is damaged or was locked with another
// password, otherwise an empty text.
QString testArchive(const QString &file, const QString &password, Archive &archive);
