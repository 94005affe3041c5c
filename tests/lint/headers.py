"""Compiles every header alone: headers.py COMPILE_COMMANDS

A header that only compiles behind another one breaks whoever includes it first.
"""

from __future__ import annotations

import os
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from sources import arguments_of, compile_commands, own_files

# They need the other system's own headers.
WINDOWS_ONLY = ("tests/window/nativewindowtest.h",)

# A source that may use all that the headers of its folder may use.
SOURCE_WITH_ALL = {"tests": "tests/check/tst_warnings.cpp", "check": "check/main.cpp", "extract": "extract/main.cpp"}
OTHERS = "window/testform.cpp"


def own_headers() -> list[str]:
    """What is written in C belongs to programs of its own."""
    return [name for name in own_files("*.h") if not name.startswith("packaging/") and name not in WINDOWS_ONLY]


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
    commands = compile_commands(sys.argv[1])
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
