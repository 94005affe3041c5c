"""What the launcher makes of an archive that comes with a fault."""

from __future__ import annotations

import re
import time
from pathlib import Path

from certificates import REFUSED_CERTIFICATES
from faultserver import (
    DRIP,
    ENDLESS,
    LENGTH_TOO_GREAT,
    NO_LENGTH,
    NOT_FOUND,
    REFUSED,
    RESET,
    SERVER_ERROR,
    STALL,
    WHOLE,
    Told,
)
from road import ACTION_BUTTON
from testbed import ARCHIVE, CLIENT, FAILED, FINISHED, RUNNING, SERVER, VERSION, Testbed

# A word of the toolkit's own text about each failure of the archive.
REASONS = {
    REFUSED: "refused",
    RESET: "closed",
    LENGTH_TOO_GREAT: "closed",
    NOT_FOUND: "Not Found",
    SERVER_ERROR: "Internal Server Error",
    **dict.fromkeys(REFUSED_CERTIFICATES, "SSL handshake failed"),
}

# An archive takes half a second when nothing is wrong with it.
ARCHIVE_BYTES_PER_SECOND = 12_000_000


class ArchiveJudge:
    def __init__(self, testbed: Testbed, told: Told):
        self.testbed = testbed
        self.told = told
        # While the archive was unpacked, which blocks the window by design.
        self.extraction: tuple[float, float] | None = None

    def judge(self, fault: str, address: str, said: str) -> None:
        """Clicks Download and sees what comes of it; `said` is what the console has already."""
        self.testbed.click(ACTION_BUTTON)
        begun = f"{said}Downloading {address}...\n"
        self.testbed.wait_for("the download on the console", lambda: self.testbed.console().startswith(begun))
        if fault in ENDLESS:
            self.stays_under_way(fault)
        else:
            self.comes_to_an_end(fault, begun)

    def stays_under_way(self, fault: str) -> None:
        testbed = self.testbed
        if fault == DRIP:
            testbed.wait_for("some bytes to be on their way", lambda: self.told.dripped >= 2)
        else:
            # The toolkit may keep the last tenth of a second to itself.
            testbed.wait_for("nearly half of the bar", lambda: 0.25 < testbed.filled_part() < 0.55)
        testbed.watch()
        testbed.wait_for_text(RUNNING + ":", whole=False)
        testbed.wait_for_buttons("download-disabled")
        part = testbed.filled_part()
        testbed.check(f"the bar stands ({part:.0%})", 0.25 < part < 0.55 if fault == STALL else part < 0.05)
        testbed.check("the archive is on its way", testbed.archives() == [Path(ARCHIVE).name])
        testbed.check("nothing on standard error", testbed.errors() == "")
        testbed.check("nothing is unpacked", testbed.versions(SERVER, CLIENT) == [])

    def comes_to_an_end(self, fault: str, begun: str) -> None:
        testbed = self.testbed
        failed = fault in REASONS
        end = f"{'0' if failed else '1'}/1 files downloaded successfully\n"
        testbed.wait_for("the end on the console", lambda: testbed.console().endswith(end), 30)
        if not failed:
            self.extraction = self.told.sent.get(ARCHIVE, time.monotonic()) - 0.1, time.monotonic()
        between = testbed.console()[len(begun) : -len(end)]
        if failed:
            # Progress, if any; then the line end of the bar.
            testbed.check(
                f"the console has nothing but progress: {between!r}",
                between.endswith("\n") and "\n" not in between[:-1],
            )
            said = testbed.errors()
            testbed.check(
                f"the reason on standard error: {said!r}",
                re.fullmatch(r"Failed: .+\n", said) and REASONS[fault] in said,
            )
        else:
            testbed.check(f"success on the console: {between!r}", between.endswith("\nSucceeded.\n\n"))
            testbed.check("nothing on standard error", testbed.errors() == "")
        if fault in WHOLE and not failed:
            testbed.wait_for_text(FINISHED)
            testbed.wait_for_version("green")
            testbed.wait_for_buttons("play")
            testbed.check("the version is there", testbed.versions(SERVER, CLIENT) == [VERSION])
            testbed.check("all files are those of the archive", testbed.same_as_archive(SERVER, CLIENT, VERSION))
        else:
            # What arrived and is no whole archive is refused by the extractor, with the same end.
            testbed.wait_for_text(FAILED)
            testbed.wait_for_version("red")
            testbed.wait_for_buttons("download-disabled")
            testbed.check("no version is there", testbed.versions(SERVER, CLIENT) == [])
        if fault == NO_LENGTH:
            testbed.check(f"the bar moved without an end in sight: {between!r}", re.search(r"\r\[ +### +\]", between))
        testbed.check("no archive is left", testbed.archives() == [])
        testbed.check("the bar is gone", testbed.filled_part() == 0)
