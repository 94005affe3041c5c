#pragma once

#include "extract/directory.h"

#include <cstdint>
#include <vector>

namespace Extract
{
// A folder is the beginning of some member's name, and lies among the names.
struct FolderName {
    std::uint32_t at;
    std::uint32_t length;
};

// What is to be done for a whole archive, once nothing speaks against it.
struct Plan {
    // Every folder that is needed, the outer ones first.
    std::vector<FolderName> folders;
    // Members that are files, in the order in which their data lies in the archive.
    std::vector<std::uint32_t> files;
    // Room on the disk.
    std::uint64_t room = 0;
};

// Throws a Refusal where members stand in each other's way. Tells the members where their data has
// to end.
Plan planOf(Directory &directory);
} // namespace Extract
