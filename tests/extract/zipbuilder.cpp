#include "extract/zipbuilder.h"

using ZipBytes::number;

namespace
{
// From the version needed to the length of the extra field, which both headers have.
QByteArray commonPart(const ZipEntry &entry, int extra)
{
    const quint64 size = entry.size.value_or(static_cast<quint64>(entry.content.size()));
    const auto packed = static_cast<quint64>(entry.content.size());
    return number(20, 2) + number(entry.flags, 2) + number(entry.method, 2) +
           number(entry.time, 2) + number(entry.date, 2) +
           number(entry.crc.value_or(ZipBytes::sum(entry.content)), 4) +
           number(entry.packedField.value_or(static_cast<quint32>(packed)), 4) +
           number(entry.sizeField.value_or(static_cast<quint32>(size)), 4) +
           number(static_cast<quint64>(entry.name.size()), 2) +
           number(static_cast<quint64>(extra), 2);
}
} // namespace

QByteArray ZipBytes::number(quint64 value, int bytes)
{
    QByteArray out;
    for (; bytes > 0; --bytes) {
        out += static_cast<char>(value & 0xFF);
        value >>= 8;
    }
    return out;
}

QByteArray ZipBytes::field(quint16 kind, const QByteArray &content)
{
    return number(kind, 2) + number(static_cast<quint64>(content.size()), 2) + content;
}

quint32 ZipBytes::sum(const QByteArray &content)
{
    quint32 sum = 0xFFFFFFFF;
    for (const char byte : content) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            sum = sum >> 1 ^ ((sum & 1) != 0 ? 0xEDB88320 : 0);
        }
    }
    return ~sum;
}

QByteArray ZipBytes::deflated(const QByteArray &content)
{
    constexpr int before = 4 + 2;
    constexpr int behind = 4;
    const QByteArray packed = qCompress(content);
    return packed.mid(before, packed.size() - before - behind);
}

ZipEntry ZipEntry::deflated(const QByteArray &name, const QByteArray &content)
{
    ZipEntry entry(name, ZipBytes::deflated(content));
    entry.method = 8;
    entry.crc = ZipBytes::sum(content);
    entry.size = static_cast<quint64>(content.size());
    return entry;
}

ZipEntry ZipEntry::onUnix(const QByteArray &name, quint32 mode, const QByteArray &content)
{
    ZipEntry entry(name, content);
    entry.madeBy = 3 << 8 | 30;
    entry.attributes = mode << 16;
    return entry;
}

ZipBuilder::ZipBuilder(std::initializer_list<ZipEntry> entries)
{
    for (const ZipEntry &entry : entries) {
        add(entry);
    }
}

void ZipBuilder::add(const ZipEntry &entry)
{
    const auto header = static_cast<quint32>(m_data.size());
    m_data += "PK\3\4" + commonPart(entry, entry.localExtra.size()) + entry.name +
              entry.localExtra + entry.content;
    addToDirectory(entry, header);
}

void ZipBuilder::addToDirectory(const ZipEntry &entry, quint32 header)
{
    m_directory += "PK\1\2" + number(entry.madeBy, 2) + commonPart(entry, entry.extra.size()) +
                   number(0, 2 + 2 + 2) + number(entry.attributes, 4) +
                   number(entry.headerField.value_or(header), 4) + entry.name + entry.extra;
    ++m_count;
}

QByteArray ZipBuilder::end(bool wide) const
{
    const auto members = wide ? 0xFFFF : count.value_or(static_cast<quint32>(m_count));
    const auto size = static_cast<quint32>(m_directory.size());
    const auto at = static_cast<quint32>(m_data.size());
    return "PK\5\6" + number(disk, 2) + number(0, 2) + number(members, 2) + number(members, 2) +
           number(wide ? 0xFFFFFFFF : directorySize.value_or(size), 4) +
           number(wide ? 0xFFFFFFFF : directoryAt.value_or(at), 4) +
           number(static_cast<quint64>(comment.size()), 2) + comment;
}

QByteArray ZipBuilder::bytes() const
{
    return m_data + m_directory + end(false);
}

QByteArray ZipBuilder::wideBytes() const
{
    const auto members = count.value_or(static_cast<quint32>(m_count));
    const QByteArray record = "PK\6\6" + number(44, 8) + number(45, 2) + number(45, 2) +
                              number(0, 8) + number(members, 8) + number(members, 8) +
                              number(static_cast<quint64>(m_directory.size()), 8) +
                              number(static_cast<quint64>(m_data.size()), 8);
    const QByteArray locator = "PK\6\7" + number(0, 4) +
                               number(static_cast<quint64>(m_data.size() + m_directory.size()), 8) +
                               number(1, 4);
    return m_data + m_directory + record + locator + end(true);
}
