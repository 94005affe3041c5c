#include "extract/staging.h"

#include "extract/refusal.h"

#include <algorithm>
#include <random>
#include <string_view>

namespace Extract
{
namespace
{
constexpr std::string_view beginning = ".unzip-";
constexpr std::string_view folderEnding = ".part";
constexpr std::string_view lockEnding = ".lock";
constexpr std::string_view digits = "0123456789abcdef";
constexpr std::size_t digitCount = 16;

std::string freshMark()
{
    std::random_device source;
    std::string mark(beginning);
    for (std::size_t i = 0; i < digitCount; ++i) {
        mark += digits[source() % digits.size()];
    }
    return mark;
}

// The common part of a folder's and a lock's name; empty for what is neither.
std::string markOf(const std::string &name)
{
    const std::size_t length = beginning.size() + digitCount;
    if (name.size() != length + folderEnding.size() ||
        name.compare(0, beginning.size(), beginning) != 0) {
        return {};
    }
    const std::string_view ending = std::string_view(name).substr(length);
    const std::string mark = name.substr(0, length);
    const bool ours = mark.find_first_not_of(digits, beginning.size()) == std::string::npos;
    return ours && (ending == folderEnding || ending == lockEnding) ? mark : std::string();
}
} // namespace

Staging::Staging(const Folder &parent)
    : m_parent(parent)
{
    // The lock stands before the folder does, so that none is ever seen without.
    constexpr int mostTries = 20;
    for (int tries = 0; tries < mostTries; ++tries) {
        const std::string mark = freshMark();
        m_lock = std::make_unique<FileLock>(m_parent.pathOf(mark + std::string(lockEnding)));
        m_name = mark + std::string(folderEnding);
        if (m_lock->isTaken() && m_parent.make(m_name)) {
            return;
        }
    }
    throw NotWritten("nothing can be locked in the folder around its own");
}

Staging::~Staging()
{
    m_parent.removeTree(m_name);
}

void Staging::removeLeftovers(const Folder &parent)
{
    for (const std::string &name : parent.namesIn({})) {
        const std::string mark = markOf(name);
        if (mark.empty()) {
            continue;
        }
        const FileLock lock(parent.pathOf(mark + std::string(lockEnding)));
        if (lock.isTaken() && parent.kindOf(mark + std::string(folderEnding)) == Kind::Folder) {
            parent.removeTree(mark + std::string(folderEnding));
        }
    }
}
} // namespace Extract
