#include "extract/extrafields.h"

#include "extract/bytes.h"
#include "extract/text.h"

#include <ctime>
#include <libdeflate.h>

namespace Extract
{
namespace
{
constexpr std::uint16_t zip64 = 0x0001;
constexpr std::uint16_t windowsTimes = 0x000A;
constexpr std::uint16_t unixTimes = 0x5455;
constexpr std::uint16_t unicodeName = 0x7075;
constexpr std::uint16_t aesEncryption = 0x9901;

void readZip64(const unsigned char *bytes, std::size_t length, const ExtraContext &context,
               ExtraFields &fields)
{
    const auto next = [&](bool there, std::optional<std::uint64_t> &number) {
        if (there && length >= 8) {
            number = number64(bytes);
            bytes += 8;
            length -= 8;
        }
    };
    next(context.size, fields.size);
    next(context.packedSize, fields.packedSize);
    next(context.header, fields.header);
}

// Counted in tenths of microseconds since 1601.
void readWindowsTimes(const unsigned char *bytes, std::size_t length, ExtraFields &fields)
{
    constexpr std::uint64_t second = 10000000;
    constexpr std::int64_t until1970 = 11644473600;
    constexpr std::size_t modified = 8;
    if (length >= 16 && number16(bytes + 4) == 1 && number16(bytes + 6) >= 8) {
        fields.modified =
            static_cast<std::int64_t>(number64(bytes + modified) / second) - until1970;
    }
}

void readUnixTimes(const unsigned char *bytes, std::size_t length, ExtraFields &fields)
{
    if (length >= 5 && (bytes[0] & 1U) != 0) {
        fields.modified = static_cast<std::int32_t>(number32(bytes + 1));
    }
}

void readUnicodeName(const unsigned char *bytes, std::size_t length, std::string_view name,
                     ExtraFields &fields)
{
    constexpr std::size_t before = 5;
    // Programs that do not know this field rename the member and leave the field as it was.
    if (length > before && bytes[0] == 1 &&
        number32(bytes + 1) == libdeflate_crc32(0, name.data(), name.size())) {
        std::string text(textOf(bytes + before, length - before));
        if (fromUtf8(text)) {
            fields.utf8Name = std::move(text);
        }
    }
}

void readAes(const unsigned char *bytes, std::size_t length, ExtraFields &fields)
{
    if (length >= 7 && bytes[2] == 'A' && bytes[3] == 'E') {
        fields.aes = true;
        fields.aesVersion = static_cast<std::uint8_t>(number16(bytes));
        fields.aesStrength = bytes[4];
        fields.aesMethod = number16(bytes + 5);
    }
}

void readField(std::uint16_t kind, const unsigned char *bytes, std::size_t length,
               const ExtraContext &context, ExtraFields &fields)
{
    switch (kind) {
    case zip64:
        readZip64(bytes, length, context, fields);
        break;
    case windowsTimes:
        readWindowsTimes(bytes, length, fields);
        break;
    case unixTimes:
        readUnixTimes(bytes, length, fields);
        break;
    case unicodeName:
        readUnicodeName(bytes, length, context.name, fields);
        break;
    case aesEncryption:
        readAes(bytes, length, fields);
        break;
    default:
        break;
    }
}
} // namespace

ExtraFields readExtraFields(const unsigned char *bytes, std::size_t length,
                            const ExtraContext &context)
{
    ExtraFields fields;
    while (length >= 4) {
        const std::size_t own = number16(bytes + 2);
        if (own > length - 4) {
            break;
        }
        readField(number16(bytes), bytes + 4, own, context, fields);
        bytes += 4 + own;
        length -= 4 + own;
    }
    return fields;
}

std::int64_t timeOf(std::uint16_t date, std::uint16_t time)
{
    std::tm parts{};
    parts.tm_year = (date >> 9) + 80;
    parts.tm_mon = (date >> 5 & 15) - 1;
    parts.tm_mday = date & 31;
    parts.tm_hour = time >> 11;
    parts.tm_min = time >> 5 & 63;
    parts.tm_sec = (time & 31) * 2;
    parts.tm_isdst = -1;
    if (parts.tm_mon < 0 || parts.tm_mon > 11 || parts.tm_mday < 1) {
        return -1;
    }
    return std::mktime(&parts);
}
} // namespace Extract
