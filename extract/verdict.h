#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
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

// So many bytes of a file are shown to who looks at it.
constexpr std::size_t lookedAt = 1024;
// Takes a file's name and how it begins. Called by one thread at a time, in no order.
using Look = std::function<void(const std::string &member, const std::string &beginning)>;

// With every member's content, which is unpacked with this password (or none) to nowhere. Each file
// is shown once it was found right.
Verdict verified(const ByteSource &archive, const std::string &password, const Look &look = {});
Verdict verified(const std::string &path, const std::string &password, const Look &look = {});
} // namespace Extract
