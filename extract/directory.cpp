#include "extract/directory.h"

#include "extract/bytes.h"
#include "extract/bytesource.h"
#include "extract/ending.h"
#include "extract/extrafields.h"
#include "extract/membername.h"
#include "extract/refusal.h"
#include "extract/text.h"

#include <algorithm>

namespace Extract
{
namespace
{
constexpr std::size_t entrySize = 46;
// As much as is held in memory beside the members that are being unpacked.
constexpr std::uint64_t mostMembers = 400000;
constexpr std::uint64_t mostNames = 24U << 20U;
// An entry with all that may belong to it is smaller.
constexpr std::size_t windowSize = 512U << 10U;

constexpr std::uint16_t encrypted = 0x0001;
constexpr std::uint16_t patch = 0x0020;
constexpr std::uint16_t stronglyEncrypted = 0x0040;
constexpr std::uint16_t utf8 = 0x0800;
constexpr std::uint16_t masked = 0x2000;

constexpr std::uint16_t stored = 0;
constexpr std::uint16_t deflated = 8;
constexpr std::uint16_t aesMark = 99;

enum class EntryKind { File, Folder, Other };

// By what the packer's system keeps of a file.
EntryKind entryKindOf(std::uint16_t madeBy, std::uint32_t attributes)
{
    constexpr int onUnix = 3;
    constexpr int onMac = 19;
    if ((madeBy >> 8) == onUnix || (madeBy >> 8) == onMac) {
        switch (attributes >> 16U & 0170000U) {
        case 0:
        case 0100000:
            return EntryKind::File;
        case 0040000:
            return EntryKind::Folder;
        default:
            return EntryKind::Other;
        }
    }
    constexpr std::uint32_t label = 0x08;
    constexpr std::uint32_t folder = 0x10;
    constexpr std::uint32_t link = 0x400;
    if ((attributes & (label | link)) != 0) {
        return EntryKind::Other;
    }
    return (attributes & folder) != 0 ? EntryKind::Folder : EntryKind::File;
}

class DirectoryReader
{
public:
    explicit DirectoryReader(const ByteSource &archive)
        : m_archive(archive)
        , m_ending(readEnding(archive))
        , m_window(windowSize)
    {
    }

    Directory all()
    {
        const std::uint64_t most = m_ending.size / entrySize;
        if (m_ending.countIsWhole && m_ending.count > most) {
            throw Refusal("is damaged: it says to have more members than it has");
        }
        if (m_ending.count > mostMembers) {
            throw Refusal("has more members than can be unpacked");
        }
        m_directory.at = m_ending.at;
        m_directory.members.reserve(static_cast<std::size_t>(std::min(most, m_ending.count)));
        m_directory.names.reserve(static_cast<std::size_t>(std::min(m_ending.size, mostNames)));
        m_place = m_ending.at;
        const std::uint64_t end = m_ending.at + m_ending.size;
        std::uint64_t count = 0;
        // What is no entry any more may be a signature of the whole.
        while (m_place + entrySize <= end && number32(need(entrySize)) == entryMark) {
            readEntry(end);
            ++count;
        }
        // Programs that do not know zip64 count on from 0.
        if (count != m_ending.count &&
            (m_ending.countIsWhole || (count & 0xFFFFU) != m_ending.count)) {
            throw Refusal("is damaged: its directory is not whole");
        }
        return std::move(m_directory);
    }

private:
    // So many bytes of the directory from the present place on.
    const unsigned char *need(std::size_t bytes)
    {
        if (m_place < m_windowAt || m_place + bytes > m_windowAt + m_windowFilled) {
            m_windowAt = m_place;
            m_windowFilled = m_archive.readAt(m_place, m_window.data(), m_window.size());
            if (m_windowFilled < bytes) {
                throw Refusal("is damaged: its directory ends too early");
            }
        }
        return m_window.data() + (m_place - m_windowAt);
    }

    void readEntry(std::uint64_t end)
    {
        const unsigned char *fixed = need(entrySize);
        const std::size_t name = number16(fixed + 28);
        const std::size_t extra = number16(fixed + 30);
        const std::size_t whole = entrySize + name + extra + number16(fixed + 32);
        if (whole > end - m_place) {
            throw Refusal("is damaged: its directory ends too early");
        }
        addMember(need(whole), name, extra);
        m_place += whole;
    }

    void addMember(const unsigned char *entry, std::size_t nameLength, std::size_t extraLength)
    {
        const std::string_view bytes = textOf(entry + entrySize, nameLength);
        constexpr std::uint32_t elsewhere = 0xFFFFFFFF;
        ExtraContext context;
        context.size = number32(entry + 24) == elsewhere;
        context.packedSize = number32(entry + 20) == elsewhere;
        context.header = number32(entry + 42) == elsewhere;
        context.name = bytes;
        const ExtraFields extra =
            readExtraFields(entry + entrySize + nameLength, extraLength, context);

        Member member;
        member.flags = number16(entry + 8);
        const bool inUtf8 = (member.flags & utf8) != 0;
        std::string name =
            extra.utf8Name ? memberName(*extra.utf8Name, true) : memberName(bytes, inUtf8);
        member.method = number16(entry + 10);
        member.time = number16(entry + 12);
        member.date = number16(entry + 14);
        member.crc = number32(entry + 16);
        member.packedSize = extra.packedSize.value_or(number32(entry + 20));
        member.size = extra.size.value_or(number32(entry + 24));
        member.header = extra.header.value_or(number32(entry + 42));
        member.modified = extra.modified ? *extra.modified : timeOf(member.date, member.time);
        setLock(member, extra, name);
        setKind(member, entry, name);
        setPlace(member, name);
        // The archive's own folder, as some programs write it.
        if (!(name.empty() && member.folder)) {
            keep(member, name);
        }
    }

    static void setLock(Member &member, const ExtraFields &extra, const std::string &name)
    {
        if ((member.flags & (patch | stronglyEncrypted | masked)) != 0) {
            throw Refusal(printable(name),
                          "it is packed or encrypted in a way that is not supported");
        }
        if (member.method == aesMark) {
            if (!extra.aes || extra.aesVersion < 1 || extra.aesVersion > 2 ||
                extra.aesStrength < 1 || extra.aesStrength > 3) {
                throw Refusal(printable(name), "its encryption is not told");
            }
            member.lock = Lock::Aes;
            member.aesVersion = extra.aesVersion;
            member.aesStrength = extra.aesStrength;
            member.method = extra.aesMethod;
        } else if ((member.flags & encrypted) != 0) {
            member.lock = Lock::Traditional;
        }
        if (member.method != stored && member.method != deflated) {
            throw Refusal(printable(name), "it is packed by method " +
                                               std::to_string(member.method) +
                                               ", only deflate is supported");
        }
    }

    static void setKind(Member &member, const unsigned char *entry, std::string &name)
    {
        const std::uint16_t madeBy = number16(entry + 4);
        const std::uint32_t attributes = number32(entry + 38);
        const EntryKind kind = entryKindOf(madeBy, attributes);
        if (kind == EntryKind::Other) {
            throw Refusal(printable(name), "it is a link, a device or another special entry");
        }
        const bool named = name.empty() || name.back() == '/';
        member.folder = named || (kind == EntryKind::Folder && member.size == 0);
        if (member.folder && member.size != 0) {
            throw Refusal(printable(name), "a folder cannot have a content");
        }
        constexpr std::uint32_t execute = 0100U << 16U;
        constexpr int onUnix = 3;
        constexpr int onMac = 19;
        member.executable = ((madeBy >> 8) == onUnix || (madeBy >> 8) == onMac) &&
                            (attributes & execute) != 0 && !member.folder;
    }

    void setPlace(Member &member, const std::string &name) const
    {
        // What deflate can make of so many bytes, at most.
        constexpr std::uint64_t mostTimes = 1032;
        const bool possible = member.method == stored
                                  ? member.size <= member.packedSize
                                  : member.size / mostTimes <= member.packedSize;
        if (!possible) {
            throw Refusal(printable(name), "it says to be larger than its data can hold");
        }
        if (member.header >= m_ending.at - m_ending.start ||
            member.packedSize >= m_ending.at - m_ending.start - member.header) {
            throw Refusal(printable(name), "its data does not lie in the archive");
        }
        member.header += m_ending.start;
    }

    void keep(Member &member, std::string &name)
    {
        if (member.folder && name.back() == '/') {
            name.pop_back();
        }
        const std::string refusal = refusalOfName(name);
        if (!refusal.empty()) {
            throw Refusal(printable(name), refusal);
        }
        if (m_directory.members.size() >= mostMembers ||
            m_directory.names.size() + name.size() > mostNames) {
            throw Refusal("has more members than can be unpacked");
        }
        member.nameAt = static_cast<std::uint32_t>(m_directory.names.size());
        member.nameLength = static_cast<std::uint16_t>(name.size());
        m_directory.names += name;
        m_directory.members.push_back(member);
    }

    const ByteSource &m_archive;
    const Ending m_ending;
    Directory m_directory;
    std::vector<unsigned char> m_window;
    std::uint64_t m_windowAt = 0;
    std::size_t m_windowFilled = 0;
    std::uint64_t m_place = 0;
};
} // namespace

Directory readDirectory(const ByteSource &archive)
{
    return DirectoryReader(archive).all();
}
} // namespace Extract
