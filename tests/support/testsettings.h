#pragma once

#include <QString>

// The build-time addresses as the tests set them. The objects of this folder define them instead of
// the library's own, so that each test serves its own world on a free port.
namespace TestSettings
{
constexpr char nobodyListens[] = "http://127.0.0.1:9/";

// Takes effect with the next window; until then requests are refused at once.
void setBaseUrl(const QString &url);
} // namespace TestSettings
