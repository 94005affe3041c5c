#include "extract/packeddata.h"

#include "extract/bytes.h"
#include "extract/bytesource.h"
#include "extract/decryption.h"
#include "extract/refusal.h"

#include <algorithm>
#include <array>

namespace Extract
{
namespace
{
constexpr std::size_t headerSize = 30;
constexpr std::uint32_t headerMark = 0x04034B50;

class PlainData : public PackedData
{
public:
    PlainData(const ByteSource &archive, std::uint64_t place, std::uint64_t size)
        : m_archive(archive)
        , m_place(place)
        , m_left(size)
    {
    }

    std::size_t read(unsigned char *buffer, std::size_t bytes) override
    {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(bytes, m_left));
        if (m_archive.readAt(m_place, buffer, wanted) < wanted) {
            throw Refusal("the archive ends in its data");
        }
        m_place += wanted;
        m_left -= wanted;
        return wanted;
    }

private:
    const ByteSource &m_archive;
    std::uint64_t m_place;
    std::uint64_t m_left;
};
} // namespace

std::size_t lengthOfHeader(const unsigned char *header, std::size_t bytes, const Member &member)
{
    if (bytes < headerSize || number32(header) != headerMark) {
        throw Refusal("it is not where the directory says");
    }
    const std::size_t length = headerSize + number16(header + 26) + number16(header + 28);
    const std::uint64_t span = member.end - member.header;
    if (length > span || member.packedSize > span - length) {
        throw Refusal("its data and another member's overlap");
    }
    return length;
}

std::unique_ptr<PackedData> packedData(const ByteSource &archive, const Member &member,
                                       const std::string &password)
{
    std::array<unsigned char, headerSize> header{};
    const std::size_t read = archive.readAt(member.header, header.data(), headerSize);
    const std::uint64_t place = member.header + lengthOfHeader(header.data(), read, member);
    if (member.lock != Lock::None) {
        return decryptedData(archive, member, place, password);
    }
    return std::make_unique<PlainData>(archive, place, member.packedSize);
}
} // namespace Extract
