#pragma once

// What of a launcher document the window has room for, and where reading ends.
namespace DocumentLimits
{
constexpr int slides = 3;
constexpr int tiles = 6;
// Slides and tiles are read up to this number together; whatever follows the last of them, clients
// included, is never seen.
constexpr int newsElements = 9;
// A document that asks for a newer launcher than this sends the player to the website.
constexpr int launcherVersion = 1;
// Of one element; with more, reading ends before it. The toolkit compares each with all before it:
// 100,000 took 20 seconds.
constexpr int attributes = 1000;
} // namespace DocumentLimits
