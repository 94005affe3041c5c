"""One launch in an installation folder that is not as it should be, and the start after it."""

from __future__ import annotations

import os
import subprocess
import time
from collections.abc import Callable
from pathlib import Path

from archives import contents, unpacked
from faultserver import FaultServer, Told
from namespaces import mount
from neighbour import Neighbour
from road import ACTION_BUTTON, SELECT_SERVER, SERVERS, RoadError, client_button
from testbed import ARCHIVE, BASE_URL, CHOICE, CLIENT, FAILED, FINISHED, RUNNING, SERVER, VERSION, SlowError, Testbed

SPEED = 12_000_000
NAME = Path(ARCHIVE).name
SUCCEEDED = "\nSucceeded.\n\n1/1 files downloaded successfully\n"
GIVEN_UP = "0/1 files downloaded successfully\n"


class DiskJudge:
    def __init__(self, testbed: Testbed, server: FaultServer):
        self.testbed = testbed
        self.server = server
        self.contents = testbed.published()
        self.original = self.contents[ARCHIVE]
        self.folder = testbed.installation
        self.version = self.folder / SERVER / CLIENT / VERSION
        self.neighbour = Neighbour(testbed.scratch)
        self.told = Told()
        self.extraction: tuple[float, float] | None = None
        self.mounted = False
        self.slow = False

    def run(self, case: Callable[[DiskJudge], None]) -> str:
        """What is wrong with a case; empty for nothing."""
        self.extraction = None
        self.slow = False
        self.told = Told(dict(self.contents), speeds={ARCHIVE: SPEED})
        self.testbed.fresh()
        try:
            case(self)
            self.testbed.check("nothing beside the installation folder changed", self.neighbour.is_unchanged())
        except RoadError as error:
            self.slow = isinstance(error, SlowError)
            self.testbed.explain_failure()
            return str(error)
        finally:
            self.testbed.end_launch()
            self.server.end()
            self.unmount()
        return ""

    # The folder

    def mount(self, size: int) -> None:
        """Puts a small disk in place of the installation folder."""
        mount("-t", "tmpfs", "-o", f"size={size},mode=755", "tmpfs", self.folder)
        self.mounted = True
        (self.folder / "unzip.exe").symlink_to(self.testbed.platform.extractor)

    def unmount(self) -> None:
        if self.mounted:
            subprocess.run(["umount", self.folder], check=True)
            self.mounted = False

    def fill(self, left: int) -> Path:
        """Takes all of the small disk but for so many bytes."""
        filler = self.folder / "filler"
        free = os.statvfs(self.folder)
        with filler.open("wb") as file:
            file.write(bytes(max(0, free.f_bavail * free.f_bsize - left)))
        return filler

    def free(self) -> int:
        told = os.statvfs(self.folder)
        return told.f_bavail * told.f_bsize

    def extractor(self, script: str, mode: int = 0o755) -> None:
        program = self.folder / "unzip.exe"
        program.unlink()
        program.write_text(f"#!/bin/sh\n{script}\n", encoding="ascii")
        program.chmod(mode)

    def archive(self, content: bytes) -> None:
        self.told.contents[ARCHIVE] = content

    # The launch

    def start(self) -> None:
        self.server.end()
        self.told = Told(self.told.contents, speeds=self.told.speeds)
        self.server.begin(self.told)
        self.testbed.start_launcher()
        self.testbed.ping()

    def choose(self, colour: str = "red", buttons: str = "download", beside: str = "", written: bool = True) -> None:
        """The first start: the panel, and a click on a client."""
        testbed = self.testbed
        self.start()
        testbed.wait_for("the columns of all servers", lambda: testbed.columns() == list(SERVERS))
        testbed.wait_for("the logos of all servers", lambda: all(testbed.shows_logo(server) for server in SERVERS))
        self.click_client(colour, buttons, beside)
        if written:
            testbed.wait_for("the choice in settings.txt", lambda: testbed.settings() == CHOICE)

    def click_client(self, colour: str, buttons: str, beside: str = "") -> None:
        self.testbed.click(client_button(SERVER, 0))
        self.testbed.wait_for_version(colour)
        self.testbed.wait_for_buttons(buttons, beside)
        self.testbed.wait_for_slide()

    def choose_again(self) -> None:
        """The way out of a download that never began."""
        self.testbed.click(SELECT_SERVER)
        self.testbed.wait_for("the panel", lambda: self.testbed.columns() == list(SERVERS))
        self.click_client("red", "download")

    def download(self, end: str, seconds: float = 30) -> str:
        """Clicks Download or Update; returns what came on the console until the given end."""
        testbed = self.testbed
        before = len(testbed.console())
        testbed.click(ACTION_BUTTON)
        testbed.wait_for(f"{end!r} on the console", lambda: testbed.console().endswith(end), seconds)
        # Unpacking blocks the window by design.
        if end == SUCCEEDED:
            self.extraction = self.told.sent.get(ARCHIVE, time.monotonic()) - 0.1, time.monotonic()
        return testbed.console()[before:]

    def download_finishes(self, files: dict[str, tuple[int, int]] | None, seconds: float = 30) -> None:
        """As far as the launcher can tell; `files` is what the version's folder has then, None: anything."""
        testbed = self.testbed
        said = self.download(SUCCEEDED, seconds)
        testbed.check("it says what it downloads", said.startswith(f"Downloading {BASE_URL[:-1]}{ARCHIVE}...\n"))
        testbed.wait_for_text(FINISHED)
        testbed.wait_for_version("green")
        testbed.wait_for_buttons("play")
        testbed.check("nothing on standard error", testbed.errors() == "")
        testbed.check("the version is there alone", testbed.versions(SERVER, CLIENT) == [VERSION])
        if files is not None:
            testbed.check("its files are what they should be", unpacked(self.version) == files)
        self.no_archive_is_left()

    def download_fails(self, reason: str, colour: str = "red") -> None:
        """The transfer ends with an error, and so does the download."""
        testbed = self.testbed
        self.download(GIVEN_UP)
        said = testbed.errors()
        testbed.check(f"the reason on standard error: {said!r}", said == f"Failed: {reason}\n")
        self.shows_failure(colour)
        testbed.check("no version is there", not self.version.exists())

    def nothing_to_unpack_into(self) -> None:
        """The transfer succeeds, and the download does not."""
        self.download(SUCCEEDED)
        self.testbed.check("nothing on standard error", self.testbed.errors() == "")
        self.shows_failure("red")

    def shows_failure(self, colour: str) -> None:
        self.testbed.wait_for_text(FAILED)
        self.testbed.wait_for_version(colour)
        self.testbed.wait_for_buttons("download-disabled")
        self.no_archive_is_left()

    def download_does_not_begin(self, name: str, reason: str) -> None:
        """The save file does not open: the window waits for the player to choose again."""
        testbed = self.testbed
        said = self.download(GIVEN_UP)
        testbed.check(f"nothing else on the console: {said!r}", said == GIVEN_UP)
        address = f"{BASE_URL}clients/{name}"
        told = f"Problem opening save file '{name}' for download '{address}': {reason}\n"
        testbed.check(f"the reason on standard error: {testbed.errors()!r}", testbed.errors() == told)
        testbed.wait_for_text(RUNNING)
        testbed.wait_for_buttons("download-disabled")
        testbed.check("it was not asked for", f"/clients/{name}" not in self.told.requests)
        self.choose_again()

    def no_archive_is_left(self) -> None:
        left = [path.name for path in self.folder.glob("*.zip*") if path.is_file()]
        self.testbed.check(f"no archive is left ({left})", not left)

    def leave(self) -> None:
        self.testbed.check_promptness(self.extraction)
        self.testbed.leave()

    def next_start(self, colour: str, buttons: str) -> None:
        """The choice is remembered, and what lies on the disk is what is shown."""
        self.extraction = None
        self.start()
        self.testbed.wait_for_version(colour)
        self.testbed.wait_for_buttons(buttons)
        self.testbed.wait_for_slide()
        self.leave()
        self.testbed.check("settings.txt has the choice", self.testbed.settings() == CHOICE)

    def whole(self) -> dict[str, tuple[int, int]]:
        return contents(self.told.contents[ARCHIVE])
