"""What the launcher makes of an archive that comes with a fault."""

from __future__ import annotations

import re
import time
from pathlib import Path

from bench import ARCHIVE, CLIENT, FAILED, FINISHED, RUNNING, SERVER, VERSION, Bench
from certificates import REFUSED_CERTIFICATES
from drive import ACTION_BUTTON
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
    def __init__(self, bench: Bench, told: Told):
        self.bench = bench
        self.told = told
        # While the archive was unpacked, which blocks the window by design.
        self.extraction: tuple[float, float] | None = None

    def judge(self, fault: str, address: str, said: str) -> None:
        """Clicks Download and sees what comes of it; `said` is what the console has already."""
        self.bench.click(ACTION_BUTTON)
        begun = f"{said}Downloading {address}...\n"
        self.bench.wait_for("the download on the console", lambda: self.bench.console().startswith(begun))
        if fault in ENDLESS:
            self.stays_under_way(fault)
        else:
            self.comes_to_an_end(fault, begun)

    def stays_under_way(self, fault: str) -> None:
        bench = self.bench
        if fault == DRIP:
            bench.wait_for("some bytes to be on their way", lambda: self.told.dripped >= 2)
        else:
            # The toolkit may keep the last tenth of a second to itself.
            bench.wait_for("nearly half of the bar", lambda: 0.25 < bench.filled_part() < 0.55)
        bench.watch()
        bench.wait_for_text(RUNNING + ":", whole=False)
        bench.wait_for_buttons("download-disabled")
        part = bench.filled_part()
        bench.check(f"the bar stands ({part:.0%})", 0.25 < part < 0.55 if fault == STALL else part < 0.05)
        bench.check("the archive is on its way", bench.archives() == [Path(ARCHIVE).name])
        bench.check("nothing on standard error", bench.errors() == "")
        bench.check("nothing is unpacked", bench.versions(SERVER, CLIENT) == [])

    def comes_to_an_end(self, fault: str, begun: str) -> None:
        bench = self.bench
        failed = fault in REASONS
        end = f"{'0' if failed else '1'}/1 files downloaded successfully\n"
        bench.wait_for("the end on the console", lambda: bench.console().endswith(end), 30)
        if not failed:
            self.extraction = self.told.sent.get(ARCHIVE, time.monotonic()) - 0.1, time.monotonic()
        between = bench.console()[len(begun) : -len(end)]
        if failed:
            # Progress, if any; then the line end of the bar.
            bench.check(
                f"the console has nothing but progress: {between!r}",
                between.endswith("\n") and "\n" not in between[:-1],
            )
            said = bench.errors()
            bench.check(
                f"the reason on standard error: {said!r}",
                re.fullmatch(r"Failed: .+\n", said) and REASONS[fault] in said,
            )
            bench.wait_for_text(FAILED)
            bench.wait_for_version("red")
            bench.wait_for_buttons("download-disabled")
            bench.check("no version is there", bench.versions(SERVER, CLIENT) == [])
        else:
            bench.check(f"success on the console: {between!r}", between.endswith("\nSucceeded.\n\n"))
            bench.check("nothing on standard error", bench.errors() == "")
            # The folder is what counts, whatever the extractor made of the archive.
            bench.wait_for_text(FINISHED)
            bench.wait_for_version("green")
            bench.wait_for_buttons("play")
            bench.check("the version is there", bench.versions(SERVER, CLIENT) == [VERSION])
            whole = fault in WHOLE
            bench.check(
                "all files are those of the archive, or not, as they should",
                bench.same_as_archive(SERVER, CLIENT, VERSION) == whole,
            )
        if fault == NO_LENGTH:
            bench.check(f"the bar moved without an end in sight: {between!r}", re.search(r"\r\[ +### +\]", between))
        bench.check("no archive is left", bench.archives() == [])
        bench.check("the bar is gone", bench.filled_part() == 0)
