#!/usr/bin/python3
"""Starts the real launcher where the disk, the extractor or the archive is not as it should be.

    disk.py --program LAUNCHER --extractor UNZIP --scratch FOLDER [--workers N] [--only TEXT] [--long]

Each case looks at what the window shows, what the console says and what lies on
the disk, starts the launcher once more, and makes sure that nothing beside the
installation folder has changed. One line per case, and at the end
"N passed, N failed".

Small and read-only disks are mounted where nobody else sees them. Where the
machine does not permit that, these cases are skipped.
"""

from __future__ import annotations

import argparse
import os
import shutil
import sys
import time
from pathlib import Path

# The folders that it imports from, beside its own.
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [os.fspath(ROOT / folder) for folder in ("demo", "tests/e2e")]

from diskcases import CASES
from diskjudge import DiskJudge
from faultserver import FaultServer
from platforms import Native
from testbed import BASE_URL, Testbed
from workers import Tally, run_workers


def work(given: argparse.Namespace, tally: Tally) -> None:
    testbed = Testbed(Native(given.program, given.extractor), given.scratch)
    server = None
    try:
        testbed.open()
        server = FaultServer(None, int(BASE_URL.rstrip("/").rpartition(":")[2]))
        judge = DiskJudge(testbed, server)
        cases = [case for case in CASES if given.only in case.name and (given.long or not case.room)]
        for number, case in enumerate(cases):
            if number % given.of != given.number:
                continue
            if case.mounts and not given.own_corner:
                tally.skipped(case.name, "nothing can be mounted here")
            elif shutil.disk_usage(testbed.scratch).free < case.room:
                tally.skipped(case.name, "the disk has no room for it")
            else:
                started = time.monotonic()
                verdict = judge.run(case.run)
                if judge.slow:
                    tally.note("too slow, so once more")
                    verdict = judge.run(case.run)
                tally.judged(case.name, verdict)
                tally.note(f"{time.monotonic() - started:.1f} s")
        tally.note(f"longest wait of a window: {testbed.longest * 1000:.0f} ms")
    finally:
        if server is not None:
            server.close()
        testbed.close()


def main() -> int:
    parser = argparse.ArgumentParser(description="Start the launcher where the disk is not as it should be.")
    parser.add_argument("--program", type=Path, required=True, help=f"the launcher, built for {BASE_URL}")
    parser.add_argument("--extractor", type=Path, required=True, help="the built extractor")
    parser.add_argument("--scratch", type=Path, required=True, help="folder for everything; emptied first")
    parser.add_argument("--workers", type=int, default=os.cpu_count())
    parser.add_argument("--only", default="", help="only cases whose name has this text")
    parser.add_argument("--long", action="store_true", help="those as well that take long and need room")
    return run_workers(parser, work)


if __name__ == "__main__":
    sys.exit(main())
