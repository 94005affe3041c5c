#pragma once

#include <cstdint>
#include <string>

namespace Extract
{
// A file whose existence says nothing and whose lock says that its maker lives. The system gives
// the lock back when the process ends, however it ends.
class FileLock
{
public:
    // Makes the file where it is missing.
    explicit FileLock(std::string path);
    // Removes the file when it was taken.
    ~FileLock();
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;

    bool isTaken() const { return m_taken; }

private:
    const std::string m_path;
    std::intptr_t m_file = -1;
    bool m_taken = false;
};
} // namespace Extract
