#pragma once

#include "extract/content.h"
#include "extract/plan.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Extract
{
// The password in the encodings that packers may have used, the likeliest first.
std::vector<std::string> encodingsOf(const std::string &password);

// Unpacks every file of the plan, by as many threads as there are processors, each with a sink of
// its own. Throws the first Refusal when all threads have ended; its member is the one in question.
void unpackFiles(const ByteSource &archive, const Directory &directory, const Plan &plan,
                 const std::string &password,
                 const std::function<std::unique_ptr<Sink>()> &makeSink);
} // namespace Extract
