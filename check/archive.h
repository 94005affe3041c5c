#pragma once

#include <QString>
#include <QStringList>

// A client archive as unzip sees it: the program that the launcher unpacks with.
struct Archive {
    bool opens = false;
    QString error; // unzip's words when it does not
    QStringList files;
    int encryptedFiles = 0;
};

// The unzip program of this machine; empty when there is none.
QString findUnzip();

Archive listArchive(const QString &unzip, const QString &file);

// Unpacks the archive to nowhere with this password (or none). Returns unzip's words when a file in
// it is damaged or was locked with another password, otherwise an empty text.
QString testArchive(const QString &unzip, const QString &file, const QString &password);

// The names of the files that lie at the top of the archive and match the filter, which is how Play
// looks for them.
QStringList executablesOf(const Archive &archive, const QString &filter);
