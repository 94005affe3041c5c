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
import os
import sys
import time
from functools import partial
from pathlib import Path

# The folders that it imports from, beside its own.
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [os.fspath(ROOT / "demo")]

import make_world
from platforms import Native, Wine
from road import (
    ACTION_BUTTON,
    CLOSE_BUTTON,
    CLOSE_BUTTON_OF_PANEL,
    CONNECTING_TEXT,
    NEWS_TAB,
    SELECT_SERVER,
    SERVER_LABEL,
    TILES,
    Road,
    client_button,
    ended,
    travel,
)
from scene import exit_on_terminate, say
from screen import Rect


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


def drive(road: Road) -> None:
    if road.world.authority is not None:
        distrust_road(road)
    main_road(road)
    code_road(road)


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
    result = travel(road, partial(drive, road))
    if result == 0:
        say(f"The whole road was driven: {road.stops} stops, pictures in {road.out}")
    return result


if __name__ == "__main__":
    sys.exit(main())
