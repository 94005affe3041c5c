#pragma once

#include <cstdint>

namespace Extract
{
class ByteSource;

// What an entry of the directory begins with.
constexpr std::uint32_t entryMark = 0x02014B50;

// What the end of an archive says of its directory.
struct Ending {
    std::uint64_t count = 0;
    bool countIsWhole = false; // otherwise it is only known modulo 65536
    std::uint64_t size = 0;    // of the directory
    std::uint64_t at = 0;      // where it lies in the file
    std::uint64_t start = 0;   // where the archive begins: a program may stand before it
};

Ending readEnding(const ByteSource &archive);
} // namespace Extract
