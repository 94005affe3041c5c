#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace Extract
{
// Why an archive is not unpacked: thrown where it is noticed, told once at the end.
class Refusal : public std::runtime_error
{
public:
    explicit Refusal(const std::string &reason)
        : std::runtime_error(reason)
    {
    }
    Refusal(std::string member, const std::string &reason)
        : std::runtime_error(reason)
        , m_member(std::move(member))
    {
    }

    // Empty where the archive as a whole is meant.
    const std::string &member() const { return m_member; }

private:
    std::string m_member;
};

// The archive may be as sound as can be: this disk did not take it.
class NotWritten : public Refusal
{
public:
    using Refusal::Refusal;
};
} // namespace Extract
