"""Compares check/letterwidths.cpp with what scripts/letter-widths.py writes: letterwidths.py

Skipped where the font is not installed, or another version of it than the table says.
"""

from __future__ import annotations

import difflib
import runpy
import sys
from pathlib import Path
from types import SimpleNamespace

SCRIPT = Path(__file__).resolve().parents[2] / "scripts" / "letter-widths.py"
SKIPPED = 77


def main() -> None:
    try:
        widths = SimpleNamespace(**runpy.run_path(str(SCRIPT)))
    except ImportError as error:
        print(f"skipped: {error}")
        sys.exit(SKIPPED)
    if not all((widths.FOLDER / file).is_file() for file in widths.FONTS.values()):
        print(f"skipped: no font in {widths.FOLDER}")
        sys.exit(SKIPPED)
    ours = widths.TABLE.read_text(encoding="utf-8")
    version = widths.version(widths.FOLDER)
    if f"from Lato, {version}." not in ours:
        print(f"skipped: the table is of another version of the font than {version}")
        sys.exit(SKIPPED)
    fresh = widths.table(widths.FOLDER)
    if ours != fresh:
        changes = difflib.unified_diff(ours.splitlines(), fresh.splitlines(), "there", "written now", lineterm="")
        sys.exit("\n".join(changes) + f"\n{widths.TABLE} is not what {SCRIPT.name} writes")


if __name__ == "__main__":
    main()
