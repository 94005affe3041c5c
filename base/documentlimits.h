#pragma once

// What of a launcher document the window has room for, and where reading ends.
namespace DocumentLimits
{
constexpr int slides = 3;
constexpr int tiles = 6;
// Slides and tiles are read up to this number together; whatever follows the last of them, clients
// included, is never seen.
constexpr int newsElements = 9;
// With a column in the panel, which at that number is narrower than any button. Each has a thread
// that fetches its logo: 5,000 servers took a minute and all memory.
constexpr int servers = 100;
// A document that asks for a newer launcher than this sends the player to the website.
constexpr int launcherVersion = 1;
// Of one element; with more, reading ends before it. The toolkit compares each with all before it:
// 100,000 took 20 seconds.
constexpr int attributes = 1000;
// Of the whole document, together; beyond one of them reading ends as well. The largest document of
// a game has some hundred elements, three deep. The window prints each, and 32 MiB held millions,
// which took it seconds, and nested as they can be a gigabyte.
constexpr int elements = 20 * 1000;
constexpr int depth = 100;
// Beginnings and ends of elements, comments and all else that begins with "<".
constexpr int markup = 100 * 1000;
constexpr int allAttributes = 100 * 1000;
// Declared ones. The toolkit looks through all that are open at each element: 90,000 of them before
// 20,000 elements took seven seconds. No element of ours needs any.
constexpr int namespaces = 100;
// Letters of an address; a longer one counts as empty. The toolkit's time for a host's name grows
// with the square of its length: 300,000 letters took ten seconds. Web hosts take about as many.
constexpr int addressLength = 8192;
} // namespace DocumentLimits
