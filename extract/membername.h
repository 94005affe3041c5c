#pragma once

#include <string>
#include <string_view>

namespace Extract
{
// A member's name as the archive holds it, in UTF-8 with "/" between its parts. Without the flag
// for UTF-8 it may still be that, which some programs write without saying so; otherwise it is in
// the code page of the first zip programs. A leading "./" is gone. Throws for a flagged name that
// is no UTF-8.
std::string memberName(std::string_view bytes, bool flaggedUtf8);

// Why no such file may be made, on every system alike: players are on Windows. Empty where it may.
// A folder's name ends in "/".
std::string refusalOfName(const std::string &name);
} // namespace Extract
