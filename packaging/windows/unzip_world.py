"""Where the extractor for Windows is tried: a Wine of its own, and the archives it gets."""

from __future__ import annotations

import os
import pathlib
import shutil
import subprocess
import zipfile
from collections.abc import Mapping

HERE = pathlib.Path(__file__).resolve().parent
WINE = "/usr/lib/wine/wine64"
# Of start-hidden.c.
TIMED_OUT = 111
NOT_STARTED = 112
WRONG_USE = 64


class Failure(Exception):
    """What a case found wrong."""


def check(condition: bool, message: str) -> None:
    if not condition:
        raise Failure(message)


class World:
    """Wine's folder, the starter of hidden programs, and a fresh installation folder per case."""

    def __init__(self, scratch: pathlib.Path, extractor: pathlib.Path) -> None:
        self.scratch = scratch
        self.extractor = extractor
        # Windows' folders of the player are links into the home: not into the caller's.
        home = scratch / "home"
        home.mkdir()
        self.environment = dict(
            os.environ, HOME=str(home), WINEPREFIX=str(scratch / "wine"), WINEDEBUG="-all", LC_ALL="C.UTF-8",
            WINEDLLOVERRIDES="mscoree,mshtml=")
        self.environment.pop("DISPLAY", None)
        self.starter = scratch / "start-hidden.exe"
        subprocess.run(
            ["x86_64-w64-mingw32-gcc-posix", "-O1", "-Wall", "-Wextra", "-Werror", "-municode",
             "-mwindows", "-static", "-o", self.starter, HERE / "start-hidden.c"], check=True)
        self.wine("wineboot", "--init", timeout=180)
        self.count = 0

    def wine(self, *command: str | float | pathlib.Path, timeout: float, cwd: pathlib.Path | None = None) -> int:
        return subprocess.run(
            [WINE, *map(str, command)], env=self.environment, cwd=cwd or self.scratch,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            timeout=timeout, check=False).returncode

    def folder(self) -> pathlib.Path:
        self.count += 1
        folder = self.scratch / f"case {self.count}"
        folder.mkdir()
        shutil.copy(self.extractor, folder / "unzip.exe")
        return folder

    def start(self, folder: pathlib.Path, seconds: float, *arguments: str) -> tuple[int, str]:
        """The extractor's result and what it wrote; ended after so many seconds."""
        result = self.wine(
            self.starter, "output.txt", seconds, "./unzip.exe", *arguments,
            timeout=seconds + 60, cwd=folder)
        output = folder / "output.txt"
        text = output.read_bytes().decode("utf-8")
        output.unlink()
        check(result != NOT_STARTED, "the extractor could not be started")
        return result, text

    def unzip(self, folder: pathlib.Path, *arguments: str, seconds: float = 30) -> tuple[int, str]:
        result, text = self.start(folder, seconds, *arguments)
        check(result != TIMED_OUT, f"it did not end within {seconds} seconds; it wrote: {text!r}")
        return result, text

    def unpacks(self, folder: pathlib.Path, *arguments: str, seconds: float = 30) -> None:
        result, text = self.unzip(folder, *arguments, seconds=seconds)
        check(result == 0, f"ended with {result}: {text}")
        check(text == "", f"it wrote: {text!r}")

    def refuses(self, folder: pathlib.Path, *arguments: str) -> str:
        """One line, nothing unpacked, nothing left, into a folder that the launcher has just made."""
        target = folder / "out"
        target.mkdir(exist_ok=True)
        before = names(folder) - {"out"}
        result, text = self.unzip(folder, *arguments, "-d", "out")
        check(result not in (0, WRONG_USE), f"ended with {result}: {text!r}")
        check(text.count("\n") == 1 and text.endswith("\n"), f"not one line: {text!r}")
        check(names(folder) == before, f"left behind: {names(folder) - before}")
        return text

    def code_page(self) -> int:
        self.wine(self.starter, "code-page.txt", timeout=60)
        return int((self.scratch / "code-page.txt").read_text())

    def close(self) -> None:
        subprocess.run(["/usr/lib/wine/wineserver64", "-k"], env=self.environment, check=False)
        subprocess.run(["/usr/lib/wine/wineserver64", "-w"], env=self.environment, check=False)


def names(folder: pathlib.Path) -> set[str]:
    return {path.name for path in folder.iterdir()}


def archive(path: pathlib.Path, entries: Mapping[str, bytes]) -> None:
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as target:
        for name, content in entries.items():
            target.writestr(name, content)


def encrypted(folder: pathlib.Path, name: str, password: bytes, entries: Mapping[str, bytes]) -> None:
    """Made by zip: Python reads encrypted archives only."""
    source = folder / "to-encrypt"
    source.mkdir()
    for entry, content in entries.items():
        (source / entry).write_bytes(content)
    subprocess.run(["zip", "-q", "-r", "-P", password, str(folder / name), "."], cwd=source, check=True)
    shutil.rmtree(source)


def tree(folder: pathlib.Path) -> dict[str, bytes]:
    return {str(path.relative_to(folder)): path.read_bytes()
            for path in sorted(folder.rglob("*")) if path.is_file()}


def expect_tree(folder: pathlib.Path, expected: Mapping[str, bytes]) -> None:
    found = tree(folder)
    check(found == expected, f"expected {sorted(expected)}, found {sorted(found)}")


def unflagged(folder: pathlib.Path, raw_name: bytes, system: int) -> None:
    """An archive whose only entry has a name in bytes, and says nothing of UTF-8."""
    placeholder = "x" * len(raw_name)
    with zipfile.ZipFile(folder / "a.zip", "w") as target:
        entry = zipfile.ZipInfo(placeholder)
        entry.create_system = system
        target.writestr(entry, b"1")
    data = (folder / "a.zip").read_bytes()
    check(data.count(placeholder.encode()) == 2, "the placeholder is not unique")
    (folder / "a.zip").write_bytes(data.replace(placeholder.encode(), raw_name))
