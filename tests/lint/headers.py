"""Compiles every header alone: headers.py COMPILE_COMMANDS

A header that only compiles behind another one breaks whoever includes it first.
"""

from __future__ import annotations

import json
import os
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

# They need the other system's own headers.
WINDOWS_ONLY = ("tests/window/nativewindowtest.h",)

# A source that may use all that the headers of its folder may use.
SOURCE_WITH_ALL = {"tests": "tests/check/tst_warnings.cpp", "check": "check/main.cpp"}
OTHERS = "window/testform.cpp"


def own_headers() -> list[str]:
    """Known to git or not yet."""
    listed = subprocess.run(
        ["git", "ls-files", "--cached", "--others", "--exclude-standard", "--", "*.h"],
        check=True,
        stdout=subprocess.PIPE,
        text=True,
    )
    names = {name for name in listed.stdout.split() if Path(name).is_file()}
    # What is written in C belongs to programs of its own.
    return sorted(name for name in names if not name.startswith("packaging/") and name not in WINDOWS_ONLY)


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


def compiled_alone(header: str, arguments: list[str]) -> str:
    """What the compiler says of it; empty when it compiles."""
    done = subprocess.run(
        [*arguments, "-fsyntax-only", "-x", "c++", "-"],
        input=f'#include "{header}"\n',
        check=False,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
    )
    return "" if done.returncode == 0 else f"{header} does not compile alone:\n{done.stdout}"


def main() -> int:
    commands = json.loads(Path(sys.argv[1]).read_text(encoding="utf-8"))
    headers = own_headers()
    if len(headers) < 50:
        raise SystemExit(f"only {len(headers)} headers found")
    sources = {header: SOURCE_WITH_ALL.get(Path(header).parts[0], OTHERS) for header in headers}
    arguments = {source: arguments_of(source, commands) for source in set(sources.values())}
    with ThreadPoolExecutor(max_workers=os.cpu_count()) as pool:
        told = list(pool.map(lambda header: compiled_alone(header, arguments[sources[header]]), headers))
    problems = [problem for problem in told if problem]
    print("\n".join(problems) or f"{len(headers)} headers compile alone")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
