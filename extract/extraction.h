#pragma once

#include <string>

namespace Extract
{
struct Order {
    std::string password; // empty for none
    std::string archive;
    std::string folder;
};

// Either the folder holds the whole archive afterwards, or a Refusal is thrown and the folder is
// what it was before, or gone if there was nothing in it.
void extract(const Order &order);
} // namespace Extract
