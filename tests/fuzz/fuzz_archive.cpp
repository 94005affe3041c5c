// An archive with hostile structure: whatever its bytes, it is taken with all that is in it or
// refused with a reason, and what is taken has names that every system can hold.

#include "extract/bytesource.h"
#include "extract/membername.h"
#include "extract/verdict.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const Extract::MemoryBytes archive(
        std::string_view(reinterpret_cast<const char *>(data), size));
    const Extract::Verdict verdict = Extract::verified(archive, "sesame");
    if (verdict.accepted != verdict.reason.empty() ||
        (verdict.accepted && verdict.members.empty())) {
        __builtin_trap();
    }
    const Extract::Verdict judged = Extract::judged(archive);
    if (verdict.accepted && !judged.accepted) {
        __builtin_trap();
    }
    for (const Extract::JudgedMember &member : verdict.members) {
        if (!Extract::refusalOfName(member.name).empty() ||
            (verdict.accepted && member.size > 1032 * size)) {
            __builtin_trap();
        }
    }
    return 0;
}
