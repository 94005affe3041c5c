#include "extract/membername.h"

#include "extract/casefold.h"
#include "extract/refusal.h"
#include "extract/text.h"

#include <algorithm>
#include <array>
#include <optional>

namespace Extract
{
namespace
{
// What file systems hold of one name, on Windows in units of UTF-16, elsewhere in bytes.
constexpr std::size_t longestPart = 255;
// What every system takes as a path, and what can be removed again.
constexpr std::size_t longestName = 3800;
constexpr std::ptrdiff_t deepestName = 200;

constexpr std::u32string_view forbidden = U"<>:\"|?*";

bool isControl(char32_t letter)
{
    return letter < 0x20 || (letter >= 0x7F && letter < 0xA0);
}

// Windows takes the raised digits for digits.
bool isPortNumber(char32_t letter)
{
    return (letter >= U'0' && letter <= U'9') || letter == 0xB9 || letter == 0xB2 || letter == 0xB3;
}

// Whatever stands behind the first dot, Windows opens the device.
bool isDevice(std::u32string_view part)
{
    std::u32string name(part.substr(0, part.find(U'.')));
    name.erase(name.find_last_not_of(U' ') + 1);
    std::transform(name.begin(), name.end(), name.begin(), capital);
    constexpr std::array<std::u32string_view, 7> devices = {U"CON",    U"PRN",     U"AUX",   U"NUL",
                                                            U"CONIN$", U"CONOUT$", U"CLOCK$"};
    if (std::find(devices.begin(), devices.end(), name) != devices.end()) {
        return true;
    }
    const std::u32string_view port = std::u32string_view(name).substr(0, 3);
    return name.size() == 4 && (port == U"COM" || port == U"LPT") && isPortNumber(name[3]);
}

std::size_t unitsOf(std::u32string_view part)
{
    return part.size() + static_cast<std::size_t>(std::count_if(
                             part.begin(), part.end(), [](char32_t c) { return c > 0xFFFF; }));
}

std::string refusalOfPart(std::u32string_view part)
{
    if (part.empty()) {
        return "a part of its name is empty";
    }
    if (part == U"..") {
        return "its name leads out of the folder by \"..\"";
    }
    if (part == U".") {
        return "a part of its name is \".\"";
    }
    if (part.back() == U' ' || part.back() == U'.') {
        return "a blank or a dot ends a part of its name, which Windows would cut off";
    }
    if (part.find_first_of(forbidden) != std::u32string_view::npos) {
        return "its name holds one of < > : \" | ? *, which Windows does not take";
    }
    if (isDevice(part)) {
        return "a part of its name is a device on Windows";
    }
    return unitsOf(part) > longestPart ? "a part of its name is too long" : "";
}

std::string refusalOfWhole(const std::u32string &text)
{
    if (std::any_of(text.begin(), text.end(), isControl)) {
        return "its name holds a control character";
    }
    if (text.empty() || text == U"/") {
        return "it has no name";
    }
    if (text.front() == U'/') {
        return "its name is an absolute path";
    }
    const char32_t first = capital(text.front());
    if (text.size() > 1 && text[1] == U':' && first >= U'A' && first <= U'Z') {
        return "its name begins with a drive";
    }
    return std::count(text.begin(), text.end(), U'/') > deepestName
               ? "its name lies too many folders deep"
               : "";
}
} // namespace

std::string memberName(std::string_view bytes, bool flaggedUtf8)
{
    std::string name(bytes);
    if (!fromUtf8(bytes)) {
        if (flaggedUtf8) {
            throw Refusal(printable(bytes), "its name is said to be UTF-8 and is not");
        }
        name = utf8FromCodePage437(bytes);
    }
    // Old programs for Windows separate by backslashes. No file name may hold one there.
    std::replace(name.begin(), name.end(), '\\', '/');
    while (name.compare(0, 2, "./") == 0) {
        name.erase(0, 2);
    }
    return name;
}

std::string refusalOfName(const std::string &name)
{
    const std::optional<std::u32string> text = fromUtf8(name);
    if (!text) {
        return "its name is no text";
    }
    if (name.size() > longestName) {
        return "its name is too long";
    }
    std::string refusal = refusalOfWhole(*text);
    std::u32string_view rest = *text;
    if (!rest.empty() && rest.back() == U'/') {
        rest.remove_suffix(1);
    }
    for (bool more = true; more && refusal.empty();) {
        const std::size_t slash = rest.find(U'/');
        refusal = refusalOfPart(rest.substr(0, slash));
        more = slash != std::u32string_view::npos;
        rest.remove_prefix(more ? slash + 1 : rest.size());
    }
    return refusal;
}
} // namespace Extract
