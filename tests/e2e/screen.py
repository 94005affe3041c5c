"""A screen of its own for the headless demo: started, clicked on and looked at.

Looking means comparing pixels with the pictures that ought to be there. Both
sides are shrunk first, so that the way a toolkit scales a picture does not
count, while a missing or wrong picture does.
"""

from __future__ import annotations

import os
import re
import select
import shutil
import subprocess
import time
from pathlib import Path
from typing import NamedTuple

from PIL import Image, ImageChops, ImageGrab, ImageStat

from make_world import WorldError
from scene import end_process

WIDTH, HEIGHT = 1280, 800

# Both sides are shrunk by this before they are compared.
SHRINK = 3
# Mean difference per colour, of 255, up to which two pictures count as the same.
# The launcher's own pictures are found at 1 to 3, two buttons that differ in
# nothing but the word on them lie 15 apart, two news pictures 50.
SAME = 5.0


class Rect(NamedTuple):
    x: int
    y: int
    width: int
    height: int

    def moved(self, x: int, y: int) -> Rect:
        return Rect(self.x + x, self.y + y, self.width, self.height)

    def inner(self, margin: int) -> Rect:
        return Rect(self.x + margin, self.y + margin, self.width - 2 * margin, self.height - 2 * margin)

    @property
    def size(self) -> tuple[int, int]:
        return self.width, self.height

    @property
    def centre(self) -> tuple[int, int]:
        return self.x + self.width // 2, self.y + self.height // 2

    @property
    def box(self) -> tuple[int, int, int, int]:
        return self.x, self.y, self.x + self.width, self.y + self.height


def scaled(picture: Path, size: tuple[int, int]) -> Image.Image:
    """The picture stretched to `size`, by the coarse method that the launcher uses as well."""
    return Image.open(picture).convert("RGBA").resize(size, Image.NEAREST)


def difference(seen: Image.Image, expected: Image.Image) -> float:
    """Mean difference of two pictures of one size, where `expected` is opaque."""
    small = max(1, seen.width // SHRINK), max(1, seen.height // SHRINK)
    seen = seen.convert("RGB").resize(small, Image.BOX)
    expected = expected.resize(small, Image.BOX)
    opaque = expected.getchannel("A").point(lambda alpha: 255 if alpha >= 250 else 0)
    if ImageStat.Stat(opaque).sum[0] == 0:
        raise WorldError("a picture without one opaque pixel cannot be recognised")
    means: list[float] = ImageStat.Stat(ImageChops.difference(seen, expected.convert("RGB")), opaque).mean
    return max(means)


class Screen:
    """A virtual display, with a window manager where there is one."""

    def __init__(self, log: Path):
        self._log = log.open("wb")
        self._manager: subprocess.Popen[bytes] | None = None
        number_out, number_in = os.pipe()
        # -displayfd: the server picks a free display and tells its number, so
        # that nothing is guessed and nobody else's display is disturbed.
        self._server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(number_in), "-screen", "0", f"{WIDTH}x{HEIGHT}x24", "-nolisten", "tcp"]
            # Without this a server whose last client leaves starts anew.
            + ["-noreset"],
            pass_fds=[number_in],
            stdout=self._log,
            stderr=self._log,
        )
        os.close(number_in)
        number = b""
        deadline = time.monotonic() + 20
        while not number.endswith(b"\n"):
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([number_out], [], [], left)[0]:
                break
            piece = os.read(number_out, 32)
            if not piece:
                break
            number += piece
        os.close(number_out)
        if not number.strip().isdigit():
            self.close()
            raise WorldError(f"Xvfb did not start; see {log}")
        self.display = f":{int(number)}"

    def start_manager(self, environment: dict[str, str]) -> str:
        """Starts a window manager if there is one; returns its name or an empty text."""
        if shutil.which("openbox") is None:
            return ""
        self._manager = subprocess.Popen(
            ["openbox", "--sm-disable"], env=environment, stdout=self._log, stderr=self._log
        )
        deadline = time.monotonic() + 20
        while time.monotonic() < deadline and self._manager.poll() is None:
            # It says that it is there before it has read its theme and fonts; the list comes when it is ready.
            if "window id" in self._ask("xprop", "-root", "_NET_CLIENT_LIST"):
                return "openbox"
            time.sleep(0.05)
        raise WorldError("openbox did not start")

    def processes(self) -> list[int]:
        return [process.pid for process in (self._server, self._manager) if process is not None]

    def close(self) -> None:
        if self._manager is not None:
            end_process(self._manager)
        end_process(self._server)
        self._log.close()

    def _ask(self, *command: str) -> str:
        """Output of an X tool; empty when it fails, as a search without a result does."""
        environment = dict(os.environ, DISPLAY=self.display)
        environment.pop("XAUTHORITY", None)
        done = subprocess.run(
            command, env=environment, stdout=subprocess.PIPE, stderr=self._log, timeout=30, check=False
        )
        return done.stdout.decode(errors="replace") if done.returncode == 0 else ""

    # Windows

    def windows(self, process: int, title: str) -> list[str]:
        """Visible windows of one process whose title matches the pattern."""
        return self._ask(
            "xdotool", "search", "--all", "--onlyvisible", "--pid", str(process), "--name", title
        ).split()

    def windows_titled(self, title: str) -> list[str]:
        return self._ask("xdotool", "search", "--onlyvisible", "--name", title).split()

    def title(self, window: str) -> str:
        return self._ask("xdotool", "getwindowname", window).strip()

    def process_of(self, window: str) -> int:
        number = self._ask("xdotool", "getwindowpid", window).strip()
        return int(number) if number.isdigit() else 0

    def geometry(self, window: str) -> Rect | None:
        """Where the window's content stands on the screen, without a frame."""
        # Not asked of xdotool, which counts a frame twice.
        told = self._ask("xwininfo", "-id", window)
        found = [
            int(match.group(1))
            for name in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")
            if (match := re.search(rf"^ *{name}: +(-?\d+)$", told, re.M))
        ]
        return Rect(*found) if len(found) == 4 else None

    def is_drawn(self, window: str) -> Rect | None:
        """The window's place once it shows more than its bare ground."""
        place = self.geometry(window)
        return place if place is not None and place.width > 50 and len(self.colours(place)) > 1 else None

    def has_ground(self, window: str) -> bool:
        """Whether a dialog is painted: one colour, its ground, covers a third of it.

        A window is there before its content is, and lets through meanwhile what lies behind it.
        """
        place = self.geometry(window)
        return place is not None and 3 * max(self.colours(place).values()) >= place.width * place.height

    def is_settled(self, window: str) -> bool:
        """Whether the window is painted and has stayed as it is for a moment.

        Where a window stood before, its content remains in the picture until the next one is
        painted, and looks like that one's ground.
        """
        place = self.geometry(window)
        if place is None or not self.has_ground(window):
            return False
        before = self.grab(place)
        time.sleep(0.4)
        return ImageChops.difference(before, self.grab(place)).getbbox() is None

    def has_frame(self, window: str) -> bool:
        """Whether a window manager draws, or would be allowed to draw, a frame."""
        hints = re.search(r"= (.*)", self._ask("xprop", "-id", window, "_MOTIF_WM_HINTS"))
        if not hints:
            return True
        flags, _, decorations = (int(value, 16) for value in hints.group(1).split(", ")[:3])
        extents = re.search(r"= (.*)", self._ask("xprop", "-id", window, "_NET_FRAME_EXTENTS"))
        drawn = extents is not None and any(int(value) for value in extents.group(1).split(","))
        return drawn or not flags & 2 or decorations != 0

    # Pointer and keys

    def click(self, x: int, y: int) -> None:
        self._ask("xdotool", "mousemove", "--sync", str(x), str(y), "click", "1")

    def park_pointer(self) -> None:
        """Away from every button: a hovered button looks different."""
        # Without --sync, which waits for ever when the pointer is there already.
        self._ask("xdotool", "mousemove", str(WIDTH - 1), str(HEIGHT - 1))

    def focus(self, window: str) -> None:
        """Gives a window the keyboard, and returns when it has it."""
        self._ask("xdotool", "windowfocus", "--sync", window)

    def key(self, name: str) -> None:
        self._ask("xdotool", "key", name)

    def type(self, text: str) -> None:
        self._ask("xdotool", "type", text)

    # Looking

    def grab(self, area: Rect | None = None) -> Image.Image:
        return ImageGrab.grab(bbox=area.box if area else None, xdisplay=self.display).convert("RGB")

    def shows(self, area: Rect, picture: Path, part: Rect | None = None) -> bool:
        """Whether `area` shows the picture; `part` (relative to it) limits where to look."""
        part = part or Rect(0, 0, area.width, area.height)
        expected = scaled(picture, area.size)
        seen = self.grab(area).crop(part.box)
        # A label's frame pushes its picture aside by a pixel, which is enough to
        # blur the comparison of small ones.
        return any(difference(seen, expected.crop(part.moved(-x, -y).box)) <= SAME for x in (0, 1) for y in (0, 1))

    def closest(self, area: Rect, pictures: dict[str, Path]) -> str:
        """Name of the one picture that `area` shows; empty when it shows none of them."""
        seen = self.grab(area)
        found = sorted((difference(seen, scaled(path, area.size)), name) for name, path in pictures.items())
        return found[0][1] if found[0][0] <= SAME else ""

    def colours(self, area: Rect) -> dict[tuple[int, int, int], int]:
        """How often each colour stands in the area."""
        image = self.grab(area)
        return {colour: count for count, colour in image.getcolors(image.width * image.height)}

    def find(self, picture: Path, expected: Rect, slack: int) -> Rect | None:
        """Where the picture stands, at most `slack` pixels away from where it is expected."""
        wanted = scaled(picture, expected.size)
        around = expected.inner(-slack)
        seen = self.grab(around)
        best: Rect | None = None
        least = SAME
        for y in range(2 * slack + 1):
            for x in range(2 * slack + 1):
                found = difference(seen.crop((x, y, x + expected.width, y + expected.height)), wanted)
                if found <= least:
                    least, best = found, Rect(around.x + x, around.y + y, expected.width, expected.height)
        return best
