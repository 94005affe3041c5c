#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Extract
{
class ByteSource;

struct JudgedMember {
    std::string name; // with "/" between its parts
    std::uint64_t size = 0;
    bool folder = false;
    bool encrypted = false;
};

// What the extractor would do with an archive.
struct Verdict {
    bool accepted = false;
    // Why not: empty where it is the archive as a whole.
    std::string member;
    std::string reason;
    // In the order of the archive's directory; none where that cannot be read.
    std::vector<JudgedMember> members;
};

// By the directory alone: names, kinds, sizes, what stands in each other's way.
Verdict judged(const ByteSource &archive);
Verdict judged(const std::string &path);

// With every member's content, which is unpacked with this password (or none) to nowhere.
Verdict verified(const ByteSource &archive, const std::string &password);
Verdict verified(const std::string &path, const std::string &password);
} // namespace Extract
