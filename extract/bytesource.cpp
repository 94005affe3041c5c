#include "extract/bytesource.h"

#include "extract/refusal.h"
#include "extract/systemtext.h"

#include <algorithm>
#include <cstring>

#ifdef _WIN32
#include <windows.h>
#else
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace Extract
{
#ifdef _WIN32
namespace
{
HANDLE handleOf(std::intptr_t file)
{
    return reinterpret_cast<HANDLE>(file);
}
} // namespace

FileBytes::FileBytes(const std::string &path)
{
    const HANDLE file = CreateFileW(longPath(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        throw Refusal("cannot be opened: " + lastError());
    }
    m_file = reinterpret_cast<std::intptr_t>(file);
    LARGE_INTEGER size;
    if (GetFileType(file) != FILE_TYPE_DISK || GetFileSizeEx(file, &size) == 0) {
        CloseHandle(file);
        throw Refusal("is no file");
    }
    m_size = static_cast<std::uint64_t>(size.QuadPart);
}

FileBytes::~FileBytes()
{
    CloseHandle(handleOf(m_file));
}

std::size_t FileBytes::readAt(std::uint64_t place, unsigned char *buffer, std::size_t bytes) const
{
    std::size_t done = 0;
    while (done < bytes) {
        OVERLAPPED where{};
        where.Offset = static_cast<DWORD>((place + done) & 0xFFFFFFFFU);
        where.OffsetHigh = static_cast<DWORD>((place + done) >> 32);
        const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(bytes - done, 1U << 30));
        DWORD got = 0;
        if (ReadFile(handleOf(m_file), buffer + done, wanted, &got, &where) == 0 &&
            GetLastError() != ERROR_HANDLE_EOF) {
            throw Refusal("cannot be read: " + lastError());
        }
        if (got == 0) {
            break;
        }
        done += got;
    }
    return done;
}
#else
FileBytes::FileBytes(const std::string &path)
{
    // A pipe in the archive's place must not make the launcher wait for ever.
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file < 0) {
        throw Refusal("cannot be opened: " + lastError());
    }
    m_file = file;
    struct stat status {
    };
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
        (void)close(file);
        throw Refusal("is no file");
    }
    m_size = static_cast<std::uint64_t>(status.st_size);
}

FileBytes::~FileBytes()
{
    (void)close(static_cast<int>(m_file));
}

std::size_t FileBytes::readAt(std::uint64_t place, unsigned char *buffer, std::size_t bytes) const
{
    std::size_t done = 0;
    while (done < bytes) {
        const ssize_t got = pread(static_cast<int>(m_file), buffer + done, bytes - done,
                                  static_cast<off_t>(place + done));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            throw Refusal("cannot be read: " + lastError());
        }
        if (got == 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    return done;
}
#endif

std::size_t MemoryBytes::readAt(std::uint64_t place, unsigned char *buffer, std::size_t bytes) const
{
    if (place >= m_bytes.size()) {
        return 0;
    }
    const std::size_t there = std::min<std::size_t>(bytes, m_bytes.size() - place);
    std::memcpy(buffer, m_bytes.data() + place, there);
    return there;
}
} // namespace Extract
