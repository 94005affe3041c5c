#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <initializer_list>
#include <optional>
#include <utility>

// Archives byte by byte: what no packer would write.
struct ZipEntry {
    ZipEntry() = default;
    ZipEntry(QByteArray nameBytes, QByteArray contentBytes = {})
        : name(std::move(nameBytes))
        , content(std::move(contentBytes))
    {
    }

    static ZipEntry deflated(const QByteArray &name, const QByteArray &content);
    static ZipEntry onUnix(const QByteArray &name, quint32 mode, const QByteArray &content = {});

    QByteArray name;
    QByteArray content; // as it lies in the archive
    quint16 method = 0;
    quint16 flags = 0;
    quint16 time = 0x6000; // noon
    quint16 date = 0x5021; // 2020-01-01
    quint16 madeBy = 20;
    quint32 attributes = 0;
    QByteArray localExtra;
    QByteArray extra;
    // Where they differ from what lies there.
    std::optional<quint32> crc;
    std::optional<quint64> size;
    std::optional<quint32> sizeField;
    std::optional<quint32> packedField;
    std::optional<quint32> headerField;
};

class ZipBuilder
{
public:
    ZipBuilder() = default;
    ZipBuilder(std::initializer_list<ZipEntry> entries);

    void add(const ZipEntry &entry);
    // Names the entry in the directory only: its data is somebody else's.
    void addToDirectory(const ZipEntry &entry, quint32 header);
    // What lies between two members, or before the first.
    void addBytes(const QByteArray &bytes) { m_data += bytes; }

    QByteArray bytes() const;
    // With the record of archives with very many members.
    QByteArray wideBytes() const;

    // What the end says, where it is not the truth.
    std::optional<quint32> count;
    std::optional<quint32> directorySize;
    std::optional<quint32> directoryAt;
    quint16 disk = 0;
    QByteArray comment;

private:
    QByteArray end(bool wide) const;

    QByteArray m_data;
    QByteArray m_directory;
    int m_count = 0;
};

namespace ZipBytes
{
QByteArray number(quint64 value, int bytes);
QByteArray field(quint16 kind, const QByteArray &content);
quint32 sum(const QByteArray &content);
// Without the header and the sum that belong to another format.
QByteArray deflated(const QByteArray &content);
} // namespace ZipBytes
