"""Follows docs/operators.md to the letter: check_operators_guide.py PROGRAM

Its commands run in order in a copy of what they need, beside a web server, on a free port in place
of the one in the text; what builds or opens something is left out, PROGRAM is what they would build.
Every call of the checker has to find nothing. The table of findings has to name exactly those that
the sources have.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
GUIDE = ROOT / "docs" / "operators.md"


def blocks():
    """The guide's commands. Building and the launcher's own window are tested elsewhere."""
    for block in re.findall(r"^```sh\n(.*?)^```", GUIDE.read_text(encoding="utf-8"), re.M | re.S):
        if "cmake" not in block:
            yield block


def follow(program, scratch):
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


def compare_findings():
    in_sources = set()
    for source in (ROOT / "check").glob("*.cpp"):
        text = source.read_text(encoding="utf-8")
        in_sources |= set(re.findall(r'"([a-z0-9]+(?:-[a-z0-9]+)+)"', text))
        in_sources |= set(re.findall(r'place, "([a-z0-9]+)"', text))
    # Names of options, and of the program.
    in_sources -= {"emberwake-check"}
    in_sources |= {"http", "redirect", "unreachable"}
    table = GUIDE.read_text(encoding="utf-8").partition("## Findings")[2]
    listed = set()
    for row in re.findall(r"^\| (`.*?) \|", table, re.M):
        listed |= set(re.findall(r"`([a-z0-9-]+)`", row))
    if in_sources != listed:
        sys.exit(f"not in the guide: {in_sources - listed}; not in the sources: {listed - in_sources}")
    if len(listed) < 40:
        sys.exit("the table of findings was not understood")


def main(program):
    os.environ.pop("http_proxy", None)
    compare_findings()
    with tempfile.TemporaryDirectory(prefix="emberwake-guide-") as scratch:
        follow(program, Path(scratch))


if __name__ == "__main__":
    main(sys.argv[1])
