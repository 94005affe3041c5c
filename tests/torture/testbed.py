"""Where the torture starts the real launcher: a screen, an installation folder, and what can be seen there."""

from __future__ import annotations

import os
import subprocess
import time
from pathlib import Path

from PIL import Image, ImageChops, ImageDraw, ImageFilter, ImageFont

from pings import Pinger
from platforms import Native
from road import CLIENT_PICTURES, CLOSE_BUTTON, PROGRESS_TEXT, SERVERS, Road, RoadError, client_button, logo
from scene import prepare_installation
from screen import Rect

BASE_URL = "http://127.0.0.1:18474/"
SERVER, CLIENT, VERSION = "Cinderfall", "Official", "2.1.4"
CHOICE = f"{SERVER}|{CLIENT}|true|"
ARCHIVE = "/clients/cinderfall-official-2.1.4.zip"

FINISHED = f"Download finished: version {VERSION}"
FAILED = "Download failed"
RUNNING = f"Downloading client version {VERSION}"

# How much higher the clients of a column stand that has no logo.
WITHOUT_LOGO = 11

# How long a window may let an event wait, in seconds.
PROMPT = 0.1

# How long something that must not happen is looked out for, in seconds.
WATCH = 0.7

# For how long a launch is watched at least, in seconds.
ASKED = 0.5

# Of 255: the same letters by two hands lie 29 apart, with a wrong digit 43 or more.
SAME_LETTERS = 36

# Remarks about style sheets that are kept as they are, and about pictures that are none; all in the
# words of the toolkit and its libraries.
EXPECTED_WARNINGS = (
    "QString::arg: Argument missing",
    "Could not parse stylesheet of object QPushButton",
    "QCssParser::parseColorValue: Specified color without alpha value",
    # Of a picture that is cut short.
    "libpng error: Read Error",
    # Of a picture for whose file there is no room.
    "libpng error: Write Error",
)


# What an image library calls so: left, upper, right, lower.
Box = tuple[int, int, int, int]


class SlowError(RoadError):
    """A window that let an event wait too long.

    A launcher that is slow is so every time; a machine that is busy with other things is so now and
    then. So a launch that ends with this may be tried once more.
    """


class Testbed(Road):
    platform: Native

    def __init__(self, platform: Native, scratch: Path):
        super().__init__(platform, BASE_URL, scratch / "pictures", scratch / "road")
        self._pinger: Pinger | None = None
        self.pinged = 0.0
        self.longest = 0.0
        self.font: ImageFont.FreeTypeFont | None = None

    @property
    def pinger(self) -> Pinger:
        """Asks the window; there from open() on."""
        assert self._pinger is not None
        return self._pinger

    def open(self) -> None:
        super().open()
        # What serves here knows more faults than the demo's server.
        self.world.stop()
        self._pinger = Pinger(self.screen.display)
        file = subprocess.run(["fc-match", "-f", "%{file}", "Lato:regular"], capture_output=True, check=True).stdout
        self.font = ImageFont.truetype(os.fsdecode(file), 15)

    def fresh(self) -> None:
        """An installation folder as on the first day."""
        prepare_installation(self.installation, self.platform.extractor)

    def close(self) -> None:
        if self._pinger is not None:
            self._pinger.close()
        super().close()

    def end_descendants(self) -> None:
        if self._pinger is None or self._pinger.process.poll() is not None:
            super().end_descendants()

    def end_launch(self) -> None:
        """Whatever became of it, nothing of a launch is left running."""
        self.pinger.stop()
        if self.launcher is not None:
            self.launcher.kill()
            self.launcher.wait()
            self.launcher = None

    # Promptness

    def ping(self) -> None:
        self.pinger.start(self.window, [self.running().pid, self.screen.processes()[0]])
        self.pinged = time.monotonic()

    def check_promptness(self, but: tuple[float, float] | None = None) -> None:
        """Looks how long the window let a question wait; `but`: not while it was unpacking."""
        self.wait_for("the window to be asked for a while", lambda: time.monotonic() - self.pinged > ASKED)
        samples = self.pinger.stop()
        counted = [
            sample.own
            for sample in samples
            if but is None or sample.sent + sample.waited < but[0] or sample.sent > but[1]
        ]
        self.check("the window was asked", counted)
        self.longest = max(self.longest, *counted)
        if max(counted) > PROMPT:
            raise SlowError(f"the window let an event wait for {max(counted):.3f} s")

    def watch(self) -> None:
        """Lets time pass in which nothing is to happen."""
        until = time.monotonic() + WATCH
        self.wait_for("time to pass", lambda: time.monotonic() > until)

    # What can be seen

    def console(self) -> str:
        return self.log("stdout")

    def published(self) -> dict[str, bytes]:
        """Every file of the demo world by its path on the server."""
        folder = self.world.folder
        return {f"/{path.relative_to(folder)}": path.read_bytes() for path in folder.rglob("*") if path.is_file()}

    def errors(self) -> str:
        """Standard error without what the toolkit and its libraries say."""
        lines = self.log("stderr").splitlines(keepends=True)
        return "".join(line for line in lines if not line.startswith(EXPECTED_WARNINGS))

    def log(self, name: str) -> str:
        return (self.scratch / f"launcher-{self.starts}.{name}").read_bytes().decode("utf-8", errors="replace")

    def offered(self, server: str, row: int) -> str:
        """Which client's button stands where it should; empty for none."""
        area = self.on_screen(client_button(server, row))
        found = {
            kind
            for kind, path in CLIENT_PICTURES.items()
            for place in (area, area.moved(0, -WITHOUT_LOGO))
            if self.screen.find(path, place, 1)
        }
        return found.pop() if len(found) == 1 else ""

    def columns(self) -> list[str]:
        """The servers that have a column in the panel."""
        return [server for server in SERVERS if self.offered(server, 0)]

    def shows_logo(self, server: str) -> bool:
        picture = self.world.folder / f"{server}.png"
        return self.screen.find(picture, self.on_screen(logo(server)), 1) is not None

    def reads(self, text: str, whole: bool = True) -> bool:
        """Whether the line under the progress bar is this text, or begins with it."""
        # White letters: the embers behind them are bright as well, but not in blue.
        red, green, blue = self.screen.grab(self.on_screen(PROGRESS_TEXT)).split()
        light = ImageChops.darker(ImageChops.darker(red, green), blue)
        seen = light.point(lambda value: max(0, value - 96) * 255 // 159)
        drawn = Image.new("L", seen.size)
        # The toolkit joins these two letters.
        ImageDraw.Draw(drawn).text((0, 0), text.replace("fi", "\N{LATIN SMALL LIGATURE FI}"), fill=255, font=self.font)
        return same_text(seen, drawn, whole)

    def wait_for_text(self, text: str, whole: bool = True) -> None:
        self.wait_for(f"the text {text!r}", lambda: self.reads(text, whole))

    def leave(self, button: Rect = CLOSE_BUTTON) -> None:
        """A close button ends the launcher in good order, and nothing complained."""
        self.close_by_button(button)
        told = self.log("stderr")
        for word in ("Sanitizer", "runtime error", "Segmentation", "ASSERT", "QProcess: Destroyed"):
            self.check(f"no {word!r} on standard error", word not in told)


def same_text(seen: Image.Image, drawn: Image.Image, whole: bool) -> bool:
    """Whether two pictures have the same words, drawn by different hands."""
    letters: Box | None = drawn.getbbox()
    letters_seen: Box | None = seen.getbbox()
    if letters is None or letters_seen is None:
        return letters is letters_seen
    wanted = drawn.crop(letters)
    top = seen.crop((0, 0, letters[2], seen.height)).getbbox()
    if top is None:
        return False
    if whole and seen.crop((letters[2] + 4, 0, seen.width, seen.height)).point(lambda value: value > 200).getbbox():
        return False
    return (
        min(
            gap_of_letters(seen.crop((x, y, x + wanted.width, y + wanted.height)), wanted)
            for x in range(letters[0] - 1, letters[0] + 3)
            for y in range(top[1] - 1, top[1] + 2)
        )
        <= SAME_LETTERS
    )


def gap_of_letters(seen: Image.Image, wanted: Image.Image) -> float:
    """How different the most different stretch of some letters is."""
    gap = ImageChops.difference(seen.filter(ImageFilter.BoxBlur(1)), wanted.filter(ImageFilter.BoxBlur(1)))
    stretches: list[float] = list(gap.resize((max(1, gap.width // 8), 1), Image.BOX).getdata())
    return max(stretches)
