#include "extract/systemtext.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <cerrno>
#include <system_error>
#endif

namespace Extract
{
#ifdef _WIN32
std::string lastError()
{
    // The system's own words come in the player's language and code page, which nobody who reads a
    // report understands.
    const DWORD error = GetLastError();
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return "there is no such file or folder";
    case ERROR_ACCESS_DENIED:
        return "access is denied";
    case ERROR_SHARING_VIOLATION:
        return "another program has it open";
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return "the disk is full";
    default:
        return "Windows error " + std::to_string(error);
    }
}

std::wstring wide(const std::string &text)
{
    const int bytes = static_cast<int>(text.size());
    std::wstring result(text.size(), L'\0');
    const int units = MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, result.data(), bytes);
    result.resize(static_cast<std::size_t>(units));
    return result;
}

std::string narrow(const std::wstring &text)
{
    const int units = static_cast<int>(text.size());
    std::string result(text.size() * 3, '\0');
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, result.data(),
                                          static_cast<int>(result.size()), nullptr, nullptr);
    result.resize(static_cast<std::size_t>(bytes));
    return result;
}

std::wstring longPath(const std::string &path)
{
    const std::wstring given = wide(path);
    if (given.compare(0, 4, L"\\\\?\\") == 0) {
        return given;
    }
    std::wstring whole(GetFullPathNameW(given.c_str(), 0, nullptr, nullptr), L'\0');
    whole.resize(
        GetFullPathNameW(given.c_str(), static_cast<DWORD>(whole.size()), whole.data(), nullptr));
    if (whole.compare(0, 2, L"\\\\") == 0) {
        return L"\\\\?\\UNC" + whole.substr(1);
    }
    return L"\\\\?\\" + whole;
}

std::vector<std::string> inSystemCodePages(const std::string &text)
{
    const std::wstring units = wide(text);
    std::vector<std::string> results;
    for (const UINT page : {GetOEMCP(), GetACP()}) {
        std::string bytes(units.size() * 4, '\0');
        const int length =
            WideCharToMultiByte(page, 0, units.data(), static_cast<int>(units.size()), bytes.data(),
                                static_cast<int>(bytes.size()), nullptr, nullptr);
        bytes.resize(static_cast<std::size_t>(length));
        results.push_back(bytes);
    }
    return results;
}
#else
std::string lastError()
{
    return std::system_category().message(errno);
}

std::vector<std::string> inSystemCodePages(const std::string & /*text*/)
{
    return {};
}
#endif
} // namespace Extract
