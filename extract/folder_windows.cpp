// Folders and files of Windows.
#ifdef _WIN32
#include "extract/folder.h"
#include "extract/refusal.h"
#include "extract/systemtext.h"

#include <algorithm>
#include <windows.h>

namespace Extract
{
namespace
{
HANDLE handleOf(std::intptr_t file)
{
    return reinterpret_cast<HANDLE>(file);
}

// Paths in the long form are taken letter by letter, without "/".
std::wstring below(const std::string &folder, const std::string &name)
{
    std::wstring path = wide(folder);
    if (!name.empty()) {
        if (path.back() != L'\\') {
            path += L'\\';
        }
        std::wstring rest = wide(name);
        std::replace(rest.begin(), rest.end(), L'/', L'\\');
        path += rest;
    }
    return path;
}

FILETIME fileTimeOf(std::int64_t modified)
{
    constexpr std::int64_t until1970 = 11644473600;
    constexpr std::uint64_t second = 10000000;
    const std::uint64_t ticks = static_cast<std::uint64_t>(modified + until1970) * second;
    return {static_cast<DWORD>(ticks & 0xFFFFFFFFU), static_cast<DWORD>(ticks >> 32)};
}

void dropReadOnly(const std::wstring &path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        (void)SetFileAttributesW(path.c_str(), attributes & ~FILE_ATTRIBUTE_READONLY);
    }
}

// Programs that look into every new file hold it for a moment.
bool isForAMoment(DWORD error)
{
    return error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION ||
           error == ERROR_LOCK_VIOLATION;
}
} // namespace

OutputFile::~OutputFile()
{
    if (m_file != -1) {
        CloseHandle(handleOf(m_file));
    }
}

void OutputFile::write(const unsigned char *bytes, std::size_t length)
{
    while (length > 0) {
        DWORD done = 0;
        if (WriteFile(handleOf(m_file), bytes,
                      static_cast<DWORD>(std::min<std::size_t>(length, 1U << 30)), &done,
                      nullptr) == 0) {
            throw NotWritten("it cannot be written: " + lastError());
        }
        bytes += done;
        length -= done;
    }
}

void OutputFile::empty()
{
    if (SetFilePointer(handleOf(m_file), 0, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER ||
        SetEndOfFile(handleOf(m_file)) == 0) {
        throw NotWritten("it cannot be written: " + lastError());
    }
}

void OutputFile::close(std::int64_t modified)
{
    if (modified >= 0) {
        const FILETIME time = fileTimeOf(modified);
        (void)SetFileTime(handleOf(m_file), nullptr, nullptr, &time);
    }
    const HANDLE file = handleOf(m_file);
    m_file = -1;
    if (CloseHandle(file) == 0) {
        throw NotWritten("it cannot be written: " + lastError());
    }
}

Folder::Folder(const std::string &path)
    : m_path(narrow(longPath(path)))
{
    if (!folderExists(path)) {
        throw NotWritten(path + " is no folder");
    }
}

Folder::~Folder() = default;

Kind Folder::kindOf(const std::string &name) const
{
    const DWORD attributes = GetFileAttributesW(below(m_path, name).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return Kind::Nothing;
    }
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        return Kind::Link;
    }
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? Kind::Folder : Kind::File;
}

std::vector<std::string> Folder::namesIn(const std::string &name) const
{
    std::vector<std::string> names;
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW((below(m_path, name) + L"\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return names;
    }
    do {
        const std::string each = narrow(entry.cFileName);
        if (each != "." && each != "..") {
            names.push_back(each);
        }
    } while (FindNextFileW(search, &entry) != 0);
    FindClose(search);
    return names;
}

bool Folder::make(const std::string &name) const
{
    if (CreateDirectoryW(below(m_path, name).c_str(), nullptr) != 0) {
        return true;
    }
    if (GetLastError() != ERROR_ALREADY_EXISTS) {
        throw NotWritten(name, "the folder cannot be made: " + lastError());
    }
    return false;
}

std::unique_ptr<OutputFile> Folder::createFile(const std::string &name, bool /*executable*/) const
{
    const HANDLE file = CreateFileW(below(m_path, name).c_str(), GENERIC_WRITE, 0, nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        throw NotWritten("it cannot be made: " + lastError());
    }
    return std::make_unique<OutputFile>(reinterpret_cast<std::intptr_t>(file));
}

void Folder::setModified(const std::string &name, std::int64_t modified) const
{
    const HANDLE folder =
        CreateFileW(below(m_path, name).c_str(), FILE_WRITE_ATTRIBUTES,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                    FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (modified >= 0 && folder != INVALID_HANDLE_VALUE) {
        const FILETIME time = fileTimeOf(modified);
        (void)SetFileTime(folder, nullptr, nullptr, &time);
    }
    if (folder != INVALID_HANDLE_VALUE) {
        CloseHandle(folder);
    }
}

bool Folder::move(const std::string &from, const std::string &to) const
{
    const std::wstring source = below(m_path, from);
    const std::wstring target = below(m_path, to);
    constexpr int mostTries = 100;
    constexpr DWORD pause = 50; // milliseconds
    for (int tries = 0; tries < mostTries; ++tries) {
        // A folder is not replaced by itself, even an empty one; a file is.
        (void)RemoveDirectoryW(target.c_str());
        dropReadOnly(target);
        if (MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) != 0) {
            return true;
        }
        if (!isForAMoment(GetLastError())) {
            return false;
        }
        Sleep(pause);
    }
    return false;
}

// None of the names of a file that another program has open can be removed again.
bool Folder::link(const std::string & /*from*/, const std::string & /*to*/) const
{
    return false;
}

bool Folder::removeFile(const std::string &name) const
{
    const std::wstring path = below(m_path, name);
    dropReadOnly(path);
    // A link to a folder goes the way of folders.
    return DeleteFileW(path.c_str()) != 0 || RemoveDirectoryW(path.c_str()) != 0;
}

bool Folder::removeEmptyFolder(const std::string &name) const
{
    return RemoveDirectoryW(below(m_path, name).c_str()) != 0;
}

std::optional<std::uint64_t> Folder::freeBytes() const
{
    ULARGE_INTEGER bytes;
    if (GetDiskFreeSpaceExW(below(m_path, {}).c_str(), &bytes, nullptr, nullptr) == 0) {
        return std::nullopt;
    }
    return bytes.QuadPart;
}

std::string Folder::pathOf(const std::string &name) const
{
    return narrow(below(m_path, name));
}

Place placeOf(const std::string &path)
{
    std::string whole = narrow(longPath(path));
    while (!whole.empty() && whole.back() == '\\') {
        whole.pop_back();
    }
    const std::size_t slash = whole.rfind('\\');
    // Nothing lies around a drive.
    if (slash == std::string::npos || whole.back() == ':') {
        return {whole + '\\', {}};
    }
    std::string parent = whole.substr(0, slash);
    return {parent.back() == ':' ? parent + '\\' : parent, whole.substr(slash + 1)};
}

bool folderExists(const std::string &path)
{
    const DWORD attributes = GetFileAttributesW(longPath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool makeFolderAt(const std::string &path)
{
    return CreateDirectoryW(longPath(path).c_str(), nullptr) != 0;
}

bool removeFolderAt(const std::string &path)
{
    return RemoveDirectoryW(longPath(path).c_str()) != 0;
}
} // namespace Extract
#endif
