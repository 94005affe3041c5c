#include "extract/text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace Extract
{
namespace
{
// The characters of the bytes from 128 on.
constexpr std::array<char16_t, 128> codePage437 = {
    0x00C7, 0x00FC, 0x00E9, 0x00E2, 0x00E4, 0x00E0, 0x00E5, 0x00E7, 0x00EA, 0x00EB, 0x00E8, 0x00EF,
    0x00EE, 0x00EC, 0x00C4, 0x00C5, 0x00C9, 0x00E6, 0x00C6, 0x00F4, 0x00F6, 0x00F2, 0x00FB, 0x00F9,
    0x00FF, 0x00D6, 0x00DC, 0x00A2, 0x00A3, 0x00A5, 0x20A7, 0x0192, 0x00E1, 0x00ED, 0x00F3, 0x00FA,
    0x00F1, 0x00D1, 0x00AA, 0x00BA, 0x00BF, 0x2310, 0x00AC, 0x00BD, 0x00BC, 0x00A1, 0x00AB, 0x00BB,
    0x2591, 0x2592, 0x2593, 0x2502, 0x2524, 0x2561, 0x2562, 0x2556, 0x2555, 0x2563, 0x2551, 0x2557,
    0x255D, 0x255C, 0x255B, 0x2510, 0x2514, 0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x255E, 0x255F,
    0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550, 0x256C, 0x2567, 0x2568, 0x2564, 0x2565, 0x2559,
    0x2558, 0x2552, 0x2553, 0x256B, 0x256A, 0x2518, 0x250C, 0x2588, 0x2584, 0x258C, 0x2590, 0x2580,
    0x03B1, 0x00DF, 0x0393, 0x03C0, 0x03A3, 0x03C3, 0x00B5, 0x03C4, 0x03A6, 0x0398, 0x03A9, 0x03B4,
    0x221E, 0x03C6, 0x03B5, 0x2229, 0x2261, 0x00B1, 0x2265, 0x2264, 0x2320, 0x2321, 0x00F7, 0x2248,
    0x00B0, 0x2219, 0x00B7, 0x221A, 0x207F, 0x00B2, 0x25A0, 0x00A0};

// The characters of the bytes from 128 to 159; the others are their own numbers.
constexpr std::array<char16_t, 32> codePage1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

struct Lead {
    std::size_t more;  // bytes that follow
    char32_t bits;     // of the first byte
    char32_t smallest; // character that needs so many bytes
};

std::optional<Lead> leadOf(unsigned char byte)
{
    if (byte < 0x80) {
        return Lead{0, byte, 0};
    }
    if (byte >= 0xC2 && byte < 0xE0) {
        return Lead{1, byte & 0x1FU, 0x80};
    }
    if (byte >= 0xE0 && byte < 0xF0) {
        return Lead{2, byte & 0x0FU, 0x800};
    }
    if (byte >= 0xF0 && byte < 0xF5) {
        return Lead{3, byte & 0x07U, 0x10000};
    }
    return std::nullopt;
}

bool isCharacter(char32_t character)
{
    return character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
}

// What terminals obey, the ends of lines, and what turns the direction of all that follows.
bool isCommand(char32_t character)
{
    const auto isWithin = [character](char32_t first, char32_t last) {
        return character >= first && character <= last;
    };
    return character < 0x20 || isWithin(0x7F, 0x9F) || isWithin(0x200E, 0x200F) ||
           isWithin(0x2028, 0x202E) || isWithin(0x2066, 0x2069);
}

template<std::size_t Size>
std::optional<std::string> inTable(const std::u32string &text,
                                   const std::array<char16_t, Size> &table, char32_t behind)
{
    std::string bytes;
    for (const char32_t character : text) {
        const auto *const found = std::find(table.begin(), table.end(), character);
        if (character < 0x80 || (character >= behind && character < 0x100)) {
            bytes += static_cast<char>(character);
        } else if (found != table.end()) {
            bytes += static_cast<char>(0x80 + (found - table.begin()));
        } else {
            return std::nullopt;
        }
    }
    return bytes;
}
} // namespace

std::optional<std::u32string> fromUtf8(std::string_view bytes)
{
    std::u32string text;
    text.reserve(bytes.size());
    for (std::size_t place = 0; place < bytes.size();) {
        const auto lead = leadOf(static_cast<unsigned char>(bytes[place]));
        if (!lead || bytes.size() - place <= lead->more) {
            return std::nullopt;
        }
        char32_t character = lead->bits;
        for (std::size_t i = 1; i <= lead->more; ++i) {
            const auto byte = static_cast<unsigned char>(bytes[place + i]);
            if ((byte & 0xC0U) != 0x80U) {
                return std::nullopt;
            }
            character = character << 6U | (byte & 0x3FU);
        }
        if (character < lead->smallest || !isCharacter(character)) {
            return std::nullopt;
        }
        text += character;
        place += lead->more + 1;
    }
    return text;
}

void appendUtf8(std::string &out, char32_t character)
{
    const auto part = [&out](char32_t bits) { out += static_cast<char>(bits); };
    if (character < 0x80) {
        part(character);
        return;
    }
    if (character < 0x800) {
        part(0xC0U | character >> 6U);
    } else {
        if (character < 0x10000) {
            part(0xE0U | character >> 12U);
        } else {
            part(0xF0U | character >> 18U);
            part(0x80U | (character >> 12U & 0x3FU));
        }
        part(0x80U | (character >> 6U & 0x3FU));
    }
    part(0x80U | (character & 0x3FU));
}

std::string utf8FromCodePage437(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        const auto number = static_cast<unsigned char>(byte);
        appendUtf8(text, number < 0x80 ? number : codePage437[number - 0x80U]);
    }
    return text;
}

std::optional<std::string> inCodePage437(const std::u32string &text)
{
    return inTable(text, codePage437, 0x100);
}

std::optional<std::string> inCodePage1252(const std::u32string &text)
{
    return inTable(text, codePage1252, 0xA0);
}

std::string printable(std::string_view bytes)
{
    std::string text;
    if (const auto characters = fromUtf8(bytes)) {
        for (const char32_t character : *characters) {
            appendUtf8(text, isCommand(character) ? U'?' : character);
        }
        return text;
    }
    for (const char byte : bytes) {
        const auto number = static_cast<unsigned char>(byte);
        text += number < 0x20 || number >= 0x7F ? '?' : byte;
    }
    return text;
}
} // namespace Extract
