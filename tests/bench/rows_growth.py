"""How cost grows with what there is more of."""

from __future__ import annotations

import os
import shutil
import statistics
import sys
from collections.abc import Callable, Sequence

from bench_tools import Result, Setting, empty_disk_queue, run
from bench_world import MIB, client_archive, large_file
from rows_download import download
from table import Row, exponent, number
from web import Web

GOAL = 1.05


def growth(what: str, sizes: Sequence[int], cost: Callable[[int], float], unit: str = "") -> Row:
    """What most of the sizes have in common hides what the largest suffers from: the last step counts as
    well, and the steeper of both is told."""
    points = [(float(size), cost(size)) for size in sizes]
    whole, last = exponent(points), exponent(points[-2:])
    costs = ", ".join(f"{size:,.0f}{unit} {number(milliseconds)} ms" for size, milliseconds in points)
    steepest = max(whole, last)
    return Row(f"growth: {what}", "", steepest, goal=f"at most {GOAL}", met=steepest <= GOAL, note=costs)


def median_of(rounds: int, once: Callable[[], float]) -> float:
    return statistics.median(once() for _ in range(rounds))


def window_growth(setting: Setting, what: str, size: int) -> Result:
    return run([setting.program("bench_growth"), what, str(size), str(min(setting.rounds, 5))],
               setting.folder("installation")).result


def entries(setting: Setting, size: int) -> float:
    return run([setting.program("bench_document"), str(size), str(setting.rounds)],
               setting.folder("installation")).result["ours"]


def installed(setting: Setting, size: int) -> float:
    folder = setting.folder("versions")
    result = run([setting.program("bench_versions"), str(size), str(setting.rounds)], folder).result
    shutil.rmtree(folder)
    return result["ours"]


def archive(setting: Setting, web: Web, size: int) -> float:
    """Processor time of a whole download."""
    large_file(web.root / "sized.zip", size * MIB)
    spent = median_of(3, lambda: download(setting, web.url + "sized/", size * MIB).figures["processor"])
    (web.root / "sized.zip").unlink()
    return spent


def members(setting: Setting, web: Web, count: int) -> float:
    """Processor time of unpacking so many files of a KiB."""
    path = web.root / "members.zip"
    client_archive(path, count * 1024, count)
    extractor = setting.programs.parent.parent / "unzip.exe"

    def unpack() -> float:
        folder = setting.folder("unpacked")
        empty_disk_queue()
        spent = run([extractor, path, "-d", folder / "client"], folder, prints_result=False).processor
        if sum(len(names) for _, _, names in os.walk(folder)) != count:
            sys.exit("files were left out")
        return spent

    spent = median_of(3, unpack)
    shutil.rmtree(setting.scratch / "unpacked")
    return spent


def screen(setting: Setting) -> Row:
    """By the number of pixels, not by the width."""
    widths = (974, 1920, 3840)
    results = {result["pixels"]: result["ours"] for result in (window_growth(setting, "screen", width)
                                                                for width in widths)}
    return growth("rescaling and painting, by pixels of the window", list(results), results.__getitem__)


def table_of_growth(setting: Setting, web: Web) -> list[Row]:
    quick = setting.quick
    versions = (100, 1_000, 10_000) if quick else (100, 1_000, 10_000, 100_000)
    return [
        growth("panel, by servers", (1, 10, 50, 100),
               lambda size: window_growth(setting, "servers", size)["ours"]),
        growth("news, by slides and tiles", (1, 3, 9), lambda size: window_growth(setting, "news", size)["ours"]),
        growth("document, by entries", (100, 1_000, 10_000, 19_000), lambda size: entries(setting, size)),
        growth("installed version, by versions", versions, lambda size: installed(setting, size)),
        growth("download, by the archive's size", (64, 128, 256) if quick else (64, 1024, 8192),
               lambda size: archive(setting, web, size), " MiB"),
        growth("unpacking, by members", versions, lambda count: members(setting, web, count)),
        screen(setting),
    ]
