#pragma once

#include "support/packedbytes.h"

#include <QByteArray>
#include <QtEndian>

// Builds picture files part by part, as nobody's program would write them.
namespace PictureFiles
{
inline QByteArray bigNumber(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToBigEndian<quint32>(number, bytes.data());
    return bytes;
}

// A part of a PNG file, with its checksum.
inline QByteArray chunk(const QByteArray &name, const QByteArray &data)
{
    quint32 sum = 0xffffffff;
    for (const char byte : name + data) {
        sum ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            sum = (sum & 1) != 0 ? (sum >> 1) ^ 0xedb88320 : sum >> 1;
        }
    }
    return bigNumber(static_cast<quint32>(data.size())) + name + data + bigNumber(~sum);
}

// Signature and head of a PNG file in true colour.
inline QByteArray pngHead(quint32 width, quint32 height, bool interlaced = false)
{
    return QByteArray("\x89PNG\r\n\x1a\n") +
           chunk("IHDR", bigNumber(width) + bigNumber(height) + QByteArray("\x08\x02\0\0", 4) +
                             (interlaced ? '\1' : '\0'));
}

// A text that unpacks to so many bytes.
inline QByteArray pngText(int bytes)
{
    constexpr int length = 4; // in front of what the toolkit packs
    return chunk("zTXt",
                 QByteArray("Comment\0\0", 9) + qCompress(QByteArray(bytes, 'a'), 9).mid(length));
}

// A PNG file of one pixel, behind whose row so many bytes of data unpack to a thousand times as
// many.
inline QByteArray pngBomb(int bytes)
{
    return pngHead(1, 1) + chunk("IDAT", PackedBytes::zeros(bytes, PackedBytes::Deflate)) +
           chunk("IEND", {});
}

// A GIF file of 100 x 100 pixels, the data of which have so many codes, each unpacking to as many
// pixels as one can, and these bytes behind their end.
inline QByteArray gifBomb(int codes, const QByteArray &behind = {})
{
    constexpr int full = 4096;
    QByteArray data;
    quint64 held = 0;
    int bits = 0;
    int width = 3;
    const auto put = [&](int code) {
        held |= static_cast<quint64>(code) << bits;
        for (bits += width; bits >= 8; bits -= 8) {
            data += static_cast<char>(held & 0xff);
            held >>= 8;
        }
    };
    put(4);
    put(0);
    for (int next = 6; codes > 0; --codes) {
        put(next < full ? next : full - 1);
        if (next < full) {
            ++next;
            width += next == 1 << width && width < 12 ? 1 : 0;
        }
    }
    put(5);
    width = 8;
    put(0);
    data += behind;
    QByteArray file = QByteArray::fromHex("47494638396164006400800000000000000000"
                                          "2c00000000640064000002");
    for (int at = 0; at < data.size(); at += 255) {
        const QByteArray block = data.mid(at, 255);
        file += static_cast<char>(block.size()) + block;
    }
    return file + QByteArray("\0;", 2);
}

// An icon file with one picture, the size of which its entry leaves to it.
inline QByteArray iconAround(const QByteArray &picture)
{
    QByteArray sizeAndOffset(8, '\0');
    qToLittleEndian<quint32>(static_cast<quint32>(picture.size()), sizeAndOffset.data());
    qToLittleEndian<quint32>(22, sizeAndOffset.data() + 4);
    return QByteArray("\0\0\1\0\1\0", 6) + QByteArray("\0\0\0\0\1\0\x20\0", 8) + sizeAndOffset +
           picture;
}
} // namespace PictureFiles
