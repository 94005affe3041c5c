#pragma once

namespace Extract
{
// By capitals Windows tells whether two names mean the same file. This one is the same on every
// system.
char32_t capital(char32_t character);
} // namespace Extract
