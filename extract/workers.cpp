#include "extract/workers.h"

#include "extract/refusal.h"
#include "extract/systemtext.h"
#include "extract/text.h"
#include "extract/workqueue.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <optional>
#include <system_error>
#include <thread>

#ifdef __linux__
#include <sched.h>
#endif

namespace Extract
{
namespace
{
constexpr std::size_t mebibyte = 1U << 20U;
constexpr std::uint32_t noMember = std::numeric_limits<std::uint32_t>::max();
// More than these wait for the disk and for each other.
constexpr std::size_t mostWorkers = 32;

std::size_t processors()
{
#ifdef __linux__
    // Those that this process may use.
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) == 0) {
        return static_cast<std::size_t>(CPU_COUNT(&set));
    }
#endif
    return std::thread::hardware_concurrency();
}

// What all workers may hold together, beside the directory of an archive with many members.
std::size_t memoryBeside(const Directory &directory)
{
    constexpr std::size_t all = 72 * mebibyte;
    constexpr std::size_t least = 8 * mebibyte;
    constexpr std::size_t most = 48 * mebibyte;
    const std::size_t taken =
        directory.members.capacity() * sizeof(Member) + directory.names.capacity();
    return std::min(taken < all ? std::max(all - taken, least) : least, most);
}

// Where the archive is known to be refused: members from here on need not be unpacked.
class End
{
public:
    bool isBefore(std::uint32_t member) const { return m_member <= member; }
    // Returns whether it was later until now.
    bool bringTo(std::uint32_t member)
    {
        if (isBefore(member)) {
            return false;
        }
        m_member = member;
        return true;
    }

private:
    std::atomic<std::uint32_t> m_member{noMember};
};

class Stopped
{
};

// Passes everything on while it is of use.
class StoppableSink : public Sink
{
public:
    StoppableSink(Sink &sink, const End &end)
        : m_sink(sink)
        , m_end(end)
    {
    }

    void setMember(std::uint32_t member) { m_member = member; }

    void begin(const Member &member) override { m_sink.begin(member); }
    void take(const unsigned char *bytes, std::size_t length) override
    {
        if (m_end.isBefore(m_member)) {
            throw Stopped();
        }
        m_sink.take(bytes, length);
    }
    void startAgain() override { m_sink.startAgain(); }
    void end() override { m_sink.end(); }

private:
    Sink &m_sink;
    const End &m_end;
    std::uint32_t m_member = 0;
};

class Workers
{
public:
    Workers(const ByteSource &archive, const Directory &directory, const Plan &plan,
            const std::string &password, std::size_t count)
        : m_archive(archive)
        , m_directory(directory)
        , m_passwords(encodingsOf(password))
        // A worker's two buffers may have been filled by different members.
        , m_heldByEach(memoryBeside(directory) / count * 2 / 3)
        , m_queue(directory, plan, count, m_heldByEach / 2)
    {
    }

    void work(std::size_t worker, Sink &sink)
    {
        StoppableSink stoppable(sink, m_end);
        std::uint32_t member = noMember;
        try {
            ContentReader reader(m_archive, m_passwords, m_heldByEach);
            for (auto some = m_queue.next(worker); !some.empty(); some = m_queue.next(worker)) {
                for (const std::uint32_t each : some) {
                    member = each;
                    unpack(member, reader, stoppable);
                }
            }
        } catch (const NotWritten &refusal) {
            fail(0, NotWritten(nameOf(member), refusal.what()));
        } catch (const std::bad_alloc &) {
            fail(0, NotWritten(nameOf(member), "there is not enough memory"));
        }
    }

    void throwFailure() const
    {
        if (m_failure) {
            throw Refusal(*m_failure);
        }
    }

private:
    std::string nameOf(std::uint32_t member) const
    {
        return member == noMember ? std::string() : m_directory.nameOf(m_directory.members[member]);
    }

    // What comes before a damaged member is unpacked all the same, so that of several always the
    // first is told, however fast each worker was.
    void unpack(std::uint32_t member, ContentReader &reader, StoppableSink &sink)
    {
        if (m_end.isBefore(member)) {
            return;
        }
        try {
            sink.setMember(member);
            reader.unpack(m_directory.members[member], sink);
        } catch (const Stopped &) {
            return;
        } catch (const NotWritten &) {
            throw;
        } catch (const Refusal &refusal) {
            fail(member, Refusal(nameOf(member), refusal.what()));
        }
    }

    void fail(std::uint32_t member, const Refusal &refusal)
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_end.bringTo(member)) {
            m_failure = refusal;
        }
    }

    const ByteSource &m_archive;
    const Directory &m_directory;
    const std::vector<std::string> m_passwords;
    const std::size_t m_heldByEach;
    WorkQueue m_queue;
    std::mutex m_mutex;
    std::optional<Refusal> m_failure;
    End m_end;
};
} // namespace

std::vector<std::string> encodingsOf(const std::string &password)
{
    std::vector<std::string> encodings{password};
    const auto add = [&](const std::optional<std::string> &bytes) {
        if (bytes && std::find(encodings.begin(), encodings.end(), *bytes) == encodings.end()) {
            encodings.push_back(*bytes);
        }
    };
    if (const auto text = fromUtf8(password)) {
        add(inCodePage437(*text));
        add(inCodePage1252(*text));
    }
    for (const std::string &bytes : inSystemCodePages(password)) {
        add(bytes);
    }
    return encodings;
}

void unpackFiles(const ByteSource &archive, const Directory &directory, const Plan &plan,
                 const std::string &password,
                 const std::function<std::unique_ptr<Sink>()> &makeSink)
{
    const std::size_t count =
        std::clamp<std::size_t>(std::min(processors(), plan.files.size()), 1, mostWorkers);
    Workers workers(archive, directory, plan, password, count);
    std::vector<std::unique_ptr<Sink>> sinks;
    for (std::size_t i = 0; i < count; ++i) {
        sinks.push_back(makeSink());
    }
    std::vector<std::thread> threads;
    for (std::size_t i = 1; i < count; ++i) {
        try {
            threads.emplace_back([&workers, i, sink = sinks[i].get()] { workers.work(i, *sink); });
        } catch (const std::system_error &) {
            // Fewer do it as well: each takes from the others' parts.
            break;
        }
    }
    workers.work(0, *sinks[0]);
    for (std::thread &thread : threads) {
        thread.join();
    }
    workers.throwFailure();
}
} // namespace Extract
