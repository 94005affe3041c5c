#!/usr/bin/python3
"""Kills the real launcher at random moments, and looks what the next start makes of it.

    kills.py --program LAUNCHER --extractor UNZIP --base-url URL --scratch FOLDER [--kills N] [--seed N]

The installation folder lives on from one kill to the next, as a player's does.
After each kill the next start has to work, to show what lies on the disk, and to
end in good order; and nothing beside the installation folder may have changed.
One line per kill, one per kind of moment, and at the end "N passed, N failed".
"""

from __future__ import annotations

import argparse
import contextlib
import os
import random
import shutil
import signal
import sys
import time
from collections import Counter
from functools import partial
from pathlib import Path

# The folders that it imports from, beside its own.
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [os.fspath(ROOT / folder) for folder in ("demo", "tests/e2e")]

from archives import contents, unpacked
from neighbour import Neighbour
from platforms import Native
from road import (
    ACTION_BUTTON,
    CLOSE_BUTTON,
    SELECT_SERVER,
    Road,
    RoadError,
    adopt_orphans,
    children,
    client_button,
    ended,
)
from scene import exit_on_terminate, say
from testbed import ARCHIVE, CHOICE, CLIENT, SERVER, VERSION

# A faster server than the demo's, whose archive takes about a second.
BYTES_PER_SECOND = 6_000_000


class Torture(Road):
    platform: Native

    def __init__(self, platform: Native, base_url: str, scratch: Path, seed: int):
        super().__init__(platform, base_url, scratch / "pictures", scratch / "road")
        self.random = random.Random(seed)
        self.whole: dict[str, tuple[int, int]] = {}

    def prepare(self) -> None:
        self.beside = Neighbour(self.scratch)
        self.world.stop()
        self.world.start(BYTES_PER_SECOND)
        self.whole = contents((self.world.folder / ARCHIVE.lstrip("/")).read_bytes())

    def installed(self) -> Path:
        return self.installation / SERVER / CLIENT / VERSION

    def pause(self, longest: float) -> None:
        """Lets the launcher go on for a random time: the moment of the kill is the test."""
        time.sleep(self.random.uniform(0, longest))

    def kill(self) -> None:
        launcher = self.running()
        launcher.send_signal(signal.SIGKILL)
        launcher.wait()
        self.launcher = None
        # An extractor that was at work goes on alone for as long as it takes.
        own = {self.world.process, *self.screen.processes()}
        for number in children():
            if number in own:
                continue
            # Killed within the microseconds in which the toolkit starts another program: what was
            # to become that program waits for ever for a word of its parent. It holds nothing.
            if self.is_half_started(number):
                say("    (a half-started extractor was left behind, and is ended here)")
                os.kill(number, signal.SIGKILL)
            self.wait_for("the launcher's children to end", partial(ended, number), 30, watch=False)

    def is_half_started(self, number: int) -> bool:
        """Whether a process is still a copy of the launcher, a while after it was left alone."""
        for _ in range(40):
            time.sleep(0.05)
            try:
                if os.readlink(f"/proc/{number}/exe") != os.fspath(self.platform.program):
                    return False
            except (FileNotFoundError, ProcessLookupError):
                return False
        return True

    # The moments

    def during_start(self) -> None:
        """Document, its copy, pictures and their files: all in the first half second."""
        for name in [*self.installation.glob("*.png"), self.installation / "offline.txt"]:
            if self.random.random() < 0.5:
                name.unlink(missing_ok=True)
        self.start_unseen()
        self.pause(0.8)
        self.kill()

    def begin_download(self) -> None:
        shutil.rmtree(self.installed(), ignore_errors=True)
        self.start_launcher()
        self.wait_for_version("red")
        self.wait_for_buttons("download")
        self.click(ACTION_BUTTON)

    def during_download(self) -> None:
        self.begin_download()
        self.wait_for("the archive to arrive", self.archives)
        self.pause(0.9)
        self.kill()

    def during_extraction(self) -> None:
        self.begin_download()
        # The launcher makes the version's folder, and the extractor removes it and makes another beside.
        around = self.installed().parent
        self.wait_for("the extractor", lambda: self.installed().is_dir() or any(around.glob(".unzip-*")))
        self.pause(0.1)
        self.kill()

    def during_extraction_at_once(self) -> None:
        self.begin_download()
        launcher = self.running().pid
        ends = time.monotonic() + 30
        # Watched without a rest: the extractor is at work for a few hundredths of a second.
        while not (working := Path(f"/proc/{launcher}/task/{launcher}/children").read_text(encoding="ascii")):
            self.check("the extractor is started", time.monotonic() < ends)
        self.pause(0.08)
        self.running().send_signal(signal.SIGKILL)
        with contextlib.suppress(ProcessLookupError):
            os.kill(int(working.split()[0]), signal.SIGKILL)
        self.kill()

    def during_settings(self) -> None:
        """The close button writes settings.txt; the kill comes right behind the click."""
        self.start_launcher()
        self.wait_for("the choice to be applied", self.version_colour)
        self.screen.click(*self.on_screen(CLOSE_BUTTON).centre)
        self.pause(0.06)
        self.kill()

    def during_choice(self) -> None:
        self.start_launcher()
        self.wait_for("the choice to be applied", self.version_colour)
        self.click(SELECT_SERVER)
        self.wait_for("the panel", lambda: self.client_button_at(SERVER, 0) == CLIENT)
        self.screen.click(*self.on_screen(client_button(SERVER, 0)).centre)
        self.pause(0.06)
        self.kill()

    # What has to hold afterwards

    def look(self) -> None:
        self.check("nothing beside the installation folder changed", self.beside.is_unchanged())
        # Before the start: a launcher that applies a remembered choice writes it anew. Replaced as a
        # whole, the file never lost the choice.
        self.check("settings.txt kept the choice", self.settings() == CHOICE)
        self.start_launcher()
        self.check("the client is whole or not there", unpacked(self.installed()) in ({}, self.whole))
        # What lies on the disk is what the launcher shows.
        there = self.installed().is_dir()
        self.wait_for_version("green" if there else "red")
        self.wait_for_buttons("play" if there else "download")
        self.close_by_button()
        self.check("settings.txt has the choice", self.settings() == CHOICE)

    def choose(self) -> None:
        """The choice as the player left it, for the next moment."""
        (self.installation / "settings.txt").write_text(CHOICE, encoding="ascii")

    def last_look(self) -> None:
        """After all of it a download makes everything good."""
        self.begin_download()
        self.wait_for("the unpacked client", lambda: self.version_colour() == "green", 60)
        self.check("all files are those of the archive", self.same_as_archive(SERVER, CLIENT, VERSION))
        self.check("no archive is left", not self.archives())
        left = [path.name for path in self.installed().parent.iterdir()]
        self.check(f"nothing of the broken-off ones is left ({left})", left == [VERSION])
        self.close_by_button()


def main() -> int:
    parser = argparse.ArgumentParser(description="Kill the real launcher at random moments.")
    parser.add_argument("--program", type=Path, required=True, help="the launcher, built for the base URL")
    parser.add_argument("--base-url", required=True)
    parser.add_argument("--extractor", type=Path, required=True, help="the built extractor")
    parser.add_argument("--scratch", type=Path, required=True, help="folder for everything; emptied first")
    parser.add_argument("--kills", type=int, default=20)
    parser.add_argument("--seed", type=int, default=int(time.time()), help="the same moments again, roughly")
    given = parser.parse_args()

    exit_on_terminate()
    platform = Native(given.program, given.extractor)
    missing = platform.missing()
    if missing:
        say(f"kills.py: missing: {', '.join(missing)}")
        return 1
    torture = Torture(platform, given.base_url, given.scratch.resolve(), given.seed)
    moments = [
        torture.during_start,
        torture.during_download,
        torture.during_extraction,
        torture.during_extraction_at_once,
        torture.during_settings,
        torture.during_choice,
    ]
    passed: Counter[str] = Counter()
    failed: Counter[str] = Counter()
    try:
        adopt_orphans()
        torture.open()
        torture.prepare()
        say(f"{given.kills} kills, seed {given.seed}")
        torture.choose()
        for number in range(1, given.kills + 1):
            moment = moments[(number - 1) % len(moments)]
            name = moment.__name__.replace("_", " ")
            try:
                moment()
                torture.look()
            except RoadError as error:
                failed[name] += 1
                say(f"  kill {number}, {name}: FAILED: {error}")
                torture.explain_failure()
                if torture.launcher is not None:
                    torture.kill()
                torture.choose()
            else:
                passed[name] += 1
                say(f"  kill {number}, {name}: survived")
        try:
            torture.last_look()
        except RoadError as error:
            failed["the last download"] += 1
            say(f"  the last download: FAILED: {error}")
            torture.explain_failure()
        else:
            passed["the last download"] += 1
    finally:
        torture.close()
    for name in sorted(passed | failed):
        say(f"{name}: {passed[name]} survived, {failed[name]} failed")
    say(f"{passed.total()} passed, {failed.total()} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
