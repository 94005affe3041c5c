#pragma once

#include <QByteArray>

#include <zlib.h>

// Bytes packed for the way, as a web server sends them.
namespace PackedBytes
{
// The three forms in which bodies come; the values are the library's.
enum Form { Bare = -MAX_WBITS, Deflate = MAX_WBITS, Gzip = MAX_WBITS + 16 };

inline QByteArray pack(const QByteArray &bytes, Form form)
{
    QByteArray packed(static_cast<int>(compressBound(static_cast<uLong>(bytes.size()))) + 64, '\0');
    QByteArray from = bytes; // the library takes no constant
    z_stream stream = {};
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, form, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY);
    stream.next_in = reinterpret_cast<Bytef *>(from.data());
    stream.avail_in = static_cast<uInt>(from.size());
    stream.next_out = reinterpret_cast<Bytef *>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(static_cast<int>(stream.total_out));
    deflateEnd(&stream);
    return packed;
}

// So many bytes that unpack to a thousand times as many zeros, to whose end the sum does not fit.
inline QByteArray zeros(int packedSize, Form form = Gzip)
{
    const QByteArray whole = pack(QByteArray(1024 * 1024, '\0'), form);
    // In the middle of it a zero byte stands for 1,032 zeros: more of them are more of these.
    const int middle = whole.indexOf(QByteArray(200, '\0')) + 100;
    return whole.left(middle) + QByteArray(packedSize, '\0') + whole.mid(middle);
}
} // namespace PackedBytes
