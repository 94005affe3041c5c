#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Extract
{
// An archive's bytes. Several threads may read at once.
class ByteSource
{
public:
    ByteSource() = default;
    virtual ~ByteSource() = default;
    ByteSource(const ByteSource &) = delete;
    ByteSource &operator=(const ByteSource &) = delete;

    virtual std::uint64_t size() const = 0;
    // Returns how many bytes there were: fewer than asked for at the end only.
    virtual std::size_t readAt(std::uint64_t place, unsigned char *buffer,
                               std::size_t bytes) const = 0;
};

class FileBytes : public ByteSource
{
public:
    explicit FileBytes(const std::string &path);
    ~FileBytes() override;

    std::uint64_t size() const override { return m_size; }
    std::size_t readAt(std::uint64_t place, unsigned char *buffer,
                       std::size_t bytes) const override;

private:
    std::intptr_t m_file = -1;
    std::uint64_t m_size = 0;
};

// Of bytes that live longer than this.
class MemoryBytes : public ByteSource
{
public:
    explicit MemoryBytes(std::string_view bytes)
        : m_bytes(bytes)
    {
    }

    std::uint64_t size() const override { return m_bytes.size(); }
    std::size_t readAt(std::uint64_t place, unsigned char *buffer,
                       std::size_t bytes) const override;

private:
    const std::string_view m_bytes;
};
} // namespace Extract
