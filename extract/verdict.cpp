#include "extract/verdict.h"

#include "extract/bytesource.h"
#include "extract/plan.h"
#include "extract/refusal.h"
#include "extract/workers.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <mutex>
#include <new>

namespace Extract
{
namespace
{
// What the sinks of all threads share.
struct Looking {
    const Directory &directory;
    const Look &look;
    std::mutex mutex;
};

// Keeps nothing of a member but how it begins.
class LookingSink : public Sink
{
public:
    explicit LookingSink(Looking &looking)
        : m_looking(looking)
    {
    }

    void begin(const Member &member) override
    {
        m_member = &member;
        m_beginning.clear();
    }
    void take(const unsigned char *bytes, std::size_t length) override
    {
        if (m_looking.look) {
            const std::size_t room = lookedAt - m_beginning.size();
            m_beginning.append(bytes, bytes + std::min(length, room));
        }
    }
    void startAgain() override { m_beginning.clear(); }
    void end() override
    {
        if (m_looking.look) {
            const std::lock_guard<std::mutex> guard(m_looking.mutex);
            m_looking.look(m_looking.directory.nameOf(*m_member), m_beginning);
        }
    }

private:
    Looking &m_looking;
    const Member *m_member = nullptr;
    std::string m_beginning;
};

struct Unpacking {
    const std::string &password;
    const Look &look;
};

void judge(const ByteSource &archive, const Unpacking *unpacking, Verdict &verdict)
{
    Directory directory = readDirectory(archive);
    for (const Member &member : directory.members) {
        verdict.members.push_back(
            {directory.nameOf(member), member.size, member.folder, member.lock != Lock::None});
    }
    const Plan plan = planOf(directory);
    if (unpacking != nullptr) {
        Looking looking{directory, unpacking->look, {}};
        unpackFiles(archive, directory, plan, unpacking->password,
                    [&looking] { return std::make_unique<LookingSink>(looking); });
    }
}

Verdict verdictOf(const std::function<void(Verdict &)> &judging)
{
    Verdict verdict;
    try {
        judging(verdict);
        verdict.accepted = true;
    } catch (const Refusal &refusal) {
        verdict.member = refusal.member();
        verdict.reason = refusal.what();
    } catch (const std::bad_alloc &) {
        verdict.reason = "there is not enough memory";
    }
    return verdict;
}
} // namespace

Verdict judged(const ByteSource &archive)
{
    return verdictOf([&](Verdict &verdict) { judge(archive, nullptr, verdict); });
}

Verdict judged(const std::string &path)
{
    return verdictOf([&](Verdict &verdict) { judge(FileBytes(path), nullptr, verdict); });
}

Verdict verified(const ByteSource &archive, const std::string &password, const Look &look)
{
    const Unpacking unpacking{password, look};
    return verdictOf([&](Verdict &verdict) { judge(archive, &unpacking, verdict); });
}

Verdict verified(const std::string &path, const std::string &password, const Look &look)
{
    const Unpacking unpacking{password, look};
    return verdictOf([&](Verdict &verdict) { judge(FileBytes(path), &unpacking, verdict); });
}
} // namespace Extract
