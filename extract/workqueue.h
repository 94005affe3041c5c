#pragma once

#include "extract/plan.h"

#include <cstddef>
#include <mutex>
#include <vector>

namespace Extract
{
// Hands a plan's files out to workers. Large ones begin first, each alone, and never take the last
// worker while there are small ones. These go by many at a time, for each worker from a part of its
// own, so that two seldom make files in the same folder, where the system lets one do it at a time.
class WorkQueue
{
public:
    WorkQueue(const Directory &directory, const Plan &plan, std::size_t workers,
              std::uint64_t largeFrom);

    // Members for this worker, whose last ones are done; empty when nothing is left.
    std::vector<std::uint32_t> next(std::size_t worker);

private:
    struct Part {
        std::size_t begin;
        std::size_t end;
    };

    bool mayTakeLarge() const;
    std::vector<std::uint32_t> someOf(Part &part, bool own);

    std::mutex m_mutex;
    std::vector<std::uint32_t> m_large; // the largest one is the last
    std::vector<std::uint32_t> m_small;
    std::vector<Part> m_parts;
    std::vector<bool> m_hasLarge;
};
} // namespace Extract
