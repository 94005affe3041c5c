#pragma once

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
    qint64 unpackedSize = 0; // in bytes
    QStringList top;         // what will lie in the version's folder itself
    QSet<QString> topFolders;
};

Archive openArchive(const QString &file);

// Unpacks the archive to nowhere with this password (or none). Returns the extractor's words when a
// file in it is damaged or was locked with another password, otherwise an empty text.
QString testArchive(const QString &file, const QString &password);
