#pragma once

#include "extract/directory.h"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Extract
{
class ByteSource;

// What takes a member's content.
class Sink
{
public:
    Sink() = default;
    virtual ~Sink() = default;
    Sink(const Sink &) = delete;
    Sink &operator=(const Sink &) = delete;

    virtual void begin(const Member &member) = 0;
    virtual void take(const unsigned char *bytes, std::size_t length) = 0;
    // What came since begin() was wrong, and comes again.
    virtual void startAgain() = 0;
    virtual void end() = 0;
};

// Unpacks members one after the other, each thread with a reader of its own.
class ContentReader
{
public:
    // The passwords are the same one in the encodings that packers may have used. Members that are
    // together, packed and unpacked, no larger than this are held in memory.
    ContentReader(const ByteSource &archive, std::vector<std::string> passwords,
                  std::size_t heldInMemory);
    ~ContentReader();
    ContentReader(const ContentReader &) = delete;
    ContentReader &operator=(const ContentReader &) = delete;

    // Throws a Refusal where the content is not what the directory says, to the last byte.
    void unpack(const Member &member, Sink &sink);

private:
    class Inflater;

    void unpackWith(const Member &member, const std::string &password, Sink &sink);
    // Returns where the packed bytes lie in the buffer, and how many they are.
    std::pair<const unsigned char *, std::size_t> readWhole(const Member &member,
                                                            const std::string &password);
    void unpackInMemory(const Member &member, const std::string &password, Sink &sink);
    void unpackInPieces(const Member &member, const std::string &password, Sink &sink);

    const ByteSource &m_archive;
    std::vector<std::string> m_passwords;
    const std::size_t m_heldInMemory;
    std::unique_ptr<Inflater> m_inflater;
    std::vector<unsigned char> m_packed;
    std::vector<unsigned char> m_content;
};
} // namespace Extract
