// Folders and files of every system but Windows.
#ifndef _WIN32
#include "extract/folder.h"
#include "extract/refusal.h"
#include "extract/systemtext.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <system_error>
#include <unistd.h>

namespace Extract
{
namespace
{
int number(std::intptr_t file)
{
    return static_cast<int>(file);
}

timespec secondsOf(std::int64_t modified)
{
    timespec time{};
    time.tv_sec = static_cast<time_t>(modified);
    time.tv_nsec = modified < 0 ? UTIME_OMIT : 0;
    return time;
}
} // namespace

OutputFile::~OutputFile()
{
    if (m_file >= 0) {
        (void)::close(number(m_file));
    }
}

void OutputFile::write(const unsigned char *bytes, std::size_t length)
{
    while (length > 0) {
        const ssize_t done = ::write(number(m_file), bytes, length);
        if (done < 0 && errno == EINTR) {
            continue;
        }
        if (done < 0) {
            throw NotWritten("it cannot be written: " + lastError());
        }
        bytes += done;
        length -= static_cast<std::size_t>(done);
    }
}

void OutputFile::empty()
{
    if (ftruncate(number(m_file), 0) != 0 || lseek(number(m_file), 0, SEEK_SET) != 0) {
        throw NotWritten("it cannot be written: " + lastError());
    }
}

void OutputFile::close(std::int64_t modified)
{
    if (modified >= 0) {
        const timespec times[2] = {secondsOf(modified), secondsOf(modified)};
        // A disk without times does not make the game any worse.
        (void)futimens(number(m_file), times);
    }
    const int file = number(m_file);
    m_file = -1;
    if (::close(file) != 0 && errno != EINTR) {
        throw NotWritten("it cannot be written: " + lastError());
    }
}

Folder::Folder(const std::string &path)
    : m_path(path)
    , m_folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
{
    if (m_folder < 0) {
        throw NotWritten(path + " cannot be opened: " + lastError());
    }
}

Folder::~Folder()
{
    (void)::close(number(m_folder));
}

Kind Folder::kindOf(const std::string &name) const
{
    struct stat status {
    };
    if (fstatat(number(m_folder), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return Kind::Nothing;
    }
    if (S_ISLNK(status.st_mode)) {
        return Kind::Link;
    }
    if (S_ISDIR(status.st_mode)) {
        return Kind::Folder;
    }
    return S_ISREG(status.st_mode) ? Kind::File : Kind::Other;
}

std::vector<std::string> Folder::namesIn(const std::string &name) const
{
    std::vector<std::string> names;
    const int folder = openat(number(m_folder), name.empty() ? "." : name.c_str(),
                              O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    DIR *list = folder < 0 ? nullptr : fdopendir(folder);
    if (list == nullptr) {
        return names;
    }
    // NOLINTNEXTLINE(concurrency-mt-unsafe): of a list that no other thread reads it is safe
    while (const dirent *entry = readdir(list)) {
        const std::string each = entry->d_name;
        if (each != "." && each != "..") {
            names.push_back(each);
        }
    }
    (void)closedir(list);
    return names;
}

bool Folder::make(const std::string &name) const
{
    constexpr mode_t asUsual = 0777;
    if (mkdirat(number(m_folder), name.c_str(), asUsual) == 0) {
        return true;
    }
    if (errno != EEXIST) {
        throw NotWritten(name, "the folder cannot be made: " + lastError());
    }
    return false;
}

std::unique_ptr<OutputFile> Folder::createFile(const std::string &name, bool executable) const
{
    // The player's own mask takes away what it takes from every file.
    const mode_t mode = executable ? 0777 : 0666;
    const int file = openat(number(m_folder), name.c_str(),
                            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
    if (file < 0) {
        throw NotWritten("it cannot be made: " + lastError());
    }
    return std::make_unique<OutputFile>(file);
}

void Folder::setModified(const std::string &name, std::int64_t modified) const
{
    if (modified >= 0) {
        const timespec times[2] = {secondsOf(modified), secondsOf(modified)};
        (void)utimensat(number(m_folder), name.c_str(), times, AT_SYMLINK_NOFOLLOW);
    }
}

bool Folder::move(const std::string &from, const std::string &to) const
{
    return renameat(number(m_folder), from.c_str(), number(m_folder), to.c_str()) == 0;
}

bool Folder::link(const std::string &from, const std::string &to) const
{
    return linkat(number(m_folder), from.c_str(), number(m_folder), to.c_str(), 0) == 0;
}

bool Folder::removeFile(const std::string &name) const
{
    return unlinkat(number(m_folder), name.c_str(), 0) == 0;
}

bool Folder::removeEmptyFolder(const std::string &name) const
{
    return unlinkat(number(m_folder), name.c_str(), AT_REMOVEDIR) == 0;
}

std::optional<std::uint64_t> Folder::freeBytes() const
{
    struct statvfs status {
    };
    if (fstatvfs(number(m_folder), &status) != 0 || status.f_blocks == 0) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(status.f_bavail) * status.f_frsize;
}

std::string Folder::pathOf(const std::string &name) const
{
    return m_path.back() == '/' ? m_path + name : m_path + '/' + name;
}

Place placeOf(const std::string &path)
{
    std::string whole = path;
    while (whole.size() > 1 && whole.back() == '/') {
        whole.pop_back();
    }
    std::size_t slash = whole.rfind('/');
    const std::string last = slash == std::string::npos ? whole : whole.substr(slash + 1);
    if (last == "." || last == "..") {
        std::error_code error;
        whole = std::filesystem::canonical(whole, error).string();
        if (error) {
            throw NotWritten(path + " cannot be found: " + error.message());
        }
        slash = whole.rfind('/');
    }
    if (slash == std::string::npos) {
        return {".", whole};
    }
    return {slash == 0 ? "/" : whole.substr(0, slash), whole.substr(slash + 1)};
}

bool folderExists(const std::string &path)
{
    struct stat status {
    };
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool makeFolderAt(const std::string &path)
{
    constexpr mode_t asUsual = 0777;
    return mkdir(path.c_str(), asUsual) == 0;
}

bool removeFolderAt(const std::string &path)
{
    return rmdir(path.c_str()) == 0;
}
} // namespace Extract
#endif
