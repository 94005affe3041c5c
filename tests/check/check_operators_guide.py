"""Follows docs/operators.md to the letter: check_operators_guide.py PROGRAM

Its commands run in order in a copy of what they need, beside a web server, on a free port in place
of the one in the text; what builds or opens something is left out, PROGRAM is what they would build.
Every call of the checker has to find nothing. The table of docs/findings.md has to name exactly those
findings that the sources have, with their severities.
"""

from __future__ import annotations

import os
import re
import shutil
import subprocess
import sys
import tempfile
from collections import defaultdict
from collections.abc import Iterator
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
GUIDE = ROOT / "docs" / "operators.md"
TABLE = ROOT / "docs" / "findings.md"


def blocks() -> Iterator[str]:
    """The guide's commands. Building and the launcher's own window are tested elsewhere."""
    for block in re.findall(r"^```sh\n(.*?)^```", GUIDE.read_text(encoding="utf-8"), re.M | re.S):
        if "cmake" not in block:
            yield block


def follow(program: str, scratch: Path) -> None:
    (scratch / "build" / "release").mkdir(parents=True)
    shutil.copy(program, scratch / "build" / "release" / "emberwake-check")
    shutil.copytree(ROOT / "demo" / "world", scratch / "demo" / "world")
    port = subprocess.check_output([sys.executable, ROOT / "demo" / "free_port.py", "0"], text=True).strip()
    server = None
    checks = 0
    try:
        for block in blocks():
            block = block.replace("8000", port)
            print(block)
            if "http.server" in block:
                (scratch / "log").touch()
                # Tells that it is ready, unbuffered.
                server = subprocess.Popen(
                    [sys.executable, "-u", *block.split()[1:]],
                    cwd=scratch, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
                assert server.stdout is not None
                server.stdout.readline()
                continue
            done = subprocess.run(
                ["bash", "-euc", block], cwd=scratch, capture_output=True, text=True, check=False)
            print(done.stdout + done.stderr)
            expected = block.count("emberwake-check")
            checks += expected
            if done.returncode != 0 or done.stdout.count("0 errors, 0 warnings") != expected:
                sys.exit(f"ended with {done.returncode}, or found something")
    finally:
        if server is not None:
            server.terminate()
            server.wait()
    if checks < 4 or server is None:
        sys.exit(f"only {checks} checks in the guide")


def ids_in(source: str) -> set[str]:
    """The ids of findings that a source of the checker names."""
    without_comments = re.sub(
        r'("(?:\\.|[^"\\\n])*")|//[^\n]*|/\*.*?\*/', lambda found: found[1] or " ", source, flags=re.S)
    patterns = (
        # Nothing else in the checker is written like an id of several words.
        r'"([a-z0-9]+(?:-[a-z0-9]+)+)"',
        # Of one word: an argument behind the place and before the text, without QStringLiteral. Texts
        # beside texts are a list of something else.
        r'[^"\s]\s*,\s*"([a-z0-9]+)"\s*,\s*(?!")',
        r'[?:]\s*"([a-z0-9]+)"',
        r'\bFinding::(?:Error|Warning|Note)\s*,\s*(?:QStringLiteral|QLatin1String)\("([a-z0-9]+)"\)',
    )
    return {found for pattern in patterns for found in re.findall(pattern, without_comments)}


def compare_findings() -> None:
    in_sources: set[str] = set()
    taken: set[str] = set()  # by --ignore
    said: defaultdict[str, set[str]] = defaultdict(set)  # severities
    for source in sorted((ROOT / "check").rglob("*")):
        if source.suffix in (".cpp", ".h"):
            text = source.read_text(encoding="utf-8")
            if source.name == "findingids.cpp":
                taken = set(re.findall(r'^    "([a-z0-9-]+)",$', text, re.M))
            else:
                in_sources |= ids_in(text)
                for severity, name in re.findall(r'\b(error|warning|note)At\([^"]*?"([a-z0-9-]+)"', text):
                    said[name].add(severity)
    # The name of the program, an option, an encoding, the guide's code.
    in_sources -= {"emberwake-check", "fail-on", "windows-1252", "our-code"}
    rows = re.findall(r"^\| `([a-z0-9-]+)` \| ([a-z, ]+) \|", TABLE.read_text(encoding="utf-8"), re.M)
    listed = [name for name, _ in rows]
    problems = [f"{name} is not in the table of findings" for name in sorted(in_sources - set(listed))]
    problems += [f"{name} is in the table, no source has it" for name in sorted(set(listed) - in_sources)]
    problems += [f"{name} is not in findingids.cpp" for name in sorted(in_sources - taken)]
    problems += [f"{name} is in findingids.cpp, no rule has it" for name in sorted(taken - in_sources)]
    problems += [f"{name} is in the table twice" for name in sorted(set(listed)) if listed.count(name) > 1]
    problems += ["the table is not in alphabetical order"] if listed != sorted(listed) else []
    for name, severities in rows:
        # Some rules name their ids elsewhere than in the call.
        if said[name] and said[name] != set(severities.split(", ")):
            problems.append(f"{name} is {', '.join(sorted(said[name]))} in the sources")
    if len(listed) < 40:
        problems.append("the table of findings was not understood")
    if problems:
        sys.exit("\n".join(problems))


def main(program: str) -> None:
    os.environ.pop("http_proxy", None)
    compare_findings()
    with tempfile.TemporaryDirectory(prefix="emberwake-guide-") as scratch:
        follow(program, Path(scratch))


if __name__ == "__main__":
    main(sys.argv[1])
