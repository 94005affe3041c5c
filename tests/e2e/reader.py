#!/usr/bin/python3
"""Drives the real launcher through the demo world as somebody who sees nothing of it.

What the launcher tells a screen reader is all that is looked at, and keys are
all that is pressed: no pointer, no pixel. The accessibility bus is one of this
program's own, on a message bus of its own.
"""

from __future__ import annotations

import argparse
import os
import subprocess
import sys
from collections.abc import Iterator
from contextlib import closing
from functools import partial
from pathlib import Path
from typing import Any

# The folders that it imports from, beside its own.
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [os.fspath(ROOT / "demo")]

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib

from make_world import WorldError
from platforms import Native
from road import DOWNLOAD_PATIENCE, Road, RoadError, travel
from scene import end_process, exit_on_terminate, read_line, say

PROGRAM = "Emberwake Online Launcher"
# More stops than there are, on any page.
ROUND = 40


class Ears:
    """The message bus, and what the launcher says on it."""

    def __init__(self) -> None:
        self._bus: subprocess.Popen[bytes] | None = None

    def open(self, environment: dict[str, str]) -> None:
        """Starts the bus; the environment then leads there."""
        self._bus = subprocess.Popen(
            ["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1"],
            env=environment,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
        )
        assert self._bus.stdout is not None
        address = read_line(self._bus.stdout, 10)
        if not address:
            raise WorldError("the message bus did not start")
        environment["DBUS_SESSION_BUS_ADDRESS"] = address
        # What a desktop sets when a reader is running.
        environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        # This process listens there, too.
        os.environ.update({name: environment[name] for name in ("DBUS_SESSION_BUS_ADDRESS", "DISPLAY")})
        Atspi.init()

    def close(self) -> None:
        if self._bus is not None:
            end_process(self._bus)

    def tree(self) -> Iterator[Any]:
        """Everything that the launcher's window holds and that is shown, from the top."""
        desktop = Atspi.get_desktop(0)
        for program in children_of(desktop):
            if program.get_name() == PROGRAM:
                yield from shown_below(program)


def children_of(node: Any) -> list[Any]:
    try:
        return [child for child in map(node.get_child_at_index, range(node.get_child_count())) if child is not None]
    except GLib.Error:
        # It went while we asked.
        return []


def shown_below(node: Any) -> Iterator[Any]:
    for child in children_of(node):
        try:
            showing = child.get_state_set().contains(Atspi.StateType.SHOWING)
        except GLib.Error:
            continue
        if showing:
            yield child
            yield from shown_below(child)


class Listener:
    """One drive by ear."""

    def __init__(self, road: Road, ears: Ears):
        self.road = road
        self.ears = ears

    def find(self, role: Any, name: str) -> Any | None:
        """What is shown, has this role and is called so."""
        for node in self.ears.tree():
            try:
                if node.get_role() == role and node.get_name() == name:
                    return node
            except GLib.Error:
                continue
        return None

    def wait_for(self, role: Any, name: str, seconds: float = 20.0) -> Any:
        return self.road.wait_for(
            f"{Atspi.role_get_name(role)} {name!r}", lambda: self.find(role, name), seconds
        )

    def wait_for_text(self, beginning: str, seconds: float = 20.0) -> str:
        def text() -> str:
            for node in self.ears.tree():
                try:
                    told: str = node.get_name()
                    if node.get_role() == Atspi.Role.LABEL and told.startswith(beginning):
                        return told
                except GLib.Error:
                    continue
            return ""

        return self.road.wait_for(f"the text {beginning!r}", text, seconds)

    def focused(self) -> str:
        """Name of the button that has the keyboard; empty for none."""
        for node in self.ears.tree():
            try:
                if node.get_role() != Atspi.Role.FRAME and node.get_state_set().contains(Atspi.StateType.FOCUSED):
                    name: str = node.get_name()
                    return name
            except GLib.Error:
                continue
        return ""

    def tab_to(self, name: str) -> list[str]:
        """Presses Tab until this button has the keyboard; returns what it passed, and the button."""
        passed: list[str] = []
        for _ in range(ROUND):
            before = self.focused()
            self.road.screen.key("Tab")
            told = self.road.wait_for("the keyboard to go on", lambda: self.moved_from(before))
            passed.append(told)
            if told == name:
                return passed
        raise RoadError(f"Tab never reached {name!r}, but {passed}")

    def moved_from(self, before: str) -> str:
        told = self.focused()
        return told if told != before else ""

    def nameless(self) -> list[str]:
        """Buttons that are shown and have no name."""
        buttons = (Atspi.Role.PUSH_BUTTON, Atspi.Role.CHECK_BOX)
        return [node.get_role_name() for node in self.ears.tree() if node.get_role() in buttons and not node.get_name()]


def drive(listener: Listener) -> None:
    road = listener.road
    server, client, version = "Cinderfall", "Official", "2.1.4"

    road.start_launcher()
    listener.wait_for(Atspi.Role.FRAME, "Emberwake Launcher")
    first = listener.wait_for(Atspi.Role.PUSH_BUTTON, f"{server}, {client}")
    road.check("every button has a name", not listener.nameless())
    say(f"  the panel offers: {first.get_name()}")

    road.screen.focus(road.window)
    road.check("no button has the keyboard yet", not listener.focused())
    passed = listener.tab_to(f"{server}, {client}")
    road.check(f"Tab begins with the first client ({passed})", passed == ["Ashenmoor, Official", f"{server}, {client}"])
    road.screen.key("Return")
    road.wait_for("the choice in settings.txt", lambda: road.settings() == f"{server}|{client}|true|")

    told = listener.wait_for(Atspi.Role.LABEL, f"({version})")
    road.check("it is not installed", told.get_description() == "Not installed")
    listener.wait_for_text(client.upper())
    road.wait_for("Download to have the keyboard", lambda: listener.focused() == "Download")
    road.check("every button has a name", not listener.nameless())
    say(f"  chosen: {client.upper()} {told.get_name()}, {told.get_description()}; the keyboard is on Download")

    road.screen.key("Return")
    bar = listener.wait_for(Atspi.Role.PROGRESS_BAR, "Download")
    road.check("the progress is described", "percent" in bar.get_description())
    value = road.wait_for("the progress beyond a tenth", lambda: how_far(bar, 10))
    text = listener.wait_for_text(f"Downloading client version {version}")
    say(f"  under way: {bar.get_description()}: {value:.0f}; {text}")
    later = road.wait_for("the progress to go on", lambda: how_far(bar, value + 10))
    say(f"  and later: {later:.0f}")
    finished = listener.wait_for_text("Download finished", DOWNLOAD_PATIENCE)
    road.wait_for(
        "the version to be current",
        lambda: bool(listener.wait_for(Atspi.Role.LABEL, f"({version})").get_description() == "Installed and current"),
    )
    say(f"  {finished}")

    listener.tab_to("Play")
    road.check("the client did not start before Play", not road.mark(server, client, version))
    road.screen.key("space")
    road.meet_client(server, client, version, "Emberwake.exe", "playing")

    launcher = road.running()
    road.screen.focus(road.window)
    listener.tab_to("Close")
    road.screen.key("Return")
    road.wait_for("the launcher to end", lambda: launcher.poll() is not None, watch=False)
    road.check(f"exit code 0 (it is {launcher.returncode})", launcher.returncode == 0)
    road.launcher = None


def how_far(bar: Any, least: float) -> float:
    """What the progress bar stands at once that is more than `least`; 0 before."""
    try:
        value: float = Atspi.Value.get_current_value(bar)
    except (GLib.Error, AttributeError):
        return 0.0
    return value if value > least else 0.0


def listen(road: Road, ears: Ears) -> None:
    ears.open(road.environment)
    drive(Listener(road, ears))


def main() -> int:
    parser = argparse.ArgumentParser(description="Drive the launcher by what it tells a screen reader.")
    parser.add_argument("--program", required=True, type=Path, help="the built launcher")
    parser.add_argument("--extractor", required=True, type=Path, help="the built extractor")
    parser.add_argument("--base-url", required=True, help="the base URL it was built for: http://127.0.0.1:PORT/")
    parser.add_argument("--out", required=True, type=Path, help="folder for the picture of a failure")
    parser.add_argument("--scratch", required=True, type=Path, help="folder for everything else; emptied first")
    given = parser.parse_args()

    exit_on_terminate()
    platform = Native(given.program, given.extractor)
    missing = platform.missing()
    if missing:
        say(f"reader.py: missing: {', '.join(missing)}")
        return 1

    road = Road(platform, given.base_url, given.out, given.scratch)
    with closing(Ears()) as ears:
        result = travel(road, partial(listen, road, ears))
    if result == 0:
        say("The whole road was told.")
    return result


if __name__ == "__main__":
    sys.exit(main())
