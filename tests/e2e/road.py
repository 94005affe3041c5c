"""What a launcher is driven with: the screen it is shown on, the hand that clicks, and what can be seen.

A road is the demo world, an installation and the launcher that runs there just
now; journeys along it are in the programs beside this file.
"""

from __future__ import annotations

import ctypes
import os
import signal
import subprocess
import sys
import time
import zipfile
import zlib
from collections.abc import Callable
from functools import partial
from pathlib import Path
from typing import TypeVar
from urllib.parse import urlsplit
from urllib.request import urlopen

# The folders that it imports from, beside its own.
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [os.fspath(ROOT / "demo")]

import make_world
from authority import Authority
from make_world import WorldError, fresh_folder
from platforms import Native, Wine
from scene import Desktop, World, end_process, say
from screen import Rect, Screen

# Positions in the launcher's window, which is shown in its design size.
WINDOW_SIZE = (974, 571)
ACTION_BUTTON = Rect(730, 463, 196, 81)  # Download, Update, or Play alone
SECOND_PLAY_BUTTON = Rect(510, 463, 196, 81)  # Play beside Update
CLOSE_BUTTON = Rect(949, 8, 12, 12)
CLOSE_BUTTON_OF_PANEL = Rect(931, 10, 25, 25)
HOME_TAB = Rect(428, 0, 127, 63)
NEWS_TAB = Rect(555, 0, 127, 63)
SELECT_SERVER = Rect(690, 0, 201, 63)
VERSION_LABEL = Rect(200, 56, 121, 34)
SERVER_LABEL = Rect(120, 4, 144, 67)
SLIDE_PICTURE = Rect(67, 97, 325, 325)
PROGRESS_BAR = Rect(67, 475, 663, 9)
PROGRESS_TEXT = Rect(67, 488, 663, 20)
# Between the first two columns, where the end of "Connecting to server..." would
# look out from behind the middle one.
BESIDE_THE_COLUMNS = Rect(340, 250, 45, 70)
CONNECTING_TEXT = Rect(260, 180, 481, 181)

# Picture of each news tile in document order, and how much of its height lies
# above the strip that carries the texts.
TILES = (
    (Rect(67, 96, 559, 319), 248),
    (Rect(632, 96, 276, 157), 111),
    (Rect(632, 258, 276, 157), 111),
    (Rect(67, 421, 138, 75), 75),
    (Rect(350, 421, 138, 75), 75),
    (Rect(632, 421, 138, 75), 75),
)

# The panel's columns, one per server, sorted by name.
SERVERS = ("Ashenmoor", "Cinderfall", "Emberreach")
LOGO_SIZE = (218, 102)
CLIENT_BUTTON_SIZE = (196, 81)

# The colour words of the version label, as the toolkit understands them.
COLOURS = {"red": (255, 0, 0), "green": (0, 128, 0), "orange": (255, 165, 0)}

BUTTON_PICTURES = {
    name: ROOT / "images" / "new_buttons" / f"{name}.png"
    for kind in ("download", "update", "play")
    for name in (kind, f"{kind}-hover", f"{kind}-disabled")
}
CLIENT_PICTURES = {kind: ROOT / "images" / "new_buttons" / f"{kind.lower()}.png" for kind in ("Official", "Beta")}

# How long anything may take that is not known to take longer.
PATIENCE = 20.0
# A throttled download, on a machine that is busy with other things as well.
DOWNLOAD_PATIENCE = 90.0


Seen = TypeVar("Seen")


class RoadError(Exception):
    """A stop that was not reached; the text says what was waited for."""


def column_centre(column: int) -> int:
    """Middle of a column: a row of equal cells, six pixels apart, nine from the window's edge."""
    margin, gap = 9, 6
    cell = (WINDOW_SIZE[0] - 2 * margin - (len(SERVERS) - 1) * gap) / len(SERVERS)
    return round(margin + column * (cell + gap) + cell / 2)


def client_button(server: str, row: int) -> Rect:
    """Where a client button stands: row 0 is the upper one, under the logo."""
    width, height = CLIENT_BUTTON_SIZE
    container = 2 * height + LOGO_SIZE[1]
    bottom = (WINDOW_SIZE[1] + container) // 2
    return Rect(column_centre(SERVERS.index(server)) - width // 2, bottom - (2 - row) * height, width, height)


def logo(server: str) -> Rect:
    width, height = LOGO_SIZE
    top = (WINDOW_SIZE[1] - 2 * CLIENT_BUTTON_SIZE[1] - height) // 2
    return Rect(column_centre(SERVERS.index(server)) - width // 2, top, width, height)


class Road:
    """One drive: the folders, the screen, and the launcher that runs just now."""

    def __init__(self, platform: Native | Wine, base_url: str, out: Path, scratch: Path):
        self.platform = platform
        self.out = out.resolve()
        scratch = scratch.resolve()
        self.scratch = scratch
        self.installation = platform.installation(scratch)
        self.pages_list = scratch / "pages.txt"
        self.world = World(scratch / "world", base_url, scratch / "access.log")
        self._screen: Screen | None = None
        self.desktop: Desktop | None = None
        self.launcher: subprocess.Popen[bytes] | None = None
        self.starts = 0
        self.stops = 0
        self.window = ""
        self.origin = (0, 0)
        self.environment: dict[str, str] = {}

    @property
    def screen(self) -> Screen:
        """Where everything is shown; there from open() on."""
        assert self._screen is not None
        return self._screen

    # Setting up and clearing away

    def open(self) -> None:
        fresh_folder(self.scratch)
        self.out.mkdir(parents=True, exist_ok=True)
        for old in [*self.out.glob("[0-9][0-9]-*.png"), *self.out.glob("failed.png")]:
            old.unlink()

        self.world.client_program = self.platform.client_program(self.scratch)
        if urlsplit(self.world.base_url).scheme == "https":
            self.world.authority = Authority(self.scratch / "authority")
        self.world.start()
        say(f"The demo world is served at {self.world.base_url}")
        self.desktop = Desktop(self.installation, self.pages_list)

        home = self.scratch / "home"
        runtime = self.scratch / "runtime"
        home.mkdir()
        runtime.mkdir(mode=0o700)
        # A home of its own for whatever the toolkit or the window manager
        # writes, and none of the settings that change how a program looks.
        kept = {n: v for n, v in os.environ.items() if not n.startswith(("QT_", "QML", "XDG_", "KDE_", "GNOME_"))}
        for name in ("DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "DBUS_SESSION_BUS_ADDRESS", "SESSION_MANAGER"):
            kept.pop(name, None)
        # A proxy would be asked for the loopback as well.
        kept = {n: v for n, v in kept.items() if not n.lower().endswith("_proxy")}
        kept.update(HOME=os.fspath(home), XDG_RUNTIME_DIR=os.fspath(runtime), LC_ALL="C.UTF-8", LANGUAGE="en")
        # Nothing draws with OpenGL, but the toolkit would load all of it to find that out.
        kept["QT_XCB_GL_INTEGRATION"] = "none"

        self._screen = Screen(self.scratch / "screen.log")
        kept["DISPLAY"] = self.screen.display
        self.environment = self.desktop.environment(kept)
        manager = self.screen.start_manager(self.environment)
        say(f"A screen of its own is open at {self.screen.display}, window manager: {manager or 'none'}")
        told = self.platform.prepare(self.scratch, self.environment)
        if told:
            say(told)

    def close(self) -> None:
        if self.launcher is not None:
            end_process(self.launcher)
        self.platform.close()
        self.end_descendants()
        if self._screen is not None:
            self._screen.close()
        if self.desktop is not None:
            self.desktop.remove()
        self.world.stop()

    def end_descendants(self) -> None:
        """Ends what the launcher left behind: a restarted launcher, a client's window.

        They are children of this process by now, since it adopts what its own
        children leave (see adopt_orphans), so nobody else's process is meant.
        """
        own = {self.world.process, *(self._screen.processes() if self._screen else ())}
        for number in children():
            if number in own:
                continue
            for request in (signal.SIGTERM, signal.SIGKILL):
                try:
                    os.kill(number, request)
                    self.wait_for("a left-over process to end", partial(ended, number), 5, watch=False)
                    break
                except ProcessLookupError:
                    break
                except RoadError:
                    continue

    # Waiting and telling

    def wait_for(
        self, what: str, condition: Callable[[], Seen | None], seconds: float = PATIENCE, watch: bool = True
    ) -> Seen:
        """Looks again and again until `condition` holds; returns what it returned.

        `watch`: the launcher has to stay alive meanwhile.
        """
        deadline = time.monotonic() + seconds
        while True:
            result = condition()
            if result:
                return result
            if watch and self.launcher is not None and self.launcher.poll() is not None:
                raise RoadError(f"the launcher ended (exit code {self.launcher.returncode}) before: {what}")
            if time.monotonic() > deadline:
                raise RoadError(f"not seen within {seconds:.0f} s: {what}")
            time.sleep(0.05)

    def check(self, what: str, condition: object) -> None:
        if not condition:
            raise RoadError(f"not so: {what}")

    def stop_here(self, name: str, text: str) -> None:
        """A stop of the road was reached: leave a picture and say so."""
        self.stops += 1
        picture = f"{self.stops:02d}-{name}.png"
        self.screen.grab().save(self.out / picture)
        say(f"  {picture:<34} {text}")

    def explain_failure(self) -> None:
        if self._screen is not None:
            try:
                self.screen.grab().save(self.out / "failed.png")
                say(f"  failed.png shows the screen as it was ({self.out})")
            except OSError as error:
                say(f"  no picture of the screen: {error}")
        for name in ("stdout", "stderr"):
            path = self.scratch / f"launcher-{self.starts}.{name}"
            if path.exists():
                tail = path.read_bytes()[-1500:].decode(errors="replace").replace("\r", "\n").rstrip()
                say(f"  The launcher's {name}, last part:\n{tail or '(nothing)'}")
        say(f"  The server's log, last part:\n{self.world.requests()[-1500:] or '(nothing)'}")

    # The launcher's window

    def start_unseen(self) -> subprocess.Popen[bytes]:
        """Starts the launcher, and does not wait for its window."""
        self.starts += 1
        log = self.scratch / f"launcher-{self.starts}"
        with log.with_suffix(".stdout").open("wb") as output, log.with_suffix(".stderr").open("wb") as errors:
            self.launcher = self.platform.start(self.installation, self.environment, output, errors)
        return self.launcher

    def start_launcher(self) -> None:
        self.meet_window(self.start_unseen().pid)

    def running(self) -> subprocess.Popen[bytes]:
        """The launcher that was started last, and has not been seen to end."""
        assert self.launcher is not None
        return self.launcher

    def meet_window(self, process: int) -> None:
        """Waits for the launcher's window and notes where it stands."""
        self.screen.park_pointer()
        self.window = self.wait_for(
            "the launcher's window", lambda: self.screen.windows(process, "^Emberwake Launcher$")
        )[0]
        place = self.wait_for("the window in its design size", self.window_in_design_size)
        self.origin = place.x, place.y
        self.check("the window has no frame", not self.screen.has_frame(self.window))

    def window_in_design_size(self) -> Rect | None:
        place = self.screen.geometry(self.window)
        return place if place is not None and place.size == WINDOW_SIZE else None

    def on_screen(self, area: Rect) -> Rect:
        return area.moved(*self.origin)

    def click(self, area: Rect) -> None:
        """Clicks into the middle of an area of the window and takes the pointer away again."""
        self.screen.click(*self.on_screen(area).centre)
        self.screen.park_pointer()

    def close_by_button(self, button: Rect = CLOSE_BUTTON) -> None:
        launcher = self.running()
        self.click(button)
        self.wait_for("the launcher to end after its close button", lambda: launcher.poll() is not None, watch=False)
        self.check(f"exit code 0 (it is {launcher.returncode})", launcher.returncode == 0)
        self.launcher = None

    # What can be seen

    def button(self, area: Rect = ACTION_BUTTON) -> str:
        """Name of the button picture shown there; empty for none."""
        return self.screen.closest(self.on_screen(area), BUTTON_PICTURES)

    def wait_for_buttons(self, action: str, second: str = "") -> None:
        self.wait_for(
            f"the buttons: {action} on the right, {second or 'nothing'} beside it",
            lambda: (self.button(), self.button(SECOND_PLAY_BUTTON)) == (action, second),
        )

    def version_colour(self) -> str:
        """Colour word of the version label; empty unless it shows exactly one of the three."""
        seen = self.screen.colours(self.on_screen(VERSION_LABEL))
        found = [name for name, colour in COLOURS.items() if seen.get(colour, 0) >= 5]
        return found[0] if len(found) == 1 else ""

    def wait_for_version(self, colour: str) -> None:
        self.wait_for(f"the version in {colour}", lambda: self.version_colour() == colour)

    def text_pixels(self, area: Rect) -> int:
        return self.screen.colours(self.on_screen(area)).get((255, 255, 255), 0)

    def filled_part(self) -> float:
        """How much of the progress bar is filled, 0 to 1."""
        bar = self.screen.grab(self.on_screen(PROGRESS_BAR))
        width: int = bar.width
        y = bar.height // 2
        # Blue is the bar, black its ground; the picture behind it has neither.
        line: list[tuple[int, int, int]] = [bar.getpixel((x, y)) for x in range(width)]
        return sum(blue > 120 and blue > red + 40 for red, _, blue in line) / width

    def client_button_at(self, server: str, row: int) -> str:
        """Which client's button the panel shows there; empty for none."""
        area = self.on_screen(client_button(server, row))
        found = [kind for kind, path in CLIENT_PICTURES.items() if self.screen.find(path, area, 6)]
        return found[0] if len(found) == 1 else ""

    def panel(self) -> dict[str, tuple[str, str]]:
        return {server: (self.client_button_at(server, 0), self.client_button_at(server, 1)) for server in SERVERS}

    def wait_for_panel(self, expected: dict[str, tuple[str, str]]) -> None:
        self.wait_for(f"the server panel: {expected}", lambda: self.panel() == expected)
        for server in SERVERS:
            picture = self.world.folder / f"{server}.png"
            place = self.on_screen(logo(server))
            self.wait_for(f"the logo of {server}", partial(self.screen.find, picture, place, 6))

    def panel_is_bare_beside_the_columns(self) -> bool:
        window = self.on_screen(Rect(0, 0, *WINDOW_SIZE))
        return self.screen.shows(window, ROOT / "images" / "servers_nobutton_dark.png", BESIDE_THE_COLUMNS)

    def wait_for_slide(self) -> None:
        # Without the frame that is drawn around it.
        inside = Rect(0, 0, *SLIDE_PICTURE.size).inner(3)
        picture = self.world.folder / "news" / "slide1.png"
        self.wait_for(
            "the picture of the first slide",
            lambda: self.screen.shows(self.on_screen(SLIDE_PICTURE), picture, inside),
        )

    # What lies on the disk

    def settings(self) -> str:
        try:
            return (self.installation / "settings.txt").read_text(encoding="utf-8")
        except FileNotFoundError:
            return ""

    def versions(self, server: str, client: str) -> list[str]:
        parent = self.installation / server / client
        return sorted(path.name for path in parent.iterdir()) if parent.is_dir() else []

    def archives(self) -> list[str]:
        return sorted(path.name for path in self.installation.glob("*.zip*"))

    def same_as_archive(self, server: str, client: str, version: str, password: str = "") -> bool:
        """Whether the installed files are those of the published archive, byte for byte."""
        folder = self.installation / server / client / version
        archive = self.world.folder / "clients" / make_world.archive_name(server, client, version)
        with zipfile.ZipFile(archive) as packed:
            # Sizes and checksums stand in the archive's open directory, so that
            # a locked one can be compared without being unlocked.
            self.check("the archive is locked", bool(packed.infolist()[0].flag_bits & 1) == bool(password))
            names = {entry.filename: (entry.file_size, entry.CRC) for entry in packed.infolist()}
        try:
            installed = {path.name: (path.stat().st_size, zlib.crc32(path.read_bytes())) for path in folder.iterdir()}
        except FileNotFoundError:
            # The extractor removes the folder while it unpacks, and puts the whole one into its place.
            return False
        return installed == names

    def mark(self, server: str, client: str, version: str) -> dict[str, str]:
        """What the sample client wrote when it started; empty before that."""
        try:
            text = (self.installation / server / client / version / "started.txt").read_text(encoding="utf-8")
        except FileNotFoundError:
            return {}
        return dict(line.split(": ", 1) for line in text.splitlines())

    # Stretches of road that are driven more than once

    def fetch(self, server: str, client: str, version: str, stop: str, password: str = "") -> None:
        """Clicks Download or Update and sees the download through to the end."""
        started = f"GET /clients/{make_world.archive_name(server, client, version)}"
        target = self.installation / server / client / version
        asked_before = self.world.requests().count(started)
        text_before = self.text_pixels(PROGRESS_TEXT)
        self.check("no progress bar is shown yet", self.filled_part() == 0)

        self.click(ACTION_BUTTON)
        self.wait_for("the request for the archive", lambda: self.world.requests().count(started) > asked_before)
        self.wait_for("the progress bar at a tenth", lambda: self.filled_part() > 0.1)
        early = self.filled_part()
        self.wait_for("the progress bar beyond a third", lambda: self.filled_part() > max(early, 1 / 3))
        part = self.filled_part()
        self.check("the text beside the bar", self.text_pixels(PROGRESS_TEXT) > text_before + 50)
        self.check("the buttons are disabled meanwhile", self.button().endswith("-disabled"))
        self.stop_here(f"{stop}-under-way", f"the download runs, the bar is {part:.0%} full")
        self.check("the download was still running in that picture", self.archives() and not target.exists())

        self.wait_for("the unpacked client", target.is_dir, DOWNLOAD_PATIENCE)
        self.wait_for("the client with all its files", lambda: self.same_as_archive(server, client, version, password))
        self.wait_for("the archive to be removed", lambda: not self.archives())
        self.wait_for("only the new version on disk", lambda: self.versions(server, client) == [version])

    def play(
        self,
        button: Rect,
        server: str,
        client: str,
        version: str,
        program: str,
        stop: str,
        before: Callable[[], None] | None = None,
    ) -> None:
        """Clicks Play and waits for the mark of the client, and for its window."""
        self.check("the client did not start before Play", not self.mark(server, client, version))
        self.click(button)
        if before is not None:
            before()
        self.meet_client(server, client, version, program, stop)

    def meet_client(self, server: str, client: str, version: str, program: str, stop: str) -> None:
        """Waits for the mark of the started client and for its window, and ends it."""
        mark = self.wait_for("the mark of the started client", lambda: self.mark(server, client, version))
        told = int(mark.pop("process"))
        self.check(
            f"the right client started ({mark})",
            mark == {"server": server, "client": client, "version": version, "program": program},
        )
        window = ""
        if self.platform.client_has_window:
            window = self.wait_for("the client's window", lambda: self.screen.windows_titled("^Emberwake$"))[0]
            place = self.wait_for("the client's window to be drawn", lambda: self.screen.is_drawn(window))
        self.stop_here(stop, f"the client's mark: Emberwake {version}, {server}, {client}, {program}")
        process = self.platform.client_process(told, self.screen, window)
        if window:
            # Its only button, in the lower left corner.
            self.screen.click(place.x + 40, place.y + place.height - 20)
            self.screen.park_pointer()
        self.wait_for("the sample client to end", lambda: ended(process))
        self.wait_for("the client's window to be gone", lambda: not self.screen.windows_titled("^Emberwake$"))

    def open_page(self, area: Rect, page: str) -> None:
        """Clicks on something that opens a web page, and asks the server for that page."""
        address = self.world.base_url + page
        self.click(area)
        self.wait_for(
            f"{page} being opened",
            lambda: self.pages_list.exists() and self.pages_list.read_text(encoding="utf-8").split()[-1:] == [address],
        )
        context = self.world.authority.context() if self.world.authority is not None else None
        with urlopen(address, timeout=10, context=context) as answer:
            self.check(f"the world has {page}", answer.status == 200 and b"<h1>" in answer.read())


# Processes


def adopt_orphans() -> None:
    """Makes this process the parent of whatever its children leave behind.

    The sample client and a restarted launcher are started detached; this is how
    they can still be ended by number when something goes wrong.
    """
    set_child_subreaper = 36
    if ctypes.CDLL(None, use_errno=True).prctl(set_child_subreaper, 1, 0, 0, 0) != 0:
        raise WorldError(f"prctl: {os.strerror(ctypes.get_errno())}")


def children() -> list[int]:
    try:
        return [int(number) for number in Path(f"/proc/self/task/{os.getpid()}/children").read_text().split()]
    except FileNotFoundError:
        # Not every kernel is built to tell.
        return []


def ended(number: int) -> bool:
    """Whether a process is gone; collects it when it was a child of this one."""
    try:
        return os.waitpid(number, os.WNOHANG)[0] == number
    except ChildProcessError:
        pass
    try:
        # The state stands behind the name, which may hold blanks and brackets.
        return Path(f"/proc/{number}/stat").read_text().rpartition(")")[2].split()[0] in "ZX"
    except (FileNotFoundError, ProcessLookupError):
        return True


def travel(road: Road, journey: Callable[[], None]) -> int:
    """Opens the road, makes the journey and clears away. The exit code: why it is not 0 is said here."""
    try:
        adopt_orphans()
        road.open()
        journey()
    except RoadError as error:
        say(f"FAILED: {error}")
        road.explain_failure()
        return 1
    except WorldError as error:
        say(f"FAILED: {error}")
        return 1
    except KeyboardInterrupt:
        say("Broken off.")
        return 130
    finally:
        road.close()
    return 0
