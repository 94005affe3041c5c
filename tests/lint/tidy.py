#!/usr/bin/python3
"""Runs clang-tidy over the launcher's, the extractor's and the checker's sources: tidy.py BUILD_FOLDER

Each source alone would take ten seconds, nearly all of them for the toolkit's headers. So the
sources of one program are put together and read once; a finding is then looked up in its own file,
for the place.
"""

from __future__ import annotations

import re
import subprocess
import sys
import tempfile
from collections import Counter
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from sources import arguments_of, compile_commands, own_files

# Sources that can stand in one file, by folder. Each main() stands alone.
GROUPS = (("window", "info", "install", "news", "fetch", "base"), ("extract",), ("check",), ("app",))
INCLUDE = re.compile(r"^\s*#\s*include\s+\S+", re.M)


def tidy(source: Path | str, arguments: list[str], *options: str) -> tuple[bool, str]:
    done = subprocess.run(
        ["clang-tidy", "-quiet", f"-config-file={Path('.clang-tidy').resolve()}", *options, str(source), "--"]
        + arguments,
        check=False,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
    )
    return done.returncode == 0, done.stdout


def repeated_includes(source: str) -> list[str]:
    """Taken from clang-tidy, to which every second source would repeat what the first includes."""
    found = Counter(INCLUDE.findall(Path(source).read_text(encoding="utf-8")))
    return [f"{source}: twice: {line.strip()}" for line, count in found.items() if count > 1]


def check_together(sources: list[str], arguments: list[str], scratch: Path) -> str:
    """Findings of sources that share their arguments; empty when there is none."""
    together = scratch / sources[0].replace("/", "-")
    with together.open("w", encoding="utf-8") as out:
        for source in sources:
            out.write(f'#line 1 "{Path(source).resolve()}"\n')
            out.write(Path(source).read_text(encoding="utf-8"))
    # Headers are included by path from the root, which is among the arguments.
    quiet, told = tidy(together, arguments, "-checks=-readability-duplicate-include")
    if quiet:
        return ""
    alone = [output for clean, output in (tidy(source, arguments) for source in sources) if not clean]
    return "".join(alone) or told


def main() -> int:
    commands = compile_commands(f"{sys.argv[1]}/compile_commands.json")
    batches: list[tuple[list[str], list[str]]] = []
    problems = []
    for folders in GROUPS:
        sources = own_files(*(f"{folder}/*.cpp" for folder in folders))
        if not sources:
            raise SystemExit(f"no source in {', '.join(folders)}")
        for source in sources:
            problems += repeated_includes(source)
        arguments = {source: arguments_of(source, commands)[1:] for source in sources}
        alone = [source for source in sources if Path(source).name == "main.cpp"]
        rest = [source for source in sources if source not in alone]
        # Whoever may use the most libraries can read what the others read.
        batches += [
            (batch, max((arguments[source] for source in batch), key=len))
            for batch in (rest, *([source] for source in alone))
            if batch
        ]
    with tempfile.TemporaryDirectory() as scratch, ThreadPoolExecutor(max_workers=2) as pool:
        problems += [text for text in pool.map(lambda b: check_together(b[0], b[1], Path(scratch)), batches) if text]
    print("\n".join(problems))
    print(f"{sum(len(batch) for batch, _ in batches)} sources read, {'findings' if problems else 'no finding'}")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
