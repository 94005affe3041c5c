#include "check/twins.h"

#include <QCryptographicHash>

namespace
{
QByteArray sumOfBytes(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}
} // namespace

void PictureTwins::addLogo(const Place &place, const QString &server, const QByteArray &bytes,
                           Findings &findings)
{
    QString &first = m_logos[sumOfBytes(bytes)];
    if (first.isNull()) {
        first = server;
        return;
    }
    findings << warningAt(place, "logos-alike",
                          QStringLiteral("the logo of server %1 is that of %2, byte by byte: the "
                                         "panel shows no names, and players cannot tell the two "
                                         "apart")
                              .arg(quoted(server), quoted(first)),
                          QStringLiteral("give each server a logo of its own"));
}

void PictureTwins::addPicture(const Place &place, const QString &address, const QByteArray &bytes,
                              Findings &findings)
{
    QString &first = m_pictures[sumOfBytes(bytes)];
    if (first.isNull()) {
        first = address;
    } else if (first != address) {
        findings << noteAt(place, "pictures-alike",
                           QStringLiteral("the picture %1 is that of %2, byte by byte: a host that "
                                          "refuses its pictures to others answers so, too")
                               .arg(address, first),
                           QStringLiteral("look at it, unless that is meant"));
    }
}
