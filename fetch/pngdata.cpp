#include "fetch/pngdata.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <zlib.h>

namespace
{
constexpr int signatureSize = 8;
constexpr int headSize = 13;  // of the first chunk's data
constexpr int chunkBegin = 8; // length and name
constexpr int chunkEnd = 4;   // checksum

quint32 numberAt(const QByteArray &bytes, int at)
{
    return qFromBigEndian<quint32>(bytes.constData() + at);
}

// Calls the function with position and length of the data of each IDAT chunk, as long as it returns
// true.
template<typename Function>
void forEachData(const QByteArray &bytes, Function function)
{
    int at = signatureSize;
    while (at + chunkBegin <= bytes.size()) {
        const qint64 length = numberAt(bytes, at);
        const int begin = at + chunkBegin;
        const int size = static_cast<int>(std::min<qint64>(length, bytes.size() - begin));
        if (bytes.mid(at + 4, 4) == "IDAT" && !function(begin, size)) {
            return;
        }
        const qint64 next = begin + length + chunkEnd;
        at = static_cast<int>(std::min<qint64>(next, bytes.size()));
    }
}

struct Step {
    quint32 x0, y0, dx, dy;
};

// Of an interlaced picture: seven smaller ones, one after the other.
constexpr std::array<Step, 7> passes{{{0, 0, 8, 8},
                                      {4, 0, 8, 8},
                                      {0, 4, 4, 8},
                                      {2, 0, 4, 4},
                                      {0, 2, 2, 4},
                                      {1, 0, 2, 2},
                                      {0, 1, 1, 2}}};

qint64 bytesOfRows(quint32 width, quint32 height, int bitsOfPixel)
{
    return width == 0 ? 0 : (1 + (qint64(width) * bitsOfPixel + 7) / 8) * height;
}

// The part of a side that a pass holds.
quint32 partOf(quint32 side, quint32 begin, quint32 step)
{
    return side > begin ? (side - begin + step - 1) / step : 0;
}

// What the rows take unpacked, as the head asks for them.
qint64 bytesOfPicture(const QByteArray &bytes)
{
    const int head = signatureSize + chunkBegin;
    const quint32 width = numberAt(bytes, head);
    const quint32 height = numberAt(bytes, head + 4);
    static constexpr std::array<int, 7> channelsOfColour{1, 0, 3, 1, 2, 0, 4};
    const auto colour = static_cast<quint8>(bytes.at(head + 9));
    const int channels = colour < channelsOfColour.size() ? channelsOfColour.at(colour) : 0;
    const int bits = channels * static_cast<quint8>(bytes.at(head + 8));
    if (bytes.at(head + 12) == 0) {
        return bytesOfRows(width, height, bits);
    }
    qint64 sum = 0;
    for (const Step &pass : passes) {
        sum += bytesOfRows(partOf(width, pass.x0, pass.dx), partOf(height, pass.y0, pass.dy), bits);
    }
    return sum;
}

// Counts what data unpack to, and keeps nothing of it.
class Counter
{
public:
    Counter() { inflateInit(&m_stream); }
    ~Counter() { inflateEnd(&m_stream); }
    Counter(const Counter &) = delete;
    Counter &operator=(const Counter &) = delete;

    // Whether more may come behind these bytes, before so many have been unpacked.
    bool add(QByteArray data, qint64 most)
    {
        m_stream.next_in = static_cast<Bytef *>(static_cast<void *>(data.data()));
        m_stream.avail_in = static_cast<uInt>(data.size());
        int result = Z_OK;
        while (result == Z_OK && m_count <= most) {
            m_stream.next_out = m_unpacked.data();
            m_stream.avail_out = static_cast<uInt>(m_unpacked.size());
            result = inflate(&m_stream, Z_NO_FLUSH);
            m_count += static_cast<qint64>(m_unpacked.size()) - m_stream.avail_out;
        }
        // Z_BUF_ERROR says that these bytes are through.
        return result == Z_BUF_ERROR && m_count <= most;
    }
    qint64 count() const { return m_count; }

private:
    z_stream m_stream = {};
    std::array<Bytef, 32 * 1024> m_unpacked{};
    qint64 m_count = 0;
};
} // namespace

bool unpacksBeyondItsRows(const QByteArray &bytes)
{
    constexpr int littleData = 64 * 1024; // unpacks to 64 MiB at worst
    // Some programs write a few bytes too many.
    constexpr qint64 tolerance = 64 * 1024;
    if (!bytes.startsWith("\x89PNG\r\n\x1a\n") ||
        bytes.size() < signatureSize + chunkBegin + headSize) {
        return false;
    }
    qint64 packed = 0;
    forEachData(bytes, [&packed](int, int size) {
        packed += size;
        return true;
    });
    if (packed <= littleData) {
        return false;
    }
    const qint64 most = bytesOfPicture(bytes) + tolerance;
    Counter counter;
    forEachData(bytes,
                [&](int begin, int size) { return counter.add(bytes.mid(begin, size), most); });
    return counter.count() > most;
}
