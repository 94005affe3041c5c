#pragma once

#include <string>
#include <vector>

// Where texts meet the system. Inside, every text is UTF-8.
namespace Extract
{
// Why the last call of the system failed.
std::string lastError();

// The password as older programs of this system would have packed with it; empty where the system
// has no other encoding than UTF-8.
std::vector<std::string> inSystemCodePages(const std::string &text);

#ifdef _WIN32
std::wstring wide(const std::string &text);
std::string narrow(const std::wstring &text);
// The whole path in the form that may be longer than 260 characters.
std::wstring longPath(const std::string &path);
#endif
} // namespace Extract
