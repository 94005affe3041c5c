"""Starting programs and measuring them from outside."""

from __future__ import annotations

import json
import os
import resource
import shutil
import statistics
import subprocess
import sys
import time
from collections.abc import Callable, Iterator, Sequence
from contextlib import contextmanager
from dataclasses import dataclass
from pathlib import Path
from typing import TypedDict

LIMIT_SECONDS = 600


def say(text: str) -> None:
    print(text, flush=True)


@dataclass
class Setting:
    """What all rows share."""

    programs: Path
    scratch: Path
    rounds: int
    quick: bool

    def program(self, name: str) -> str:
        return os.fspath(self.programs / name)

    def folder(self, name: str) -> Path:
        """An empty working folder."""
        folder = self.scratch / name
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        return folder


class Result(TypedDict, total=False):
    """What a benchmark tells when it ends; each tells some of it. Times are milliseconds, memory is KiB."""

    # On the clock that the programs share.
    at: float
    clicked: float
    ended: float
    # By the end, and by the click.
    processor: float
    processorBefore: float
    peak: int
    before: int
    anonymous: int
    # Two ways of doing the same, what each takes of the window's thread, and the first time.
    ours: float
    bare: float
    ourThread: float
    bareThread: float
    once: float
    samePicture: bool
    # How much was done, and what the window says.
    bytes: int
    pictures: int
    pixels: int
    read: int
    listed: int
    installed: str
    text: str
    # The time of each turn of the event loop, and what the window's thread had worked by then.
    turns: list[float]
    work: list[float]


@dataclass
class Ended:
    """How a program went."""

    started: float  # milliseconds, on the clock that the programs use too
    wall: float  # milliseconds
    processor: float  # milliseconds
    result: Result


def run(command: Sequence[str | Path], folder: Path, environment: dict[str, str] | None = None,
        prints_result: bool = True) -> Ended:
    """Runs a program to its end; the last line that it prints is its result as JSON."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    started = time.monotonic()
    try:
        ended = subprocess.run(
            command, cwd=folder, env={**os.environ, **(environment or {})}, timeout=LIMIT_SECONDS, check=False,
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE if prints_result else subprocess.DEVNULL,
            # The toolkit's complaints about the form's style sheets fill pages.
            stderr=subprocess.DEVNULL)
    except subprocess.TimeoutExpired:
        sys.exit(f"{' '.join(map(str, command))} did not end within {LIMIT_SECONDS} s")
    wall = (time.monotonic() - started) * 1000
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    if ended.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))} ended with {ended.returncode}")
    lines = ended.stdout.decode().splitlines() if prints_result else []
    processor = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return Ended(started * 1000, wall, processor * 1000, json.loads(lines[-1]) if lines else {})


def in_turn(rounds: int, *sides: Callable[[], dict[str, float]]) -> list[dict[str, float]]:
    """Medians of each side's figures. Whoever comes second finds the caches warm, so they take turns;
    the first round only warms up."""
    taken: list[list[dict[str, float]]] = [[] for _ in sides]
    for number in range(-1, rounds):
        order = range(len(sides)) if number % 2 else reversed(range(len(sides)))
        for place in order:
            figures = sides[place]()
            if number >= 0:
                taken[place].append(figures)
    return [{key: statistics.median(figures[key] for figures in side) for key in side[0]} for side in taken]


@contextmanager
def busy_neighbour() -> Iterator[None]:
    """Another program wants a processor all the time."""
    with subprocess.Popen([sys.executable, "-c", "while True: pass"], stdin=subprocess.DEVNULL) as neighbour:
        try:
            yield
        finally:
            neighbour.kill()


def wait_until(condition: Callable[[], bool], what: str, seconds: float = 30) -> None:
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            sys.exit(f"waited {seconds:g} s in vain: {what}")
        time.sleep(0.01)


def empty_disk_queue() -> None:
    """Nobody pays for what an earlier run left to be written."""
    os.sync()


def settle() -> None:
    """For runs that fill memory with files. What was just set free is given again faster than other
    memory until the machine has taken it back, within some two seconds: neither side may begin with
    more of it, however soon it begins."""
    empty_disk_queue()
    time.sleep(4)
