#include "fetch/replybody.h"

#include <QNetworkReply>

#include <array>
#include <limits>
#include <zlib.h>

namespace
{
constexpr std::size_t packedSize = 16 * 1024;
// So many bytes may follow what was packed; nobody reads them.
constexpr qint64 mostBehindTheEnd = 1024 * 1024;
} // namespace

// The unpacking of one body, and the packed bytes that are next.
class ReplyBody::Unpacking
{
public:
    // Tells by the first bytes how it is packed.
    Unpacking() { inflateInit2(&m_stream, MAX_WBITS + automatic); }
    ~Unpacking() { inflateEnd(&m_stream); }
    Unpacking(const Unpacking &) = delete;
    Unpacking &operator=(const Unpacking &) = delete;

    bool isEnded() const { return m_ended; }
    bool isBroken() const { return m_broken; }

    qint64 read(QNetworkReply *reply, char *data, qint64 size);

private:
    // Of the way a body begins.
    static constexpr int automatic = 32;
    static constexpr int withoutHeader = -MAX_WBITS;

    bool fill(QNetworkReply *reply);
    void step();
    void dropWhatFollows(QNetworkReply *reply);
    bool beginAgainWithoutHeader();

    z_stream m_stream = {};
    std::array<char, packedSize> m_packed{};
    qint64 m_filled = 0;
    qint64 m_dropped = 0;
    bool m_isWithoutHeader = false;
    bool m_ended = false;
    bool m_broken = false;
};

qint64 ReplyBody::Unpacking::read(QNetworkReply *reply, char *data, qint64 size)
{
    m_stream.next_out = static_cast<Bytef *>(static_cast<void *>(data));
    m_stream.avail_out = static_cast<uInt>(qMin<qint64>(size, std::numeric_limits<int>::max()));
    const uInt room = m_stream.avail_out;
    while (!m_ended && !m_broken && m_stream.avail_out > 0) {
        const uInt before = m_stream.avail_out;
        if (m_stream.avail_in == 0 && !fill(reply)) {
            // What was unpacked already may wait for room.
            step();
            if (m_stream.avail_out == before) {
                break;
            }
            continue;
        }
        step();
    }
    if (m_ended) {
        dropWhatFollows(reply);
    }
    return room - m_stream.avail_out;
}

bool ReplyBody::Unpacking::fill(QNetworkReply *reply)
{
    // Two bytes tell how a body begins.
    if (m_stream.total_in == 0 && reply->bytesAvailable() < 2 && !reply->isFinished()) {
        return false;
    }
    m_filled = reply->read(m_packed.data(), static_cast<qint64>(m_packed.size()));
    if (m_filled <= 0) {
        return false;
    }
    m_stream.next_in = static_cast<Bytef *>(static_cast<void *>(m_packed.data()));
    m_stream.avail_in = static_cast<uInt>(m_filled);
    return true;
}

void ReplyBody::Unpacking::step()
{
    const bool isFirst = m_stream.total_in == 0 && !m_isWithoutHeader;
    const int result = inflate(&m_stream, Z_NO_FLUSH);
    if (result == Z_DATA_ERROR && isFirst && m_stream.total_out == 0 && beginAgainWithoutHeader()) {
        return;
    }
    m_ended = result == Z_STREAM_END;
    // Z_BUF_ERROR says that there is nothing to do now.
    m_broken = result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR;
}

// Bytes that nobody takes fill the reply's buffer, the network waits for room, and the body never
// ends. A host that goes on for long is broken; it might go on for ever.
void ReplyBody::Unpacking::dropWhatFollows(QNetworkReply *reply)
{
    qint64 count = 0;
    while (m_dropped <= mostBehindTheEnd &&
           (count = reply->read(m_packed.data(), static_cast<qint64>(m_packed.size()))) > 0) {
        m_dropped += count;
    }
    m_broken = m_dropped > mostBehindTheEnd;
}

// Some hosts mean by "deflate" the bare bytes, without the header that the word stands for.
bool ReplyBody::Unpacking::beginAgainWithoutHeader()
{
    m_isWithoutHeader = true;
    if (inflateReset2(&m_stream, withoutHeader) != Z_OK) {
        return false;
    }
    m_stream.next_in = static_cast<Bytef *>(static_cast<void *>(m_packed.data()));
    m_stream.avail_in = static_cast<uInt>(m_filled);
    return true;
}

ReplyBody::ReplyBody(QNetworkReply *reply)
    : m_reply(reply)
{
}

ReplyBody::~ReplyBody() = default;

qint64 ReplyBody::read(char *data, qint64 size)
{
    // Nothing can be read of a reply that was given up.
    if (!m_reply->isOpen()) {
        return 0;
    }
    if (m_unpacking == nullptr && m_reply->bytesAvailable() > 0 && isPacked()) {
        m_unpacking = std::make_unique<Unpacking>();
    }
    if (m_unpacking != nullptr) {
        return m_unpacking->read(m_reply, data, size);
    }
    return qMax<qint64>(0, m_reply->read(data, size));
}

bool ReplyBody::isBroken() const
{
    return m_unpacking != nullptr && m_unpacking->isBroken();
}

bool ReplyBody::isCutShort() const
{
    return m_unpacking != nullptr && !m_unpacking->isEnded();
}

// The two ways that the request offers; anything else is taken as it comes.
bool ReplyBody::isPacked() const
{
    const QByteArray encoding = m_reply->rawHeader("Content-Encoding");
    return encoding.compare("gzip", Qt::CaseInsensitive) == 0 ||
           encoding.compare("deflate", Qt::CaseInsensitive) == 0;
}
