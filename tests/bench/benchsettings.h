#pragma once

#include <QString>

// The build-time addresses, set by each benchmark instead: its server listens on a free port.
namespace BenchSettings
{
constexpr char nobodyListens[] = "http://127.0.0.1:9/";

// Takes effect with the next window.
void setBaseUrl(const QString &url);
} // namespace BenchSettings
