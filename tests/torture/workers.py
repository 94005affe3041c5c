"""Shares the cells of a matrix among workers, each in a corner of the machine of its own."""

from __future__ import annotations

import argparse
import subprocess
import sys
import threading
from collections import Counter
from collections.abc import Callable
from pathlib import Path
from typing import IO

from make_world import WorldError, fresh_folder
from namespaces import enter, own_corner
from platforms import Native
from road import adopt_orphans
from scene import end_process, exit_on_terminate, say

PASSED, FAILED, SKIPPED = "passed", "FAILED", "skipped"


class Tally:
    """Tells how each cell ended, in lines that whoever shares out the work can count."""

    def judged(self, cell: str, verdict: str) -> None:
        say(f"  {cell}: {FAILED}: {verdict}" if verdict else f"  {cell}: {PASSED}")

    def skipped(self, cell: str, reason: str) -> None:
        say(f"  {cell}: {SKIPPED}: {reason}")

    def note(self, text: str) -> None:
        say(f"    ({text})")


def outcome(line: str) -> str:
    """How the cell ended that a line tells of; empty when it tells of something else."""
    if not line.startswith("  ") or line.startswith("   "):
        return ""
    words = line.strip().split(": ")
    return next((word for word in words if word in (PASSED, FAILED, SKIPPED)), "")


def summary(counted: Counter[str]) -> str:
    line = f"{counted[PASSED]} passed, {counted[FAILED]} failed"
    return f"{line}, {counted[SKIPPED]} skipped" if counted[SKIPPED] else line


def share_out(scratch: Path, workers: int) -> int:
    """Starts this program again, once per worker, and adds up what they tell."""
    corner = own_corner()
    if not corner:
        say("This machine does not permit namespaces: one worker, and some cells are skipped.")
        workers = 1
    fresh_folder(scratch)
    counted: Counter[str] = Counter()
    lock = threading.Lock()

    def listen(told: IO[str]) -> None:
        for line in told:
            with lock:
                say(line.rstrip("\n"))
                counted[outcome(line)] += 1

    running = []
    try:
        for number in range(workers):
            place: list[str | Path] = ["--worker", f"{number}/{workers}", "--scratch", scratch / f"worker-{number}"]
            if corner:
                place.append("--own-corner")
            worker = subprocess.Popen(
                [*corner, sys.executable, *sys.argv, *place],
                stdin=subprocess.DEVNULL,
                stdout=subprocess.PIPE,
                text=True,
                encoding="utf-8",
            )
            assert worker.stdout is not None
            thread = threading.Thread(target=listen, args=(worker.stdout,))
            thread.start()
            running.append((worker, thread))
        for worker, thread in running:
            thread.join()
            if worker.wait() != 0:
                say(f"  a worker: {FAILED}: it ended with {worker.returncode}")
                counted[FAILED] += 1
    finally:
        for worker, _ in running:
            end_process(worker, 20)
    say(summary(counted))
    return 1 if counted[FAILED] or not counted[PASSED] else 0


def run_workers(parser: argparse.ArgumentParser, work: Callable[[argparse.Namespace, Tally], None]) -> int:
    """The main program of a matrix: shares out, or is itself one of the workers."""
    parser.add_argument("--worker", help=argparse.SUPPRESS)
    parser.add_argument("--own-corner", action="store_true", help=argparse.SUPPRESS)
    given = parser.parse_args()
    given.scratch = given.scratch.resolve()
    exit_on_terminate()
    missing = Native(given.program, given.extractor).missing()
    if missing:
        say(f"missing: {', '.join(missing)}")
        return 1
    try:
        if given.worker is None:
            return share_out(given.scratch, max(1, given.workers))
        given.number, given.of = (int(word) for word in given.worker.split("/"))
        if given.own_corner:
            enter()
        adopt_orphans()
        work(given, Tally())
    except WorldError as error:
        print(error, file=sys.stderr)
        return 1
    return 0
