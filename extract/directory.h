#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Extract
{
class ByteSource;

enum class Lock : std::uint8_t { None, Traditional, Aes };

// One entry of an archive's directory. There may be hundreds of thousands.
struct Member {
    std::uint64_t header = 0; // where its own header lies
    std::uint64_t end = 0;    // where the next thing begins
    std::uint64_t packedSize = 0;
    std::uint64_t size = 0;
    std::int64_t modified = -1; // seconds since 1970; negative where nobody knows
    std::uint32_t crc = 0;
    std::uint32_t nameAt = 0;
    std::uint16_t nameLength = 0;
    std::uint16_t method = 0;
    std::uint16_t flags = 0;
    std::uint16_t time = 0;
    std::uint16_t date = 0;
    std::uint8_t aesStrength = 0;
    std::uint8_t aesVersion = 0;
    Lock lock = Lock::None;
    bool folder = false;
    bool executable = false;

    // AES in its second version has an authentication code instead of a sum.
    bool hasSum() const { return lock != Lock::Aes || aesVersion == 1; }
};

// What an archive holds, by its own words. All names are fit to be made.
class Directory
{
public:
    std::string nameOf(const Member &member) const
    {
        return names.substr(member.nameAt, member.nameLength);
    }
    std::string_view nameViewOf(const Member &member) const
    {
        return std::string_view(names).substr(member.nameAt, member.nameLength);
    }

    std::vector<Member> members;
    std::string names; // one behind the other, folders without the "/" at the end
    std::uint64_t at = 0;
};

// Throws a Refusal for what is no archive, or none that may be unpacked.
Directory readDirectory(const ByteSource &archive);
} // namespace Extract
