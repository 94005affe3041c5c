#include "extract/verdict.h"

#include "extract/bytesource.h"
#include "extract/plan.h"
#include "extract/refusal.h"
#include "extract/workers.h"

#include <functional>
#include <new>

namespace Extract
{
namespace
{
class NoSink : public Sink
{
public:
    void begin(const Member & /*member*/) override {}
    void take(const unsigned char * /*bytes*/, std::size_t /*length*/) override {}
    void startAgain() override {}
    void end() override {}
};

void judge(const ByteSource &archive, const std::string *password, Verdict &verdict)
{
    Directory directory = readDirectory(archive);
    for (const Member &member : directory.members) {
        verdict.members.push_back(
            {directory.nameOf(member), member.size, member.folder, member.lock != Lock::None});
    }
    const Plan plan = planOf(directory);
    if (password != nullptr) {
        unpackFiles(archive, directory, plan, *password, [] { return std::make_unique<NoSink>(); });
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

Verdict verified(const ByteSource &archive, const std::string &password)
{
    return verdictOf([&](Verdict &verdict) { judge(archive, &password, verdict); });
}

Verdict verified(const std::string &path, const std::string &password)
{
    return verdictOf([&](Verdict &verdict) { judge(FileBytes(path), &password, verdict); });
}
} // namespace Extract
