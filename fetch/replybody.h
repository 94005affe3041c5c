#pragma once

#include <QtGlobal>

#include <memory>

class QNetworkReply;

// The body of a reply, unpacked where the host sent it packed ("gzip" or "deflate"), piece by
// piece: it holds a few kilobytes, however large a body unpacks to.
class ReplyBody
{
public:
    // Of a reply that is not owned and outlives this object.
    explicit ReplyBody(QNetworkReply *reply);
    ~ReplyBody();
    ReplyBody(const ReplyBody &) = delete;
    ReplyBody &operator=(const ReplyBody &) = delete;

    // Takes over at most so many bytes of what has arrived. Returns how many; 0 when there are none
    // now, or none any more.
    qint64 read(char *data, qint64 size);

    // Whether what the host packed cannot be unpacked, or more than 1 MiB follows it; read() gives
    // nothing any more. Less than that is dropped.
    bool isBroken() const;
    // Whether the host packed it, and its end has not been read yet.
    bool isCutShort() const;

private:
    class Unpacking;

    bool isPacked() const;

    QNetworkReply *m_reply;
    std::unique_ptr<Unpacking> m_unpacking; // from the first bytes of a packed body
};
