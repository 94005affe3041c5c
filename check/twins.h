#pragma once

#include "check/finding.h"

#include <QByteArray>
#include <QHash>
#include <QString>

// The pictures of a document that have arrived so far: tells those that are the same, byte by byte.
class PictureTwins
{
public:
    // The logo of a server.
    void addLogo(const Place &place, const QString &server, const QByteArray &bytes,
                 Findings &findings);
    // The picture of a slide or tile at this address.
    void addPicture(const Place &place, const QString &address, const QByteArray &bytes,
                    Findings &findings);

private:
    // The first ones, by their sums.
    QHash<QByteArray, QString> m_logos;    // their servers
    QHash<QByteArray, QString> m_pictures; // their addresses
};
