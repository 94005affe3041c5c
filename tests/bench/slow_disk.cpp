// A slow disk for one process: preloaded, it makes each write to a file of the working folder take
// as long as on a disk of so many bytes a second (SLOW_DISK_BYTES_PER_SECOND). The writer waits, as
// it does when the system has no room for more unwritten data.

#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/types.h>

extern "C" ssize_t write(int file, const void *data, size_t size)
{
    using Write = ssize_t (*)(int, const void *, size_t);
    static const auto next = reinterpret_cast<Write>(dlsym(RTLD_NEXT, "write"));
    static const char *const limit = std::getenv("SLOW_DISK_BYTES_PER_SECOND");
    static const double bytesPerSecond = limit != nullptr ? std::atof(limit) : 0;

    const ssize_t written = next(file, data, size);
    struct stat info {
    };
    if (written > 0 && bytesPerSecond > 0 && fstat(file, &info) == 0 && S_ISREG(info.st_mode)) {
        const double seconds = static_cast<double>(written) / bytesPerSecond;
        const auto whole = static_cast<time_t>(seconds);
        const timespec pause{whole,
                             static_cast<long>((seconds - static_cast<double>(whole)) * 1e9)};
        (void)nanosleep(&pause, nullptr);
    }
    return written;
}
