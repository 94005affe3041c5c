#!/usr/bin/python3
"""Drives the real launcher through the demo world on a screen of its own.

No switch, no test hook: the program is started as a player starts it, a pointer
is moved and clicks, and what counts is what can be seen: the screen's pixels,
the files in the installation folder, the exit code and, at the end of the road,
the mark that the sample client leaves when it starts.

With --package in place of --program it is the Windows program, out of its
portable package, under Wine (see platforms.py); the same road then leads over
https, and begins with a launcher that does not trust the server.

Every stop leaves a picture in the output folder. The exit code is 0 only when
every stop was reached.
"""

from __future__ import annotations

import argparse
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
from scene import Desktop, World, end_process, exit_on_terminate, say
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


# The roads


def distrust_road(road: Road) -> None:
    """A server whose certificate nobody vouches for gets nothing out of the launcher."""
    say("A first try, before the server's authority is trusted:")
    road.start_launcher()
    road.wait_for("the launcher to meet the server", lambda: "TLS " in road.world.requests())
    # As long as a trusted document takes to be shown, and longer.
    time.sleep(3)
    road.check("nothing was asked for", "GET " not in road.world.requests())
    road.check("the panel has no columns", not any(any(buttons) for buttons in road.panel().values()))
    road.check("the connecting text is shown", road.text_pixels(CONNECTING_TEXT) > 100)
    road.check("the connecting text looks out beside the columns", not road.panel_is_bare_beside_the_columns())
    # The copy is made of whatever arrived.
    road.check("nothing arrived", (road.installation / "offline.txt").read_bytes() == b"" and not road.settings())
    road.stop_here("distrusted", "the launcher refuses the server and stays at: Connecting to server...")
    road.close_by_button(CLOSE_BUTTON_OF_PANEL)
    road.check("no choice in settings.txt", road.settings() == "||true|")
    # The next start is to be a first one.
    for name in ("settings.txt", "offline.txt"):
        (road.installation / name).unlink()
    assert road.world.authority is not None
    road.platform.trust(road.world.authority)


def main_road(road: Road) -> None:
    """From the first start to the updated client."""
    server, client, old, new = "Cinderfall", "Official", "2.1.4", "2.2.0"
    base = road.world.folder

    say("First start, in an empty folder:")
    road.start_launcher()
    road.wait_for_panel({"Ashenmoor": ("Official", ""), "Cinderfall": ("Official", "Beta"), "Emberreach": ("Beta", "")})
    road.check("nothing is written before a choice", not road.settings())
    road.check("the connecting text is gone", road.panel_is_bare_beside_the_columns())
    road.stop_here("servers", "the panel shows three servers and the clients of each")

    road.click(client_button(server, 0))
    road.wait_for("the choice in settings.txt", lambda: road.settings() == f"{server}|{client}|true|")
    road.wait_for_version("red")
    road.wait_for_buttons("download")
    road.wait_for(
        "the server's logo in the title bar",
        lambda: road.screen.shows(road.on_screen(SERVER_LABEL), base / f"{server}.png"),
    )
    road.wait_for_slide()
    road.stop_here("chosen", f"{server} {client} is chosen; not installed: red, Download")

    road.fetch(server, client, old, "download")
    road.wait_for_version("green")
    road.wait_for_buttons("play")
    road.check("the progress bar is gone", road.filled_part() == 0)
    road.stop_here("installed", f"version {old} is unpacked and the archive removed: green, Play")

    road.play(ACTION_BUTTON, server, client, old, "Emberwake.exe", "playing")

    road.click(NEWS_TAB)
    for number, (tile, height) in enumerate(TILES, start=1):
        picture = base / "news" / f"tile{number}.png"
        # Without the frame that is drawn around it.
        part = Rect(0, 0, tile.width, height).inner(3)
        road.wait_for(f"news tile {number}", partial(road.screen.shows, road.on_screen(tile), picture, part))
    road.stop_here("news", "the NEWS page shows the six tiles of the demo world")
    road.open_page(TILES[0][0], "pages/fair.html")
    say("  A click on the big tile opened its page.")

    road.close_by_button()
    road.check("settings.txt stays", road.settings() == f"{server}|{client}|true|")
    say("  The close button ended the launcher with exit code 0.")

    say("Second start, with a remembered choice:")
    road.start_launcher()
    road.wait_for_version("green")
    road.wait_for_buttons("play")
    road.wait_for_slide()
    road.stop_here("remembered", "the choice is applied at once, without the panel")
    road.close_by_button()

    road.world.publish(server, client, new)
    say(f"Third start, after version {new} was published:")
    road.start_launcher()
    road.wait_for_version("orange")
    road.wait_for_buttons("update", second="play")
    road.wait_for_slide()
    road.stop_here("update-offered", "orange, Update beside Play")

    road.fetch(server, client, new, "update")
    road.wait_for_version("green")
    road.wait_for_buttons("play")
    road.check("the old version is gone", road.versions(server, client) == [new])
    road.stop_here("updated", f"only version {new} is left on disk: green, Play")

    road.play(ACTION_BUTTON, server, client, new, "Emberwake.exe", "playing-update")
    road.close_by_button()


def code_road(road: Road) -> None:
    """The locked client: it appears with the code, and only the code unpacks it."""
    server, client, version, code = "Ashenmoor", "Beta", "1.9.0", make_world.BETA_CODE

    say("The authentication code:")
    road.start_launcher()
    road.wait_for_buttons("play")
    road.wait_for_slide()
    first = road.running()
    road.screen.focus(road.window)
    road.screen.key("F12")
    dialog = road.wait_for("the code dialog", lambda: road.screen.windows(first.pid, "^Authentication$"))[0]
    road.screen.focus(dialog)
    road.wait_for("the code dialog to be drawn", lambda: road.screen.has_ground(dialog))
    road.screen.type(code)
    road.stop_here("code", "F12 asks for the code")
    road.screen.key("Return")
    road.wait_for("the code in settings.txt", lambda: road.settings() == f"Cinderfall|Official|true|{code}")
    question = road.wait_for(
        "the restart question",
        lambda: [w for w in road.screen.windows(first.pid, ".*") if w not in (road.window, dialog)],
    )[0]
    road.screen.focus(question)
    road.wait_for("the restart question to be drawn", lambda: road.screen.is_settled(question))
    road.stop_here("restart", "the launcher offers to restart")
    # Yes is the default button.
    road.screen.key("Return")
    road.wait_for("the first launcher to end", lambda: first.poll() is not None, watch=False)
    road.check(f"exit code 0 (it is {first.returncode})", first.returncode == 0)
    road.launcher = None

    def restarted() -> int:
        found = [road.screen.process_of(w) for w in road.screen.windows_titled("^Emberwake Launcher$")]
        return next((number for number in found if number not in (0, first.pid)), 0)

    second = road.wait_for("the restarted launcher", restarted)
    road.meet_window(second)
    road.wait_for_buttons("play")
    road.wait_for_slide()

    road.click(SELECT_SERVER)
    road.wait_for_panel(
        {"Ashenmoor": ("Official", "Beta"), "Cinderfall": ("Official", "Beta"), "Emberreach": ("Beta", "")}
    )
    road.stop_here("unlocked", f"{server} offers its Beta client now")
    road.click(client_button(server, 1))
    road.wait_for("the choice in settings.txt", lambda: road.settings() == f"{server}|{client}|true|{code}")
    road.wait_for_version("red")
    road.wait_for_buttons("download")

    road.fetch(server, client, version, "locked", password=code)
    road.wait_for_version("green")
    road.wait_for_buttons("play")

    def choose_engine() -> None:
        box = road.wait_for(
            "the engine question", lambda: [w for w in road.screen.windows(second, ".*") if w != road.window]
        )[0]
        road.screen.focus(box)
        road.wait_for("the engine question to be drawn", lambda: road.screen.is_settled(box))
        road.stop_here("engine", "Play asks for the graphics engine")
        # The first button, DirectX, has the focus.
        road.screen.key("Return")

    road.play(ACTION_BUTTON, server, client, version, "Emberwake_dx.exe", "playing-beta", choose_engine)

    road.click(CLOSE_BUTTON)
    road.wait_for("the restarted launcher to end", lambda: ended(second))


def main() -> int:
    parser = argparse.ArgumentParser(description="Drive the real launcher through the Emberwake demo world.")
    what = parser.add_mutually_exclusive_group(required=True)
    what.add_argument("--program", type=Path, help="the built launcher")
    what.add_argument("--package", type=Path, metavar="ZIP", help="the Windows launcher's portable package")
    parser.add_argument("--extractor", type=Path, help="the built extractor (--package: its own)")
    parser.add_argument(
        "--base-url", required=True, help="the base URL it was built for: http://127.0.0.1:PORT/ (--package: https)"
    )
    parser.add_argument("--out", required=True, type=Path, help="folder for the pictures")
    parser.add_argument("--scratch", required=True, type=Path, help="folder for everything else; emptied first")
    given = parser.parse_args()
    if (given.extractor is None) != (given.program is None):
        parser.error("--program and --extractor go together")

    exit_on_terminate()
    platform: Native | Wine = (
        Native(given.program, given.extractor) if given.package is None else Wine(given.package)
    )
    missing = platform.missing()
    if missing:
        say(f"drive.py: missing: {', '.join(missing)}")
        return 1

    road = Road(platform, given.base_url, given.out, given.scratch)
    try:
        adopt_orphans()
        road.open()
        if road.world.authority is not None:
            distrust_road(road)
        main_road(road)
        code_road(road)
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

    say(f"The whole road was driven: {road.stops} stops, pictures in {road.out}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
