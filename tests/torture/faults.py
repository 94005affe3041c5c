#!/usr/bin/python3
"""Lets everything that the launcher fetches fail in every way, each in turn.

    faults.py --program LAUNCHER --extractor UNZIP --secure-program LAUNCHER --scratch FOLDER
              [--workers N] [--only TEXT]

A cell is one element (the document, a picture, a logo, the archive) with one
fault. The real launcher is started into it and has to do what it is to do: the
window handles its events promptly, what failed shows it in the way that is laid
down, everything else is there as if nothing had happened, and the close button
ends it in good order. One line per cell, and at the end "N passed, N failed".

Each worker has a loopback of its own, in which the launcher's fixed address is
free and a test authority is trusted. Where the machine does not permit that,
there is one worker, and the cells that need the authority are skipped.
"""

from __future__ import annotations

import argparse
import os
import sys
import time
from pathlib import Path

# The folders that it imports from, beside its own.
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [os.fspath(ROOT / folder) for folder in ("demo", "tests/e2e")]

from certificates import Certificates
from faultjudge import Judge
from faultplan import Launch, cell_name, launches
from faultserver import FaultServer
from namespaces import trust_only
from platforms import Native
from testbed import BASE_URL, Testbed
from workers import Tally, run_workers


def wanted(only: str) -> list[Launch]:
    return [
        launch
        for launch in launches()
        if any(only in cell_name(element, fault) for element, fault in (launch.faults or {"": ""}).items())
    ]


def work(given: argparse.Namespace, tally: Tally) -> None:
    testbed = Testbed(Native(given.program, given.extractor), given.scratch)
    programs = {False: given.program.resolve(), True: given.secure_program.resolve()}
    server = None
    try:
        testbed.open()
        certificates = Certificates(testbed.scratch / "authority")
        if given.own_corner:
            trust_only(certificates.trusted_folder())
        server = FaultServer(certificates, int(BASE_URL.rstrip("/").rpartition(":")[2]))
        judge = Judge(testbed, server)
        for number, launch in enumerate(wanted(given.only)):
            if number % given.of != given.number:
                continue
            if launch.needs_trust and not given.own_corner:
                for element, fault in launch.faults.items():
                    tally.skipped(cell_name(element, fault), "a test authority cannot be trusted here")
                continue
            testbed.platform.program = programs[launch.secure]
            started = time.monotonic()
            verdicts = judge.run(launch)
            if judge.slow:
                tally.note("too slow, so once more")
                verdicts = judge.run(launch)
            for element, verdict in verdicts.items():
                tally.judged(cell_name(element, launch.faults.get(element, "")), verdict)
            tally.note(f"launch {number}: {time.monotonic() - started:.1f} s")
        tally.note(f"longest wait of a window: {testbed.longest * 1000:.0f} ms")
    finally:
        if server is not None:
            server.close()
        testbed.close()


def main() -> int:
    parser = argparse.ArgumentParser(description="Let everything that the launcher fetches fail in every way.")
    parser.add_argument("--program", type=Path, required=True, help=f"the launcher, built for {BASE_URL}")
    parser.add_argument("--secure-program", type=Path, required=True, help="the same, built for https")
    parser.add_argument("--extractor", type=Path, required=True, help="the built extractor")
    parser.add_argument("--scratch", type=Path, required=True, help="folder for everything; emptied first")
    parser.add_argument("--workers", type=int, default=os.cpu_count())
    parser.add_argument("--only", default="", help="only launches with a cell whose name has this text")
    return run_workers(parser, work)


if __name__ == "__main__":
    sys.exit(main())
