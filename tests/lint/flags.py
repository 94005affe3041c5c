"""Proves from the compile commands that our own flags reach every own file:
flags.py compile_commands.json [FURTHER FLAG...]
"""

from __future__ import annotations

import shlex
import sys

from sources import PRODUCT, compile_commands, own_files

FLAGS = """-Wall -Wextra -Wpedantic -Wshadow -Wconversion -std=c++17
-DQT_NO_CAST_FROM_ASCII -DQT_NO_CAST_TO_ASCII -DQT_NO_CAST_FROM_BYTEARRAY""".split()

# Sources that other builds compile, with the same functions of the build: the Windows program's tests
# and the fuzz targets.
ELSEWHERE = """tests/app/tst_programfile.cpp tests/check/tst_windowswarnings.cpp
tests/install/tst_realclient.cpp tests/window/tst_nativechrome.cpp
tests/window/tst_nativedrag.cpp tests/window/tst_nativeratio.cpp""".split()


def is_elsewhere(name: str) -> bool:
    return name in ELSEWHERE or name.startswith("tests/fuzz/")


def main(commands_file: str, *further: str) -> int:
    commands = compile_commands(commands_file)
    sources = set(own_files("tests/*.cpp", *(f"{folder}/*.cpp" for folder in PRODUCT)))
    flags = [*FLAGS, *further]
    problems = []
    seen = set()
    for command in commands:
        name = next((s for s in sources if command["file"].endswith("/" + s)), None)
        if name is None:
            continue
        seen.add(name)
        arguments = shlex.split(command["command"])
        missing = [flag for flag in flags if flag not in arguments]
        if missing:
            problems.append(f"{name} is compiled without {' '.join(missing)}")
    problems += [f"{name} is not compiled at all" for name in sorted(sources - seen) if not is_elsewhere(name)]
    problems += [f"{name} is compiled here after all" for name in sorted(seen) if is_elsewhere(name)]
    problems += [f"{name} is gone" for name in ELSEWHERE if name not in sources]
    if len(seen) < 30:
        problems.append(f"only {len(seen)} own files found in {commands_file}")
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
