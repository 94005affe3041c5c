#include "fetch/pictureparts.h"

#include <QSet>
#include <QVector>
#include <QtEndian>

#include <algorithm>
#include <limits>

namespace
{
const char pngSignature[] = "\x89PNG\r\n\x1a\n";

quint32 littleNumber(const QByteArray &bytes, int at)
{
    return at + 4 <= bytes.size() ? qFromLittleEndian<quint32>(bytes.constData() + at) : 0;
}

quint8 byteOf(const QByteArray &bytes, int at)
{
    return at < bytes.size() ? static_cast<quint8>(bytes.at(at)) : quint8(0);
}

int shortNumber(const QByteArray &bytes, int at)
{
    return byteOf(bytes, at) + 256 * byteOf(bytes, at + 1);
}

bool isIcon(const QByteArray &bytes)
{
    return bytes.startsWith(QByteArray::fromRawData("\0\0\1\0", 4)) ||
           bytes.startsWith(QByteArray::fromRawData("\0\0\2\0", 4));
}

// Of the first picture in an icon file, as its entry tells them.
constexpr int iconEntry = 6;
constexpr int iconSize = iconEntry + 8;
constexpr int iconOffset = iconEntry + 12;

bool decidesAboutLooks(const QByteArray &chunk)
{
    static const QSet<QByteArray> chunks{"IHDR", "PLTE", "IDAT", "IEND", "tRNS", "gAMA",
                                         "cHRM", "sRGB", "sBIT", "bKGD", "pHYs"};
    return chunks.contains(chunk);
}

// Behind a sequence of blocks, each with its length in front, the last of which is empty.
int behindBlocks(const QByteArray &bytes, int at)
{
    while (at < bytes.size() && byteOf(bytes, at) != 0) {
        at += 1 + byteOf(bytes, at);
    }
    return at + 1;
}

int bytesOfColours(quint8 flags)
{
    return (flags & 0x80) != 0 ? 3 * (2 << (flags & 7)) : 0;
}

// Counts what the codes of a GIF picture unpack to, by the decoder's own rules, without unpacking.
class CodeCounter
{
public:
    explicit CodeCounter(int bits)
        : m_bits(bits)
        , m_clear(1 << bits)
        , m_lengths(tableSize + 1, 1)
    {
        reset();
    }

    // False when the decoder would give up.
    bool add(quint8 byte)
    {
        if (m_ended) {
            // It starts again when so many bytes follow the end; an honest file has one or two.
            m_pixels = ++m_behindEnd > 4000 ? std::numeric_limits<qint64>::max() : m_pixels;
            return m_behindEnd <= 4000;
        }
        m_accumulated |= static_cast<quint32>(byte) << m_held;
        m_held += 8;
        while (m_held >= m_width && !m_ended) {
            const int code = static_cast<int>(m_accumulated & ((1U << m_width) - 1));
            m_accumulated >>= m_width;
            m_held -= m_width;
            if (!takeCode(code)) {
                return false;
            }
        }
        return true;
    }
    qint64 pixels() const { return m_pixels; }

private:
    static constexpr int tableSize = 4096;

    void reset()
    {
        m_width = m_bits + 1;
        m_next = m_clear + 2;
        m_limit = 2 * m_clear;
        m_previous = -1;
    }

    bool takeCode(int code)
    {
        if (code == m_clear) {
            reset();
            return true;
        }
        if (code == m_clear + 1) {
            m_ended = true;
            return true;
        }
        if (m_previous < 0) {
            m_previous = code;
            ++m_pixels;
            return true;
        }
        const int known = code >= m_next ? m_previous : code;
        if (known >= m_next) {
            return false;
        }
        const qint64 extended = m_lengths.at(m_previous >= m_next ? 0 : m_previous) + qint64(1);
        m_pixels += code >= m_next ? extended : m_lengths.at(code);
        if (m_next < tableSize) {
            m_lengths[m_next] = static_cast<int>(extended);
            ++m_next;
            if (m_next >= m_limit && m_limit < tableSize) {
                m_limit *= 2;
                ++m_width;
            }
        }
        m_previous = code;
        return true;
    }

    const int m_bits;
    const int m_clear;
    QVector<int> m_lengths; // of what each code unpacks to
    quint32 m_accumulated = 0;
    int m_held = 0; // bits that are accumulated
    int m_width = 0;
    int m_next = 0;
    int m_limit = 0;
    int m_previous = -1;
    int m_behindEnd = 0;
    bool m_ended = false;
    qint64 m_pixels = 0;
};

// Of the picture whose codes begin here, with their width in front.
qint64 pixelsOfCodes(const QByteArray &bytes, int at)
{
    constexpr int widest = 12;
    const int bits = byteOf(bytes, at);
    if (bits > widest - 1) {
        return 0;
    }
    CodeCounter counter(bits);
    for (++at; at < bytes.size() && byteOf(bytes, at) != 0; at += 1 + byteOf(bytes, at)) {
        const int end = std::min(at + 1 + byteOf(bytes, at), bytes.size());
        for (int i = at + 1; i < end; ++i) {
            if (!counter.add(byteOf(bytes, i))) {
                return counter.pixels();
            }
        }
    }
    return counter.pixels();
}

// Where the first picture of a GIF file is described; -1 where none is.
int firstPictureInGif(const QByteArray &bytes)
{
    if (!bytes.startsWith("GIF8")) {
        return -1;
    }
    int at = 13 + bytesOfColours(byteOf(bytes, 10));
    while (at < bytes.size()) {
        const char introducer = bytes.at(at);
        if (introducer == ',') {
            return at;
        }
        if (introducer != '!') {
            break;
        }
        const quint8 label = byteOf(bytes, at + 1);
        at += 2;
        if (label == 0xf9 || label == 0xff) {
            // Of these the first block is read even when it is empty.
            at += 1 + byteOf(bytes, at);
        }
        at = behindBlocks(bytes, at);
    }
    return -1;
}

// Where the codes of the picture begin that is described here.
int codesOfGif(const QByteArray &bytes, int at)
{
    return at + 10 + bytesOfColours(byteOf(bytes, at + 9));
}

// The position of the next marker's second byte, behind all that is none: within a scan a byte of
// all ones is followed by a zero.
int nextMarker(const QByteArray &bytes, int at)
{
    for (at = bytes.indexOf('\xff', at); at >= 0; at = bytes.indexOf('\xff', at)) {
        while (at < bytes.size() && bytes.at(at) == '\xff') {
            ++at;
        }
        if (byteOf(bytes, at) != 0) {
            return at;
        }
    }
    return bytes.size();
}
} // namespace

QByteArray withoutIconAround(const QByteArray &bytes)
{
    const quint32 size = littleNumber(bytes, iconSize);
    const quint32 offset = littleNumber(bytes, iconOffset);
    if (!isIcon(bytes) || offset >= static_cast<quint32>(bytes.size()) ||
        size > static_cast<quint32>(bytes.size())) {
        return bytes;
    }
    const QByteArray picture = bytes.mid(static_cast<int>(offset), static_cast<int>(size));
    return picture.startsWith(pngSignature) ? picture : bytes;
}

QSize sizeInIcon(const QByteArray &bytes)
{
    const quint32 offset = littleNumber(bytes, iconOffset);
    if (!isIcon(bytes) || offset > static_cast<quint32>(bytes.size())) {
        return {};
    }
    constexpr quint32 largest = std::numeric_limits<int>::max();
    const int begin = static_cast<int>(offset);
    const auto side = [&](int inEntry, int inPicture) {
        const quint8 told = byteOf(bytes, iconEntry + inEntry);
        return told != 0
                   ? told
                   : static_cast<int>(std::min(littleNumber(bytes, begin + inPicture), largest));
    };
    return {side(0, 4), side(1, 8)};
}

QByteArray withoutRestOfPng(const QByteArray &bytes)
{
    if (!bytes.startsWith(pngSignature)) {
        return bytes;
    }
    constexpr int around = 12; // length, name and checksum
    QByteArray result(pngSignature);
    result.reserve(bytes.size());
    QSet<QByteArray> met;
    int at = result.size();
    while (at + 8 <= bytes.size()) {
        const qint64 length = qFromBigEndian<quint32>(bytes.constData() + at) + qint64(around);
        const QByteArray name = bytes.mid(at + 4, 4);
        // A file that breaks off is handed on as far as it goes.
        const int end = static_cast<int>(std::min<qint64>(at + length, bytes.size()));
        // The data alone may come in parts.
        if (decidesAboutLooks(name) && (name == "IDAT" || !met.contains(name))) {
            result.append(bytes.constData() + at, end - at);
            met.insert(name);
        }
        if (name == "IEND") {
            break;
        }
        at = end;
    }
    return result;
}

int scansOfJpeg(const QByteArray &bytes)
{
    constexpr quint8 startOfScan = 0xda;
    constexpr quint8 endOfImage = 0xd9;
    if (!bytes.startsWith("\xff\xd8")) {
        return 0;
    }
    int scans = 0;
    int at = nextMarker(bytes, 2);
    while (at < bytes.size()) {
        const quint8 marker = byteOf(bytes, at);
        if (marker == endOfImage) {
            break;
        }
        ++at;
        // A decoder that looks for its place again, within a scan, steps over the lowest ones
        // alone.
        const bool standsAlone = marker < 0xc0 || (marker >= 0xd0 && marker <= 0xd7);
        if (!standsAlone) {
            scans += marker == startOfScan ? 1 : 0;
            at += std::max(byteOf(bytes, at) * 256 + byteOf(bytes, at + 1), 2);
        }
        at = nextMarker(bytes, at);
    }
    return scans;
}

qint64 pixelsInGif(const QByteArray &bytes)
{
    const int at = firstPictureInGif(bytes);
    return at < 0 ? 0 : pixelsOfCodes(bytes, codesOfGif(bytes, at));
}

bool breaksOffInGif(const QByteArray &bytes)
{
    const int at = firstPictureInGif(bytes);
    if (at < 0) {
        return false;
    }
    const qint64 pixels = qint64(shortNumber(bytes, at + 5)) * shortNumber(bytes, at + 7);
    return pixelsOfCodes(bytes, codesOfGif(bytes, at)) < pixels;
}
