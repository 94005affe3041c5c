#pragma once

#include "extract/extraction.h"

#include <optional>
#include <string>
#include <vector>

namespace Extract
{
extern const char usage[];

// The arguments behind the program's name. Nothing where they are not exactly what the usage says.
std::optional<Order> orderOf(const std::vector<std::string> &arguments);

// The whole program. Returns its exit code.
int run(const std::vector<std::string> &arguments);
} // namespace Extract
