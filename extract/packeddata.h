#pragma once

#include "extract/directory.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace Extract
{
class ByteSource;

// A member's packed bytes one after the other, decrypted where they are encrypted.
class PackedData
{
public:
    PackedData() = default;
    virtual ~PackedData() = default;
    PackedData(const PackedData &) = delete;
    PackedData &operator=(const PackedData &) = delete;

    // As many as fit into the buffer; fewer at the end only.
    virtual std::size_t read(unsigned char *buffer, std::size_t bytes) = 0;
    // To be called when all has been read: what encryption says of the whole.
    virtual void finish() {}
};

// How long the member's own header is, of which so many bytes could be read. Throws a Refusal where
// it is none, or leaves no room for the data.
std::size_t lengthOfHeader(const unsigned char *header, std::size_t bytes, const Member &member);

// Throws WrongPassword where that can be told at once.
class WrongPassword
{
};

std::unique_ptr<PackedData> packedData(const ByteSource &archive, const Member &member,
                                       const std::string &password);
} // namespace Extract
