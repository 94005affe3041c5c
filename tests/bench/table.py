"""The table of results: on the screen, as Markdown, as JSON, and into the documentation."""

from __future__ import annotations

import json
import math
import statistics
from collections.abc import Sequence
from dataclasses import asdict, dataclass
from pathlib import Path

# The tables of a page: each stands between two markers of its name, and in files of that name.
TIMES = "results"
INSTRUCTIONS = "instructions"


@dataclass
class Row:
    """One figure of ours beside its yardstick. Without a goal it is only stated."""

    name: str
    unit: str
    ours: float
    yardstick: float | None = None
    # Ours in proportion to the yardstick; where the goal is a difference or a limit, nothing.
    ratio: float | None = None
    goal: str = ""
    met: bool | None = None
    note: str = ""


def at_most(name: str, unit: str, ours: float, yardstick: float, times: float, note: str = "") -> Row:
    """A row whose goal is so many times the yardstick."""
    ratio = ours / yardstick
    return Row(name, unit, ours, yardstick, ratio, f"at most {times:g} times", ratio <= times, note)


def limited(name: str, unit: str, ours: float, limit: float, note: str = "") -> Row:
    """A row whose goal is a limit of its own."""
    return Row(name, unit, ours, None, None, f"at most {limit:g} {unit}".rstrip(), ours <= limit, note)


def at_least(name: str, unit: str, ours: float, least: float, note: str = "") -> Row:
    """A row whose goal is to reach a figure."""
    return Row(name, unit, ours, None, None, f"at least {least:g} {unit}", ours >= least, note)


def above(name: str, unit: str, ours: float, yardstick: float, more: float, note: str = "") -> Row:
    """A row whose goal is so much above the yardstick."""
    return Row(name, unit, ours, yardstick, None, f"at most {more:g} {unit} above",
               ours - yardstick <= more, note)


def stated(name: str, unit: str, ours: float, yardstick: float | None = None, note: str = "") -> Row:
    """A row that has no goal."""
    return Row(name, unit, ours, yardstick, ours / yardstick if yardstick else None, note=note)


def counted_too(name: str, unit: str, ours: float, yardstick: float | None = None, note: str = "") -> Row:
    """A row whose goal is judged by instructions, which do not depend on the machine's other work."""
    return Row(name, unit, ours, yardstick, ours / yardstick if yardstick else None, "by instructions", note=note)


def number(value: float | None) -> str:
    """Three digits that count, and no more than that of small parts."""
    if value is None:
        return ""
    if value == 0:
        return "0"
    digits = 0 if abs(value) >= 100 else 1 if abs(value) >= 10 else 2 if abs(value) >= 1 else 3
    return f"{value:,.{digits}f}"


def exponent(points: Sequence[tuple[float, float]]) -> float:
    """The slope of the line through all sizes and costs, both axes logarithmic."""
    xs, ys = ([math.log(point[axis]) for point in points] for axis in (0, 1))
    middle_x, middle_y = statistics.mean(xs), statistics.mean(ys)
    return (sum((x - middle_x) * (y - middle_y) for x, y in zip(xs, ys)) /
            sum((x - middle_x) ** 2 for x in xs))


def cells(row: Row) -> list[str]:
    met = {True: "met", False: "missed", None: ""}[row.met]
    with_unit = [f"{number(value)} {row.unit}" if value is not None else ""
                 for value in (row.ours, row.yardstick)]
    ratio = f"{row.ratio:.2f}" if row.ratio is not None else ""
    return [row.name, *with_unit, ratio, row.goal, met, row.note]


HEAD = ["what", "ours", "yardstick", "ratio", "goal", "", "remark"]


def as_text(rows: list[Row]) -> str:
    lines = [HEAD, *(cells(row) for row in rows)]
    widths = [max(len(line[place]) for line in lines) for place in range(len(HEAD))]
    return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip()
                     for line in lines)


def as_markdown(rows: list[Row]) -> str:
    lines = [HEAD, ["---"] * len(HEAD), *(cells(row) for row in rows)]
    return "".join("| " + " | ".join(line) + " |\n" for line in lines)


def write_files(name: str, rows: list[Row], machine: str, folder: Path) -> None:
    text = f"{machine}\n\n{as_markdown(rows)}"
    (folder / f"{name}.md").write_text(text, encoding="utf-8")
    # Who reads it with a program need not guess what an empty goal means.
    told = [{**asdict(row), "goal": row.goal or "none"} for row in rows]
    (folder / f"{name}.json").write_text(json.dumps(told, indent=2) + "\n", encoding="utf-8")


def rewrite_page(name: str, rows: list[Row], machine: str, page: Path) -> None:
    """Puts the table between the two markers of its name."""
    first, last = f"<!-- {name}: scripts/bench.sh writes from here -->", f"<!-- {name}: to here -->"
    text = page.read_text(encoding="utf-8")
    before, begin, rest = text.partition(first)
    _, end, after = rest.partition(last)
    if not begin or not end:
        raise SystemExit(f"{page} lacks the markers of the table of {name}")
    page.write_text(f"{before}{begin}\n\n{machine}\n\n{as_markdown(rows)}\n{end}{after}", encoding="utf-8")
