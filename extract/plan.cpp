#include "extract/plan.h"

#include "extract/casefold.h"
#include "extract/refusal.h"
#include "extract/text.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace Extract
{
namespace
{
constexpr std::size_t localHeaderSize = 30;
// As many as there may be members. Each takes a block of the disk, which no size tells of, and a
// few hundred can stand in one name.
constexpr std::size_t mostFolders = 400000;

// The names as Windows compares them, in an order in which a folder is followed by what is in it.
class SortedNames
{
public:
    explicit SortedNames(const Directory &directory)
        : m_directory(directory)
        , m_order(directory.members.size())
    {
        m_places.reserve(directory.members.size() + 1);
        m_folded.reserve(directory.names.size());
        for (const Member &member : directory.members) {
            m_places.push_back(m_folded.size());
            append(directory.nameViewOf(member));
        }
        m_places.push_back(m_folded.size());
        std::iota(m_order.begin(), m_order.end(), 0U);
        std::sort(m_order.begin(), m_order.end(), [this](std::uint32_t one, std::uint32_t other) {
            const int difference = foldedOf(one).compare(foldedOf(other));
            return difference != 0 ? difference < 0 : one < other;
        });
    }

    const std::vector<std::uint32_t> &order() const { return m_order; }

    std::string_view foldedOf(std::uint32_t member) const
    {
        return std::string_view(m_folded).substr(m_places[member],
                                                 m_places[member + 1] - m_places[member]);
    }

    std::string_view nameOf(std::uint32_t member) const
    {
        return m_directory.nameViewOf(m_directory.members[member]);
    }

    bool isFolder(std::uint32_t member) const { return m_directory.members[member].folder; }

private:
    void append(std::string_view name)
    {
        const bool plain = std::all_of(name.begin(), name.end(),
                                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
        if (plain) {
            for (const char c : name) {
                // Below every other character, so that nothing comes between a folder and its
                // files.
                m_folded +=
                    c == '/' ? '\1' : static_cast<char>(capital(static_cast<unsigned char>(c)));
            }
            return;
        }
        for (const char32_t c : fromUtf8(name).value_or(std::u32string())) {
            appendUtf8(m_folded, c == U'/' ? U'\1' : capital(c));
        }
    }

    const Directory &m_directory;
    std::string m_folded;
    std::vector<std::size_t> m_places;
    std::vector<std::uint32_t> m_order;
};

// How many of the first parts two names have in common as Windows sees them, by the length of these
// parts in the second name.
std::size_t partsInCommon(std::string_view one, std::string_view other)
{
    const auto ends = std::mismatch(one.begin(), one.end(), other.begin(), other.end());
    const auto same = static_cast<std::size_t>(ends.first - one.begin());
    const auto isBoundary = [same](std::string_view name) {
        return name.size() == same || name[same] == '\1';
    };
    std::size_t parts = static_cast<std::size_t>(std::count(one.begin(), ends.first, '\1'));
    return isBoundary(one) && isBoundary(other) ? parts + 1 : parts;
}

// The first so many parts of a name.
std::string_view leadingParts(std::string_view name, std::size_t parts)
{
    std::size_t end = 0;
    for (std::size_t part = 0; part < parts && end < name.size(); ++part) {
        end = std::min(name.find('/', end + (part > 0 ? 1 : 0)), name.size());
    }
    return name.substr(0, end);
}

std::size_t partsOf(std::string_view name)
{
    return static_cast<std::size_t>(std::count(name.begin(), name.end(), '/')) + 1;
}

// One name behind another in that order.
void compareNeighbours(const SortedNames &names, std::uint32_t before, std::uint32_t now,
                       std::size_t common)
{
    const std::string name(names.nameOf(now));
    if (leadingParts(names.nameOf(before), common) != leadingParts(names.nameOf(now), common)) {
        throw Refusal(name, "its name differs from that of " + std::string(names.nameOf(before)) +
                                " only in capital and small letters");
    }
    if (names.foldedOf(before) == names.foldedOf(now)) {
        throw Refusal(name, "it is in the archive twice");
    }
    if (common == partsOf(names.nameOf(before)) && !names.isFolder(before)) {
        throw Refusal(name, "it needs a folder where the archive has a file");
    }
}

std::vector<FolderName> foldersOf(const Directory &directory)
{
    const SortedNames names(directory);
    std::vector<FolderName> folders;
    const std::uint32_t *before = nullptr;
    for (const std::uint32_t &now : names.order()) {
        const std::size_t common =
            before == nullptr ? 0 : partsInCommon(names.foldedOf(*before), names.foldedOf(now));
        if (before != nullptr) {
            compareNeighbours(names, *before, now, common);
        }
        const std::string_view name = names.nameOf(now);
        const std::size_t parts = partsOf(name) - (names.isFolder(now) ? 0 : 1);
        if (parts > common && parts - common > mostFolders - folders.size()) {
            throw Refusal("has more folders than can be made");
        }
        for (std::size_t part = common; part < parts; ++part) {
            folders.push_back({directory.members[now].nameAt,
                               static_cast<std::uint32_t>(leadingParts(name, part + 1).size())});
        }
        before = &now;
    }
    return folders;
}

// Bytes that two members share are how a few kilobytes become a full disk.
void setEnds(Directory &directory, const std::vector<std::uint32_t> &byPlace)
{
    std::uint64_t end = directory.at;
    for (auto each = byPlace.rbegin(); each != byPlace.rend(); ++each) {
        Member &member = directory.members[*each];
        member.end = end;
        if (end < localHeaderSize || member.header > end - localHeaderSize ||
            member.packedSize > end - localHeaderSize - member.header) {
            throw Refusal(directory.nameOf(member), "its data and another member's overlap");
        }
        end = member.header;
    }
}

std::uint64_t roomOf(const Directory &directory)
{
    // Whole blocks, as nearly every disk has them.
    constexpr std::uint64_t block = 4096;
    constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t room = 0;
    for (const Member &member : directory.members) {
        const std::uint64_t own =
            member.size > most - block ? most : (member.size + block - 1) / block * block;
        room = own > most - room ? most : room + own;
    }
    return room;
}
} // namespace

Plan planOf(Directory &directory)
{
    if (directory.members.empty()) {
        throw Refusal("has no members");
    }
    Plan plan;
    plan.folders = foldersOf(directory);
    std::vector<std::uint32_t> byPlace(directory.members.size());
    std::iota(byPlace.begin(), byPlace.end(), 0U);
    std::stable_sort(byPlace.begin(), byPlace.end(), [&](std::uint32_t one, std::uint32_t other) {
        return directory.members[one].header < directory.members[other].header;
    });
    setEnds(directory, byPlace);
    for (const std::uint32_t member : byPlace) {
        if (!directory.members[member].folder) {
            plan.files.push_back(member);
        }
    }
    plan.room = roomOf(directory);
    return plan;
}
} // namespace Extract
