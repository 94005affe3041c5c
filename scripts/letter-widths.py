#!/usr/bin/env python3
"""Writes check/letterwidths.cpp: how wide the letters of the form's font are.

  scripts/letter-widths.py [FOLDER]      FOLDER: where the font's files lie

emberwake-check tells with these which texts do not fit into their place, without a window and without
the font. Run it again when the form gets another font.
"""

from __future__ import annotations

import sys
from pathlib import Path

from fontTools.ttLib import TTFont

ROOT = Path(__file__).resolve().parents[1]
TABLE = ROOT / "check" / "letterwidths.cpp"
FOLDER = Path("/usr/share/fonts/truetype/lato")
FONTS = {"regular": "Lato-Regular.ttf", "bold": "Lato-Bold.ttf"}
# Latin, Greek, Cyrillic, general punctuation, and the signs of currencies.
RANGES = [(0x20, 0x7E), (0xA0, 0x17F), (0x386, 0x3CE), (0x400, 0x45F), (0x2010, 0x2026), (0x20AC, 0x20AC)]


def rows(font: TTFont) -> list[str]:
    letters = font.getBestCmap()
    widths = font["hmtx"].metrics
    lines = []
    for first, last in RANGES:
        numbers = [str(widths[letters[code]][0]) if code in letters else "0" for code in range(first, last + 1)]
        lines.append(f"    // U+{first:04X} to U+{last:04X}\n")
        lines += [f"    {', '.join(numbers[i:i + 16])},\n" for i in range(0, len(numbers), 16)]
    return lines


def version(folder: Path) -> str:
    """Of the font, as it says itself."""
    return str(TTFont(folder / FONTS["regular"])["name"].getDebugName(5)).partition(";")[0]


def table(folder: Path) -> str:
    """All of check/letterwidths.cpp, for the font whose files lie in this folder."""
    text = ['#include "check/letterwidths.h"\n\n#include <array>\n\n']
    text.append(f"// Written by scripts/letter-widths.py from Lato, {version(folder)}.\nnamespace\n{{\n")
    text.append("// clang-format off\nstruct Range {\n    char16_t first;\n    char16_t last;\n};\n")
    text.append("constexpr std::array<Range, %d> ranges{{%s}};\n" % (
        len(RANGES), ", ".join(f"{{0x{first:04X}, 0x{last:04X}}}" for first, last in RANGES)))
    count = sum(last - first + 1 for first, last in RANGES)
    units = set()
    for name, file in FONTS.items():
        font = TTFont(folder / file)
        units.add(font["head"].unitsPerEm)
        text.append(f"constexpr std::array<quint16, {count}> {name}{{\n")
        text += rows(font)
        text.append("};\n")
    if units != {2000}:
        sys.exit(f"the font has {units} units, and the header says 2000")
    text.append("""// clang-format on
} // namespace

int LetterWidths::ofLetter(char16_t letter, LetterWidths::Weight weight)
{
    std::size_t before = 0;
    for (const Range &range : ranges) {
        if (letter >= range.first && letter <= range.last) {
            const std::size_t place = before + letter - range.first;
            return weight == Bold ? bold.at(place) : regular.at(place);
        }
        before += range.last - range.first + 1;
    }
    return 0;
}
""")
    return "".join(text)


def main(folder: Path) -> None:
    TABLE.write_text(table(folder), encoding="utf-8")


if __name__ == "__main__":
    main(Path(sys.argv[1]) if len(sys.argv) > 1 else FOLDER)
