"""Unpacking alone: the extractor beside the distribution's."""

from __future__ import annotations

import os
import random
import shutil
import statistics
import sys
import time
import zipfile
from pathlib import Path

from bench_tools import Setting, settle
from bench_world import MIB, client_archive
from table import Row, at_most, limited, stated
from web import Web


def one_file(path: Path, size: int) -> None:
    """An archive of one file of so many bytes, half of which can be compressed."""
    if path.exists() and path.with_suffix(".made").exists():
        return
    source = random.Random(3)
    noise = source.randbytes(4 * MIB)
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=1) as archive:
        with archive.open("data/world.pak", "w", force_zip64=True) as out:
            for _ in range(size // MIB):
                begin = source.randrange(3 * MIB)
                out.write(noise[begin : begin + MIB // 2])
                out.write((b"embers in the wind, " * (MIB // 40 + 1))[: MIB // 2])
    path.with_suffix(".made").touch()


def unpack(command: list[str | Path], processors: set[int]) -> dict[str, float]:
    """Wall and processor time in ms, peak memory in MiB."""
    settle()
    started = time.monotonic()
    child = os.fork()
    if child == 0:
        os.sched_setaffinity(0, processors)
        os.execvp(command[0], [os.fspath(part) for part in command])
    _, status, usage = os.wait4(child, 0)
    wall = (time.monotonic() - started) * 1000
    if status != 0:
        sys.exit(f"{command[0]} ended with {status}")
    return {"wall": wall, "processor": (usage.ru_utime + usage.ru_stime) * 1000, "peak": usage.ru_maxrss / 1024}


def compare(setting: Setting, archive: Path, files: int, processors: set[int]) -> list[dict[str, float]]:
    """Medians of both sides, which take turns. Everything stays until the end: where many files were
    just removed, this file system searches for new ones for seconds, on whoever comes next."""
    extractor = setting.programs.parent.parent / "unzip.exe"
    folder = setting.folder("unpacked")
    sides: list[list[dict[str, float]]] = [[], []]
    for number in range(-1, 3):
        for side in (0, 1) if number % 2 else (1, 0):
            target = folder / f"{number}-{side}"
            command: list[str | Path] = [extractor] if side == 0 else ["unzip", "-qq"]
            figures = unpack([*command, archive, "-d", target], processors)
            if sum(len(names) for _, _, names in os.walk(target)) != files:
                sys.exit("files were left out")
            if number >= 0:
                sides[side].append(figures)
    shutil.rmtree(folder)
    return [{key: statistics.median(one[key] for one in side) for key in side[0]} for side in sides]


def unpacking(setting: Setting, web: Web) -> list[Row]:
    part = 16 if setting.quick else 1
    world = web.root
    many, one, small = world / "many.zip", world / "one.zip", world / "small-files.zip"
    client_archive(many, 1024 * MIB // part, 5000 // part)
    one_file(one, 2048 * MIB // part)
    client_archive(small, 100_000 // part * 1024, 100_000 // part)
    all_processors = os.sched_getaffinity(0)
    rows: list[Row] = []
    for archive, files, what, wall, processor in (
            (many, 5000 // part, f"unpack: {1024 // part:,} MiB in {5000 // part:,} files", 0.45, 0.6),
            (one, 1, f"unpack: one file of {2048 // part:,} MiB", 0.8, None),
            (small, 100_000 // part, f"unpack: {100_000 // part:,} files of 1 KiB", 0.7, None)):
        ours, theirs = compare(setting, archive, files, all_processors)
        rows.append(at_most(f"{what}, time", "ms", ours["wall"], theirs["wall"], wall))
        name = f"{what}, processor time"
        rows.append(stated(name, "ms", ours["processor"], theirs["processor"]) if processor is None
                    else at_most(name, "ms", ours["processor"], theirs["processor"], processor))
        rows.append(limited(f"{what}, peak memory", "MiB", ours["peak"], 96))
    ours, theirs = compare(setting, many, 5000 // part, {min(all_processors)})
    rows.append(stated(f"unpack: {1024 // part:,} MiB in {5000 // part:,} files, on one processor", "ms",
                       ours["wall"], theirs["wall"]))
    return rows
