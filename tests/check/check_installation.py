"""cmake --install puts the checker, its man page and its completion where a Linux system looks for them,
and both know every option: check_installation.py CMAKE BUILD-FOLDER
"""

from __future__ import annotations

import re
import subprocess
import sys
import tempfile
from pathlib import Path


def output(*command: str | Path) -> str:
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"{command} ended with {done.returncode}:\n{done.stdout}{done.stderr}")
    if done.stderr:
        sys.exit(f"{command} warns:\n{done.stderr}")
    return done.stdout


def completed(script: Path, folder: Path, *words: str) -> set[str]:
    """What bash offers for the last of these words."""
    line = " ".join(f"'{word}'" for word in ("emberwake-check", *words))
    return set(output("bash", "--norc", "-c", f"cd '{folder}' && . '{script}' && COMP_WORDS=({line}) && "
                      f"COMP_CWORD={len(words)} && _emberwake_check && printf '%s\\n' \"${{COMPREPLY[@]}}\"").split("\n")) - {""}


def main(cmake: str, build: str) -> None:
    with tempfile.TemporaryDirectory(prefix="emberwake-install-") as scratch:
        prefix = Path(scratch, "prefix")
        output(cmake, "--install", build, "--prefix", prefix)
        program = prefix / "bin/emberwake-check"
        page = prefix / "share/man/man1/emberwake-check.1"
        completion = prefix / "share/bash-completion/completions/emberwake-check"
        installed = {path for path in prefix.rglob("*") if path.is_file()}
        if installed != {program, page, completion}:
            sys.exit(f"installed: {sorted(installed)}")

        options = set(re.findall(r"--[a-z]+(?:-[a-z]+)*", output(program, "--help")))
        if len(options) < 8:
            sys.exit(f"the program says only {options}")
        text = output("man", "--warnings", "--local-file", page)
        for what, known in (("the man page", set(re.findall(r"--[a-z]+(?:-[a-z]+)*", text))),
                            ("the completion", completed(completion, prefix, "--"))):
            if known != options:
                sys.exit(f"{what} and the program differ in {known ^ options}")
        for status in ("0", "1", "2", "64"):
            if not re.search(rf"^ +{status} ", text, re.MULTILINE):
                sys.exit(f"the man page does not say what {status} means")

        folder = Path(scratch, "files")
        folder.mkdir()
        (folder / "next one.xml").touch()
        for words, expected in ((("--de",), {"--deep"}), (("--previous", "n"), {"next one.xml"}), (("n",), {"next one.xml"}),
                                (("--code", ""), set()), (("--x",), set())):
            if completed(completion, folder, *words) != expected:
                sys.exit(f"{words} are completed to {completed(completion, folder, *words)}")


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2])
