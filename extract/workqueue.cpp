#include "extract/workqueue.h"

#include <algorithm>

namespace Extract
{
namespace
{
std::size_t countIn(const std::vector<bool> &flags)
{
    return static_cast<std::size_t>(std::count(flags.begin(), flags.end(), true));
}
} // namespace

WorkQueue::WorkQueue(const Directory &directory, const Plan &plan, std::size_t workers,
                     std::uint64_t largeFrom)
    : m_hasLarge(workers, false)
{
    // What making a file costs, in bytes unpacked in the same time.
    constexpr std::uint64_t ofMaking = 16384;
    const auto sizeOf = [&](std::uint32_t member) { return directory.members[member].size; };
    std::uint64_t all = 0;
    for (const std::uint32_t member : plan.files) {
        if (sizeOf(member) > largeFrom) {
            m_large.push_back(member);
        } else {
            m_small.push_back(member);
            all += sizeOf(member) + ofMaking;
        }
    }
    std::stable_sort(m_large.begin(), m_large.end(), [&](std::uint32_t one, std::uint32_t other) {
        return sizeOf(one) < sizeOf(other);
    });
    std::size_t begin = 0;
    std::uint64_t done = 0;
    for (std::size_t part = 1; part <= workers; ++part) {
        std::size_t end = begin;
        while (end < m_small.size() && (part == workers || done < all / workers * part)) {
            done += sizeOf(m_small[end++]) + ofMaking;
        }
        m_parts.push_back({begin, end});
        begin = end;
    }
}

bool WorkQueue::mayTakeLarge() const
{
    const bool smallLeft = std::any_of(m_parts.begin(), m_parts.end(),
                                       [](const Part &part) { return part.begin < part.end; });
    return !m_large.empty() &&
           (!smallLeft || m_parts.size() == 1 || countIn(m_hasLarge) + 1 < m_parts.size());
}

std::vector<std::uint32_t> WorkQueue::someOf(Part &part, bool own)
{
    constexpr std::size_t mostAtOnce = 32;
    const std::size_t count =
        std::min({mostAtOnce, part.end - part.begin, (part.end - part.begin) / 4 + 1});
    // From the end of another's part, which that one would come to last.
    const std::size_t first = own ? part.begin : part.end - count;
    (own ? part.begin : part.end) = own ? part.begin + count : first;
    const auto from = m_small.begin() + static_cast<std::ptrdiff_t>(first);
    return {from, from + static_cast<std::ptrdiff_t>(count)};
}

std::vector<std::uint32_t> WorkQueue::next(std::size_t worker)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_hasLarge[worker] = false;
    if (mayTakeLarge()) {
        m_hasLarge[worker] = true;
        const std::uint32_t largest = m_large.back();
        m_large.pop_back();
        return {largest};
    }
    Part &own = m_parts[worker];
    if (own.begin < own.end) {
        return someOf(own, true);
    }
    Part &fullest =
        *std::max_element(m_parts.begin(), m_parts.end(), [](const Part &one, const Part &other) {
            return one.end - one.begin < other.end - other.begin;
        });
    return fullest.begin < fullest.end ? someOf(fullest, false) : std::vector<std::uint32_t>();
}
} // namespace Extract
