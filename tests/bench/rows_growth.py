"""How cost grows with what there is more of."""

from __future__ import annotations

import os
import shutil
from collections.abc import Callable, Sequence
from typing import NamedTuple

from bench_tools import Result, Setting, in_turn, run
from bench_world import MIB, client_archive, large_file
from rows_download import curl, download
from rows_unpack import compare
from table import Row, exponent, number
from web import Web

GOAL = 1.05


class Cost(NamedTuple):
    """Milliseconds."""

    ours: float
    # Of what does no more than must be done, where there is such a thing.
    bare: float | None = None


def steepest(sizes: Sequence[int], costs: Sequence[float]) -> float:
    """What most of the sizes have in common hides what the largest suffers from: the last step counts as
    well, and the steeper of both is told."""
    points = [(float(size), cost) for size, cost in zip(sizes, costs)]
    return max(exponent(points), exponent(points[-2:]))


def growth(what: str, sizes: Sequence[int], cost: Callable[[int], Cost], unit: str = "",
           counted: bool = False) -> Row:
    """With a goal, unless the same is counted in instructions, which judge it then."""
    costs = [cost(size) for size in sizes]
    bare = [cost.bare for cost in costs if cost.bare is not None]
    ours = steepest(sizes, [cost.ours for cost in costs])

    def told(of: Sequence[float]) -> str:
        return ", ".join(f"{size:,.0f}{unit} {number(milliseconds)} ms" for size, milliseconds in zip(sizes, of))

    note = told([cost.ours for cost in costs])
    return Row(f"growth: {what}", "", ours, steepest(sizes, bare) if bare else None, None,
               "by instructions" if counted else f"at most {GOAL}", None if counted else ours <= GOAL,
               f"{note}; yardstick {told(bare)}" if bare else note)


def window_growth(setting: Setting, what: str, size: int) -> Result:
    """Processor time of the window's thread, which decodes small pictures only."""
    return run([setting.program("bench_growth"), what, str(size), str(min(setting.rounds, 5))],
               setting.folder("installation")).result


def panel(setting: Setting, servers: int) -> Cost:
    return Cost(window_growth(setting, "servers", servers)["ours"])


def news(setting: Setting, items: int) -> Cost:
    return Cost(window_growth(setting, "news", items)["ours"])


def entries(setting: Setting, size: int) -> Cost:
    """Beside a bare pass of the toolkit's reader."""
    result = run([setting.program("bench_document"), str(size), str(setting.rounds)],
                 setting.folder("installation")).result
    return Cost(result["ours"], result["bare"])


def installed(setting: Setting, size: int) -> Cost:
    """Beside the bare listing."""
    folder = setting.folder("versions")
    result = run([setting.program("bench_versions"), str(size), str(setting.rounds)], folder).result
    shutil.rmtree(folder)
    return Cost(result["ours"], result["bare"])


def archive(setting: Setting, web: Web, size: int) -> Cost:
    """Processor time of a whole download, beside that of curl."""
    large_file(web.root / "sized.zip", size * MIB)
    ours, bare = in_turn(3, lambda: download(setting, web.url + "sized/", size * MIB).figures,
                         lambda: {"processor": curl(setting, web.url + "sized.zip", size * MIB).processor})
    (web.root / "sized.zip").unlink()
    return Cost(ours["processor"], bare["processor"])


def members(setting: Setting, web: Web, count: int) -> Cost:
    """Processor time of unpacking so many files of a KiB, beside the distribution's unzip."""
    path = web.root / "members.zip"
    client_archive(path, count * 1024, count)
    ours, bare = compare(setting, path, count, os.sched_getaffinity(0))
    return Cost(ours["processor"], bare["processor"])


def screen(setting: Setting) -> Row:
    """By the number of pixels, not by the width."""
    widths = (974, 1920, 3840)
    results = {result["pixels"]: result["ours"] for result in (window_growth(setting, "screen", width)
                                                                for width in widths)}
    return growth("rescaling and painting, by pixels of the window", list(results),
                  lambda pixels: Cost(results[pixels]))


def table_of_growth(setting: Setting, web: Web) -> list[Row]:
    quick = setting.quick
    versions = (100, 1_000, 10_000) if quick else (100, 1_000, 10_000, 100_000)
    return [
        growth("panel, by servers", (1, 10, 50, 100), lambda size: panel(setting, size), counted=True),
        growth("news, by slides and tiles", (1, 3, 9), lambda size: news(setting, size)),
        growth("document, by entries", (100, 1_000, 10_000, 19_000), lambda size: entries(setting, size),
               counted=True),
        growth("installed version, by versions", versions, lambda size: installed(setting, size),
               counted=True),
        growth("download, by the archive's size", (64, 128, 256) if quick else (64, 1024, 8192),
               lambda size: archive(setting, web, size), " MiB"),
        growth("unpacking, by members", (100, 10_000) if quick else (100, 10_000, 100_000),
               lambda count: members(setting, web, count)),
        screen(setting),
    ]
