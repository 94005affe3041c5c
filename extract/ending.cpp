#include "extract/ending.h"

#include "extract/bytes.h"
#include "extract/bytesource.h"
#include "extract/refusal.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace Extract
{
namespace
{
constexpr std::size_t endSize = 22;
constexpr std::size_t longestComment = 0xFFFF;
constexpr std::size_t locatorSize = 20;
constexpr std::size_t wideEndSize = 56;
constexpr std::uint32_t endMark = 0x06054B50;
constexpr std::uint32_t locatorMark = 0x07064B50;
constexpr std::uint32_t wideEndMark = 0x06064B50;

template<std::size_t Size>
std::optional<std::array<unsigned char, Size>> bytesAt(const ByteSource &archive,
                                                       std::uint64_t place)
{
    std::array<unsigned char, Size> bytes{};
    if (archive.readAt(place, bytes.data(), Size) < Size) {
        return std::nullopt;
    }
    return bytes;
}

std::uint64_t placeOfEnd(const ByteSource &archive)
{
    const std::uint64_t size = archive.size();
    const auto searched =
        static_cast<std::size_t>(std::min<std::uint64_t>(size, endSize + longestComment));
    std::vector<unsigned char> tail(searched);
    const std::size_t got = archive.readAt(size - searched, tail.data(), searched);
    for (std::size_t behind = endSize; behind <= got; ++behind) {
        const unsigned char *end = tail.data() + (got - behind);
        // The mark may stand in a comment by chance; then what it says would lead past the end.
        if (number32(end) == endMark && number16(end + 20) <= behind - endSize) {
            return size - searched + (got - behind);
        }
    }
    throw Refusal("is no zip archive, or was cut short");
}

bool isAt(const ByteSource &archive, std::uint64_t place, std::uint32_t mark)
{
    const auto bytes = bytesAt<4>(archive, place);
    return bytes && number32(bytes->data()) == mark;
}

// The record of archives with more members or bytes than the first format holds.
std::optional<std::uint64_t> placeOfWideEnd(const ByteSource &archive, std::uint64_t end)
{
    if (end < locatorSize + wideEndSize) {
        return std::nullopt;
    }
    const auto locator = bytesAt<locatorSize>(archive, end - locatorSize);
    if (!locator || number32(locator->data()) != locatorMark) {
        return std::nullopt;
    }
    const std::uint64_t said = number64(locator->data() + 8);
    if (said <= end - locatorSize - wideEndSize && isAt(archive, said, wideEndMark)) {
        return said;
    }
    const std::uint64_t usual = end - locatorSize - wideEndSize;
    if (isAt(archive, usual, wideEndMark)) {
        return usual;
    }
    throw Refusal("is damaged: its zip64 record is missing");
}

// Where the directory lies, which has to end before what tells of it.
void locate(const ByteSource &archive, std::uint64_t said, std::uint64_t end, Ending &ending)
{
    if (ending.size > end || said > end - ending.size) {
        throw Refusal("is damaged: its directory does not lie in it");
    }
    const bool asSaid =
        ending.size == 0 || ending.size + said == end || isAt(archive, said, entryMark);
    ending.at = asSaid ? said : end - ending.size;
    ending.start = ending.at - said;
}
} // namespace

Ending readEnding(const ByteSource &archive)
{
    const std::uint64_t end = placeOfEnd(archive);
    const auto bytes = bytesAt<endSize>(archive, end);
    if (!bytes) {
        throw Refusal("cannot be read to its end");
    }
    if (number16(bytes->data() + 4) != number16(bytes->data() + 6)) {
        throw Refusal("is one part of several");
    }
    Ending ending;
    const std::optional<std::uint64_t> wideEnd = placeOfWideEnd(archive, end);
    if (!wideEnd) {
        ending.count = number16(bytes->data() + 10);
        ending.size = number32(bytes->data() + 12);
        locate(archive, number32(bytes->data() + 16), end, ending);
        return ending;
    }
    const auto wide = bytesAt<wideEndSize>(archive, *wideEnd);
    if (!wide) {
        throw Refusal("cannot be read to its end");
    }
    ending.count = number64(wide->data() + 32);
    ending.countIsWhole = true;
    ending.size = number64(wide->data() + 40);
    locate(archive, number64(wide->data() + 48), *wideEnd, ending);
    return ending;
}
} // namespace Extract
