#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Extract
{
// What of an entry did not fit into its fixed part, or was thought of later.
struct ExtraFields {
    std::optional<std::uint64_t> size;
    std::optional<std::uint64_t> packedSize;
    std::optional<std::uint64_t> header;
    std::optional<std::int64_t> modified;
    std::optional<std::string> utf8Name;
    bool aes = false;
    std::uint8_t aesVersion = 0;
    std::uint8_t aesStrength = 0;
    std::uint16_t aesMethod = 0;
};

// Which of the fixed numbers say that the whole ones stand here, and the name that a UTF-8 name
// belongs to.
struct ExtraContext {
    bool size = false;
    bool packedSize = false;
    bool header = false;
    std::string_view name;
};

// What is broken in them is passed over: it is missed where it is needed.
ExtraFields readExtraFields(const unsigned char *bytes, std::size_t length,
                            const ExtraContext &context);

// The time of the fixed part, which is that of the packer's clock; -1 where it is none.
std::int64_t timeOf(std::uint16_t date, std::uint16_t time);
} // namespace Extract
