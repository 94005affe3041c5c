#pragma once

#include <optional>
#include <string>
#include <string_view>

// Texts of archives, which come in several encodings.
namespace Extract
{
// Nothing when the bytes are no UTF-8.
std::optional<std::u32string> fromUtf8(std::string_view bytes);
void appendUtf8(std::string &out, char32_t character);

// What the first zip programs wrote names in.
std::string utf8FromCodePage437(std::string_view bytes);
// A text in an older encoding; nothing when it has other characters than that holds.
std::optional<std::string> inCodePage437(const std::u32string &text);
std::optional<std::string> inCodePage1252(const std::u32string &text);

// One line, whatever an archive calls its members.
std::string printable(std::string_view bytes);
} // namespace Extract
