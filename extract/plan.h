#pragma once

#include "extract/directory.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Extract
{
// What is to be done for a whole archive, once nothing speaks against it.
struct Plan {
    // Every folder that is needed, the outer ones first.
    std::vector<std::string> folders;
    // Members that are files, in the order in which their data lies in the archive.
    std::vector<std::uint32_t> files;
    // Room on the disk.
    std::uint64_t room = 0;
};

// Throws a Refusal where members stand in each other's way. Tells the members where their data has
// to end.
Plan planOf(Directory &directory);
} // namespace Extract
