"""Downloading and installing, and how the window feels meanwhile."""

from __future__ import annotations

import json
import os
import shutil
import statistics
import sys
import time
from collections.abc import Callable
from pathlib import Path
from typing import NamedTuple

from bench_tools import Ended, Result, Setting, busy_neighbour, empty_disk_queue, in_turn, run, settle
from bench_world import MIB, REMEMBERED, REPOSITORY, client_archive, large_file
from table import Row, at_least, at_most, limited, stated
from web import Web

GIB = 1024 * MIB


def installation(setting: Setting, extractor: str) -> Path:
    """A folder in which a choice is remembered and nothing is installed."""
    folder = setting.folder("installation")
    (folder / "settings.txt").write_text(REMEMBERED, encoding="ascii")
    (folder / "unzip.exe").symlink_to(extractor)
    return folder


class Download(NamedTuple):
    figures: dict[str, float]
    result: Result
    # When the archive was complete.
    complete: float


def download(setting: Setting, url: str, size: int, until: str = "download",
             environment: dict[str, str] | None = None) -> Download:
    """The player's click and what follows, up to the moment at which the archive is complete."""
    folder = installation(setting, setting.program("stamp"))
    empty_disk_queue()
    result = run([setting.program("bench_window"), url, until], folder, environment).result
    stamp: Result = json.loads((folder / "stamp.json").read_text(encoding="utf-8"))
    if stamp["bytes"] != size:
        sys.exit(f"{stamp['bytes']} bytes arrived instead of {size}")
    figures = {"wall": stamp["at"] - result["clicked"],
               "processor": stamp["processor"] - result["processorBefore"],
               "growth": (result["peak"] - result["before"]) / 1024,
               "peak": result["peak"] / 1024}
    return Download(figures, result, stamp["at"])


def curl(setting: Setting, address: str, size: int) -> Ended:
    folder = setting.folder("fetched")
    empty_disk_queue()
    ended = run(["curl", "-s", "-f", "-o", "client.zip", address], folder, prints_result=False)
    if (folder / "client.zip").stat().st_size != size:
        sys.exit("curl fetched a part only")
    (folder / "client.zip").unlink()
    return ended


def beside_curl(setting: Setting, web: Web, size: int) -> list[dict[str, float]]:
    large_file(web.root / "plain.zip", size)

    def fetch() -> dict[str, float]:
        ended = curl(setting, web.url + "plain.zip", size)
        return {"wall": ended.wall, "processor": ended.processor}

    return in_turn(setting.rounds, lambda: download(setting, web.url + "plain/", size).figures, fetch)


def downloads(setting: Setting, web: Web) -> list[Row]:
    size = GIB // 8 if setting.quick else GIB
    small, large = 64 * MIB, size * 4
    large_file(web.root / "small.zip", small)
    large_file(web.root / "large.zip", large)

    ours, bare = beside_curl(setting, web, size)
    few, many = in_turn(3, lambda: download(setting, web.url + "small/", small).figures,
                        lambda: download(setting, web.url + "large/", large).figures)
    (web.root / "large.zip").unlink()
    shutil.rmtree(setting.scratch / "installation")
    what = f"download: {size // MIB:,} MiB"
    spread = max(few["growth"], many["growth"], ours["growth"]) - min(few["growth"], many["growth"], ours["growth"])
    return [
        at_most(f"{what}, time", "ms", ours["wall"], bare["wall"], 0.7),
        at_most(f"{what}, processor time", "ms", ours["processor"], bare["processor"], 0.7),
        limited(f"{what}, peak memory grows by", "MiB", ours["growth"], 16),
        limited(f"download: {small // MIB:,} MiB, peak memory grows by", "MiB", few["growth"], 16),
        limited(f"download: {large // MIB:,} MiB, peak memory grows by", "MiB", many["growth"], 16,
                f"peak {many['peak']:.0f} MiB with the whole window"),
        # A few buffers more or less at the moment of the peak are no growth with the size.
        limited("download: difference between these three", "MiB", spread, 2),
    ]


def beside_neighbour(setting: Setting, web: Web) -> list[Row]:
    size = GIB // 8 if setting.quick else GIB
    with busy_neighbour():
        ours, bare = beside_curl(setting, web, size)
    what = f"download: {size // MIB:,} MiB beside a program that never rests"
    return [at_most(f"{what}, processor time", "ms", ours["processor"], bare["processor"], 0.7),
            stated(f"{what}, time", "ms", ours["wall"], bare["wall"])]


def slow_window(setting: Setting, web: Web) -> list[Row]:
    """A fast line, and a window that comes to its bytes only now and then."""
    size = 64 * MIB if setting.quick else 256 * MIB
    large_file(web.root / "sized.zip", size)

    def turns_of(length: int) -> Callable[[], dict[str, float]]:
        return lambda: download(setting, web.url + "sized/", size, f"turns{length}").figures

    lengths = (10, 30)
    rows = []
    for length, figures in zip(lengths, in_turn(min(setting.rounds, 7), *map(turns_of, lengths))):
        what = f"download: {size // MIB:,} MiB, turns of the window take {length} ms"
        # 119 MiB/s are a gigabit.
        rows.append(at_least(what, "MiB/s", size / MIB / (figures["wall"] / 1000), 120))
        rows.append(limited(f"{what}, peak memory grows by", "MiB", figures["growth"], 16))
    return rows


def slow_disk(setting: Setting, web: Web) -> list[Row]:
    size = 64 * MIB if setting.quick else 256 * MIB
    large_file(web.root / "plain.zip", GIB // 8 if setting.quick else GIB)
    name = "small" if setting.quick else "slow"
    large_file(web.root / f"{name}.zip", size)
    rate = 64 * MIB
    if name == "slow":
        text = (web.root / "small" / "launcher.xml").read_text(encoding="utf-8")
        (web.root / "large" / "launcher.xml").write_text(text.replace("small.zip", "slow.zip"), encoding="utf-8")
    slow = {"LD_PRELOAD": setting.program("slow_disk.so"), "SLOW_DISK_BYTES_PER_SECOND": str(rate)}

    def plain() -> dict[str, float]:
        folder = setting.folder("fetched")
        ended = run([setting.program("plain_download"), f"{web.url}{name}.zip", "client.zip"], folder, slow)
        if ended.result["bytes"] != size:
            sys.exit("the plain way fetched a part only")
        return {"growth": (ended.result["peak"] - ended.result["before"]) / 1024}

    document = "small/" if setting.quick else "large/"
    ours, bare = in_turn(min(setting.rounds, 7),
                         lambda: download(setting, web.url + document, size, environment=slow).figures, plain)
    seconds = ours["wall"] / 1000
    if seconds < 0.9 * size / rate:
        sys.exit("the disk was not slow")
    row = limited(f"slow disk: {size // MIB} MiB at {rate // MIB} MiB/s, peak memory grows by", "MiB",
                  ours["growth"], 16, f"took {seconds:.1f} s; the yardstick takes all that arrives into memory")
    row.yardstick = bare["growth"]
    return [row]


def install(setting: Setting, web: Web) -> list[Row]:
    size, files = (64 * MIB, 500) if setting.quick else (GIB, 5000)
    client_archive(web.root / "client.zip", size, files)

    extractor = setting.programs.parent.parent / "unzip.exe"

    def count(folder: Path) -> int:
        return sum(len(names) for _, _, names in os.walk(folder))

    def ours() -> dict[str, float]:
        folder = installation(setting, os.fspath(REPOSITORY / "tests" / "bench" / "timed-unzip.sh"))
        settle()
        result = run([setting.program("bench_window"), web.url, "download"], folder,
                     {"TIMED_UNZIP": os.fspath(extractor)}).result
        client = folder / "Cinderfall" / "Official" / "2.1.4"
        if count(client) != files or list(folder.glob("*.zip")):
            sys.exit(f"the installation failed: {result['text']}")
        begun, ended = (folder / "unzipped").read_text(encoding="ascii").split()
        unzip = (float(ended) - float(begun)) * 1000
        shutil.rmtree(folder)
        wall = result["ended"] - result["clicked"]
        return {"wall": wall, "unzip": unzip, "rest": wall - unzip}

    def one_after_the_other() -> dict[str, float]:
        folder = setting.folder("fetched")
        settle()
        begin = time.monotonic()
        run(["curl", "-s", "-f", "-o", "client.zip", web.url + "client.zip"], folder, prints_result=False)
        unzip = run(["unzip", folder / "client.zip", "-d", folder / "client"], folder, prints_result=False).wall
        wall = (time.monotonic() - begin) * 1000
        if count(folder / "client") != files:
            sys.exit("unzip left files out")
        shutil.rmtree(folder)
        return {"wall": wall, "unzip": unzip, "rest": wall - unzip}

    launcher, tools = in_turn(setting.rounds, ours, one_after_the_other)
    archive = (web.root / "client.zip").stat().st_size
    what = f"install: {size // MIB:,} MiB in {files:,} files"
    return [at_most(what, "ms", launcher["wall"], tools["wall"], 0.5,
                    f"the archive has {archive // MIB} MiB; unpacking alone {launcher['unzip']:,.0f} and "
                    f"{tools['unzip']:,.0f} ms"),
            stated(f"{what}, all but unpacking", "ms", launcher["rest"], tools["rest"])]


def percentile(values: list[float], part: float) -> float:
    ordered = sorted(values)
    return ordered[min(len(ordered) - 1, int(len(ordered) * part))]


def gaps_of(times: list[float], without: float = -1) -> list[float]:
    """Between each two turns, but for the gap in which that moment lies."""
    return [end - begin for begin, end in zip(times, times[1:]) if not begin <= without <= end]


class Gaps(NamedTuple):
    number: int
    high: float  # the 99.9th percentile
    longest: float  # the median of the runs
    note: str


def gaps_in(runs: list[list[float]]) -> Gaps:
    every = [gap for gaps in runs for gap in gaps]
    longest = [max(gaps) for gaps in runs]
    return Gaps(len(every), percentile(every, 0.999), statistics.median(longest),
                f"99th percentile {percentile(every, 0.99):.1f} ms; longest of all {max(longest):.1f} ms")


def gap_rows(what: str, runs: list[list[float]], note: str, bare: list[list[float]] | None = None) -> list[Row]:
    ours = gaps_in(runs)
    rows = [limited(f"{what}: gap between two turns, 99.9th percentile", "ms", ours.high, 12,
                    f"{ours.number:,} gaps in {len(runs)} runs; {note}"),
            limited(f"{what}: longest gap, median of the runs", "ms", ours.longest, 25, ours.note)]
    if bare:
        yardstick = gaps_in(bare)
        rows[0].yardstick, rows[1].yardstick = yardstick.high, yardstick.longest
    return rows


def responsiveness(setting: Setting, web: Web) -> list[Row]:
    size = GIB // 8 if setting.quick else GIB
    large_file(web.root / "plain.zip", size)
    downloading: list[list[float]] = []
    pulled: list[list[float]] = []
    bare: list[list[float]] = []
    work: list[float] = []
    pictures = 0
    for _ in range(setting.rounds):
        # Unpacking blocks by design: the gap that it lies in is left out.
        _, result, extraction = download(setting, web.url + "late/", size, "busy")
        downloading.append(gaps_of(result["turns"], extraction))
        work += [end - begin for begin, end, time_of, next_time in
                 zip(result["work"], result["work"][1:], result["turns"], result["turns"][1:])
                 if not time_of <= extraction <= next_time]
        pictures = result["pictures"]
        rescaling = run([setting.program("bench_window"), web.url, "pulled"], setting.folder("installation")).result
        pulled.append(gaps_of(rescaling["turns"]))
        window = run([setting.program("bench_bare_window"), "pulled"], setting.folder("installation")).result
        bare.append(gaps_of(window["turns"]))
    return [*gap_rows("responsiveness", downloading,
                      f"{pictures} pictures arrive meanwhile; work of the window's thread in a gap: "
                      f"{percentile(work, 0.999):.1f} ms, at most {max(work):.1f} ms"),
            *gap_rows("rescale", pulled, "steps of 7 x 5 pixels, 60 in a second; the yardstick is the bare window, "
                      "pulled in the same way", bare)]
