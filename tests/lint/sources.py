"""What the checks ask of the tree and of the build: its own files, and how they are compiled."""

from __future__ import annotations

import json
import shlex
import subprocess
from pathlib import Path

# The product's folders, from the ground floor upwards.
PRODUCT = ("base", "fetch", "info", "install", "news", "window", "app", "extract", "check")


def own_files(*patterns: str) -> list[str]:
    """The files of these patterns that git knows or does not know yet, without what it ignores."""
    listed = subprocess.run(
        ["git", "ls-files", "--cached", "--others", "--exclude-standard", "--", *patterns],
        check=True,
        stdout=subprocess.PIPE,
        text=True,
    )
    return sorted(name for name in set(listed.stdout.split("\n")) if name and Path(name).is_file())


def compile_commands(file_name: str) -> list[dict[str, str]]:
    commands: list[dict[str, str]] = json.loads(Path(file_name).read_text(encoding="utf-8"))
    return commands


def arguments_of(source: str, commands: list[dict[str, str]]) -> list[str]:
    """The compiler and what it is told for a source, without input and output."""
    path = Path(source).resolve()
    for command in commands:
        if Path(command["directory"], command["file"]).resolve() == path:
            arguments = shlex.split(command["command"])
            for option in ("-o", "-c"):
                place = arguments.index(option)
                del arguments[place : place + 2]
            return arguments
    raise SystemExit(f"{source} is compiled by no target")
