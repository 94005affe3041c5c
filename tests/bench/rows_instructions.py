"""Instructions of what one thread does alone: the same on a busy machine, and nearly so on another."""

from __future__ import annotations

import os
import re
import sys
import time
from collections.abc import Callable
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

from bench_tools import Setting, run, say
from bench_world import background_as_drawn, photographs
from rows_start import SLOW
from table import Row, at_most, exponent, limited, stated
from web import Web

UNIT = "million"
# How callgrind calls the functions of measuring.h.
OURS = "Measuring::ours("
BARE = "Measuring::bare("


@dataclass
class Counted:
    """What a program counted, in millions."""

    whole: float
    # Of one piece of work, on the average.
    ours: float = 0
    bare: float = 0


def read_counts(path: Path) -> Counted:
    """Callgrind tells of each caller how often it called whom, and in the next line with what cost."""
    whole = 0
    called = ""
    times = {OURS: 0, BARE: 0}
    cost = {OURS: 0, BARE: 0}
    lines = iter(path.read_text(encoding="utf-8", errors="replace").splitlines())
    for line in lines:
        if line.startswith("totals:"):
            whole = int(line.split()[1])
        elif line.startswith("cfn="):
            called = next((name for name in times if line.startswith(f"cfn={name}")), "")
        elif line.startswith("calls=") and called:
            times[called] += int(re.split("[= ]", line)[1])
            cost[called] += int(next(lines).split()[1])
    each = {name: cost[name] / times[name] / 1e6 if times[name] else 0 for name in times}
    return Counted(whole / 1e6, each[OURS], each[BARE])


def count(setting: Setting, name: str, command: list[str], sides: tuple[str, ...]) -> Counted:
    """Runs a benchmark in an empty folder, and counts these sides, or all of it."""
    begin = time.monotonic()
    counts = setting.scratch / f"callgrind.{name}"
    counts.unlink(missing_ok=True)
    only = [f"--toggle-collect={side}*" for side in sides]
    ended = run(
        ["valgrind", "--tool=callgrind", f"--callgrind-out-file={counts}", "--compress-strings=no",
         "--compress-pos=no", *only, setting.program(command[0]), *command[1:]],
        # The order of a hash table is drawn anew at each start, and with it the work.
        setting.folder(f"counted-{name}"), {"QT_HASH_SEED": "0"})
    if ended.result.get("samePicture") is False or ended.result.get("pictures"):
        sys.exit(f"{name} did not do what is counted: {ended.result}")
    counted = read_counts(counts)
    found = [name for name, cost in ((OURS, counted.ours), (BARE, counted.bare)) if cost]
    if not (found == list(sides) if sides else counted.whole):
        sys.exit(f"nothing was counted of {name}; see {counts}")
    say(f"   {name}: {time.monotonic() - begin:.0f} s")
    return counted


def instructions(setting: Setting, web: Web) -> list[Row]:
    """One run of each: a second one counts the same but for some hundredths of a per cent."""
    sizes = (100, 1_000, 10_000)
    folders = (10, 1_000, 10_000)
    panels = (10, 100)
    steps = "10" if setting.quick else "20"
    # The longest first. They count the same side by side.
    jobs: dict[str, Callable[[], Counted]] = {}

    def job(name: str, *command: str, sides: tuple[str, ...] = (OURS, BARE)) -> None:
        jobs[name] = lambda: count(setting, name, list(command), sides)

    # One pixel of 64 whose time is taken: counting all of them takes minutes.
    photos = photographs(setting.scratch / "small photographs", 9, 480)
    for servers in reversed(panels):
        job(f"panel-{servers}", "bench_growth", "servers", str(servers), "1", sides=(OURS,))
    job("pictures", "bench_pictures", "1", *(str(path) for path in photos))
    job("rescale", "bench_rescale", "1", steps)
    for entries in reversed(folders):
        job(f"versions-{entries}", "bench_versions", str(entries), "1")
    for entries in reversed(sizes):
        job(f"document-{entries}", "bench_document", str(entries), "1")
    job("hover", "bench_hover", "1")
    job("start", "bench_window", web.url + SLOW, "choice", sides=())
    picture = os.fspath(background_as_drawn(setting.scratch))
    job("bare", "bench_bare_window", picture, sides=())
    job("bare-packed-as-ours", "bench_bare_window", sides=())
    job("bare-with-text", "bench_bare_window", picture, "text", sides=())
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        running = {name: pool.submit(work) for name, work in jobs.items()}
        try:
            counted = {name: future.result() for name, future in running.items()}
        except BaseException:
            pool.shutdown(cancel_futures=True)
            raise

    start, bare, packed, text = (counted[name].whole
                                 for name in ("start", "bare", "bare-packed-as-ours", "bare-with-text"))
    rows = [
        at_most("start: until the complete window is painted", UNIT, start, bare, 1.4),
        stated("start: the same, beside a bare window whose picture is packed as ours", UNIT, start, packed),
        stated("start: the same, beside a window with one text and the icon", UNIT, start, text),
    ]

    def sides(what: str, name: str, times: float) -> None:
        rows.append(at_most(what, UNIT, counted[name].ours, counted[name].bare, times))

    for entries in sizes:
        sides(f"document: {entries:,} entries", f"document-{entries}", 3)
    rows.append(limited("document: growth exponent", "",
                        exponent([(entries, counted[f"document-{entries}"].ours) for entries in sizes]), 1.05))
    for entries in folders:
        sides(f"installed version: {entries:,} entries", f"versions-{entries}", 1.3)
    # What is done once counts most of the smallest.
    rows.append(limited("installed version: growth exponent", "",
                        exponent([(entries, counted[f"versions-{entries}"].ours) for entries in folders[1:]]), 1.05))
    for servers in panels:
        rows.append(stated(f"panel: {servers} servers", UNIT, counted[f"panel-{servers}"].ours))
    rows.append(limited("panel: growth exponent", "",
                        exponent([(servers, counted[f"panel-{servers}"].ours) for servers in panels]), 1.05))
    sides("rescale: one step of the full window", "rescale", 1.15)
    sides("pictures: nine of 480 x 270, from bytes to shown", "pictures", 1.1)
    sides("hover: one paint of a glowing button", "hover", 1.2)
    return rows
