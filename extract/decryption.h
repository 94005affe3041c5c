#pragma once

#include "extract/packeddata.h"

namespace Extract
{
// The data of an encrypted member, which begins at this place.
std::unique_ptr<PackedData> decryptedData(const ByteSource &archive, const Member &member,
                                          std::uint64_t place, const std::string &password);
} // namespace Extract
