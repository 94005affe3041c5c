#!/usr/bin/python3
"""What the desktop starts, during the demo, when the launcher opens something.

On Windows the shell runs the client's .exe. Linux has no such action, so the
demo registers this program as the handler for files and web pages, in settings
of its own, for the launcher's process alone (see scene.py). It gets the address
that the launcher handed over:

- a local file, usually relative to the launcher's folder
  (file:Cinderfall/Official/2.1.4/Emberwake.exe): run with sh, if it lies inside
  the demo's installation folder;
- a web page: written to a list, or opened in the user's own browser.
"""

from __future__ import annotations

import json
import os
import shutil
import sys
from pathlib import Path
from typing import TypedDict
from urllib.parse import unquote, urlsplit


class Settings(TypedDict):
    """Written by scene.py beside the copy of this program that it registers."""

    installation: str
    # Where web pages are written to; None: the user's browser opens them.
    pages_list: str | None
    # What the demo's desktop changed, as it was before; None: not set.
    user_environment: dict[str, str | None]


def main() -> int:
    if len(sys.argv) != 2:
        print("open_client.py: expected one address", file=sys.stderr)
        return 1
    address = sys.argv[1]
    settings: Settings = json.loads(
        Path(__file__).resolve().with_name("open_client.json").read_text(encoding="utf-8")
    )

    if urlsplit(address).scheme in ("http", "https"):
        return open_page(address, settings)
    return run_client(address, settings)


def open_page(address: str, settings: Settings) -> int:
    if settings["pages_list"]:
        with open(settings["pages_list"], "a", encoding="utf-8") as pages:
            pages.write(address + "\n")
        return 0
    # The user's own settings again: the browser must not start with an empty
    # profile only because the demo runs.
    environment = dict(os.environ)
    for name, value in settings["user_environment"].items():
        if value is None:
            environment.pop(name, None)
        else:
            environment[name] = value
    program = shutil.which("xdg-open")
    if program is None:
        print(f"open_client.py: no xdg-open for {address}", file=sys.stderr)
        return 1
    os.execve(program, [program, address], environment)


def run_client(address: str, settings: Settings) -> int:
    # Some versions of xdg-open hand over a path instead of the address.
    path = Path(unquote(urlsplit(address).path) if address.startswith("file:") else address).resolve()
    installation = Path(settings["installation"]).resolve()
    if not path.is_relative_to(installation) or not path.is_file():
        print(f"open_client.py: no client of the demo: {address}", file=sys.stderr)
        return 1
    # By sh, not directly: a file system mounted without permission to execute
    # is no reason for the sample client not to start.
    os.execv("/bin/sh", ["sh", os.fspath(path)])


if __name__ == "__main__":
    sys.exit(main())
