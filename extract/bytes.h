#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// The numbers of an archive: little-endian, at any address.
namespace Extract
{
inline std::uint16_t number16(const unsigned char *bytes)
{
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

inline std::uint32_t number32(const unsigned char *bytes)
{
    return number16(bytes) | static_cast<std::uint32_t>(number16(bytes + 2)) << 16;
}

inline std::uint64_t number64(const unsigned char *bytes)
{
    return number32(bytes) | static_cast<std::uint64_t>(number32(bytes + 4)) << 32;
}

inline std::string_view textOf(const unsigned char *bytes, std::size_t length)
{
    return {static_cast<const char *>(static_cast<const void *>(bytes)), length};
}

inline void appendNumber(std::string &out, std::uint64_t number, int bytes)
{
    for (int i = 0; i < bytes; ++i) {
        out += static_cast<char>(number >> (8 * i) & 0xFF);
    }
}
} // namespace Extract
