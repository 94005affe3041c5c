#include "extract/arguments.h"

#include "extract/refusal.h"
#include "extract/text.h"

#include <cstdio>
#include <exception>

namespace Extract
{
namespace
{
constexpr int success = 0;
constexpr int failure = 1;
constexpr int wrongUsage = 64;

void tell(const std::string &line)
{
    // Nothing is left to do when nobody can be told.
    (void)std::fputs((line + "\n").c_str(), stderr);
}

int tellFailure(const Order &order, const std::string &member, const std::string &reason)
{
    std::string line = "unzip.exe: " + printable(order.archive) + ": ";
    if (!member.empty()) {
        line += printable(member) + ": ";
    }
    tell(line + printable(reason));
    return failure;
}
} // namespace

const char usage[] = "usage: unzip.exe [-P PASSWORD] ARCHIVE -d FOLDER";

std::optional<Order> orderOf(const std::vector<std::string> &arguments)
{
    const bool locked = arguments.size() == 5 && arguments[0] == "-P";
    const std::size_t first = locked ? 2 : 0;
    if (arguments.size() != first + 3 || arguments[first + 1] != "-d" || arguments[first].empty() ||
        arguments[first + 2].empty()) {
        return std::nullopt;
    }
    return Order{locked ? arguments[1] : std::string(), arguments[first], arguments[first + 2]};
}

int run(const std::vector<std::string> &arguments)
{
    const std::optional<Order> order = orderOf(arguments);
    if (!order) {
        tell(usage);
        return wrongUsage;
    }
    try {
        extract(*order);
        return success;
    } catch (const Refusal &refusal) {
        return tellFailure(*order, refusal.member(), refusal.what());
    } catch (const std::exception &error) {
        return tellFailure(*order, {}, error.what());
    }
}
} // namespace Extract
