#pragma once

#include <QtGlobal>

// How wide the letters of the form's font are. The table is written by scripts/letter-widths.py.
namespace LetterWidths
{
enum Weight { Regular, Bold };

constexpr int unitsOfEm = 2000;

// In units of the em; 0 when the font has no such letter.
int ofLetter(char16_t letter, Weight weight);
} // namespace LetterWidths
