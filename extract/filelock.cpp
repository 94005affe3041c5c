#include "extract/filelock.h"

#include <utility>

#ifdef _WIN32
#include "extract/systemtext.h"

#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace Extract
{
#ifdef _WIN32
FileLock::FileLock(std::string path)
    : m_path(std::move(path))
{
    // Nobody else opens it while it is open, and it goes with the last handle.
    const HANDLE file =
        CreateFileW(longPath(m_path).c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr,
                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    m_taken = file != INVALID_HANDLE_VALUE;
    m_file = reinterpret_cast<std::intptr_t>(file);
}

FileLock::~FileLock()
{
    if (m_taken) {
        CloseHandle(reinterpret_cast<HANDLE>(m_file));
    }
}
#else
FileLock::FileLock(std::string path)
    : m_path(std::move(path))
    , m_file(open(m_path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600))
{
    const int file = static_cast<int>(m_file);
    struct stat own {
    };
    struct stat there {
    };
    // Another process may have locked and removed the file between the two calls: then this is the
    // lock of a file that nobody else will ever see.
    m_taken = file >= 0 && flock(file, LOCK_EX | LOCK_NB) == 0 && fstat(file, &own) == 0 &&
              lstat(m_path.c_str(), &there) == 0 && own.st_ino == there.st_ino &&
              own.st_dev == there.st_dev;
}

FileLock::~FileLock()
{
    if (m_taken) {
        (void)unlink(m_path.c_str());
    }
    if (m_file >= 0) {
        (void)close(static_cast<int>(m_file));
    }
}
#endif
} // namespace Extract
