#!/usr/bin/python3
"""Opens the real launcher on the user's own screen, in the demo world.

Serves the world while the launcher runs and ends with the launcher's exit code.
"""

from __future__ import annotations

import argparse
import os
import subprocess
import sys
from pathlib import Path

# The folders that it imports from, beside its own.
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [os.fspath(ROOT / "demo")]

import make_world
from make_world import WorldError
from scene import Desktop, World, end_process, exit_on_terminate, prepare_installation, say


def main() -> int:
    parser = argparse.ArgumentParser(description="Open the launcher on this screen, in the Emberwake demo world.")
    parser.add_argument("--program", required=True, type=Path, help="the built launcher")
    parser.add_argument("--extractor", required=True, type=Path, help="the built extractor")
    parser.add_argument("--base-url", required=True, help="the base URL it was built for: http://127.0.0.1:PORT/")
    parser.add_argument("--world", required=True, type=Path, help="folder for the world; emptied first")
    parser.add_argument("--install", required=True, type=Path, help="folder the launcher lives in; emptied first")
    given = parser.parse_args()

    exit_on_terminate()
    world = World(given.world, given.base_url, given.install.with_name(given.install.name + "-access.log"))
    desktop = None
    launcher = None
    try:
        world.start()
        prepare_installation(given.install, given.extractor)
        desktop = Desktop(given.install, pages_list=None)
        say(
            f"The demo world is served at {given.base_url}; the launcher lives in {given.install}.\n"
            f"Pick a server, download its client and press Play. F12 takes a code: {make_world.BETA_CODE}\n"
            "Closing the launcher ends the demo."
        )
        launcher = subprocess.Popen(
            [given.program.resolve()], cwd=given.install, env=desktop.environment(dict(os.environ))
        )
        code = launcher.wait()
    except WorldError as error:
        say(f"show.py: {error}")
        return 1
    except KeyboardInterrupt:
        return 130
    finally:
        if launcher is not None:
            end_process(launcher)
        if desktop is not None:
            desktop.remove()
        world.stop()

    started = sorted(given.install.glob("*/*/*/started.txt"))
    for mark in started:
        say(f"The sample client was started: {mark.parent.relative_to(given.install)}")
    if code != 0:
        say(f"The launcher ended with exit code {code}.")
    # A program ended by a signal has a negative code here, as no shell has.
    return code if code >= 0 else 128 - code


if __name__ == "__main__":
    sys.exit(main())
