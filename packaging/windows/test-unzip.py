#!/usr/bin/python3
"""Tests the extractor for Windows under Wine, started as the launcher starts it.

    packaging/windows/test-unzip.py [UNZIP.EXE]     default: build/windows-unzip/unzip.exe

One line per case; the last line is "N passed, N failed", and the result says whether one failed.
Wine gets a folder of settings of its own, which is removed afterwards.
"""

from __future__ import annotations

import os
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import zipfile
from collections.abc import Mapping

HERE = pathlib.Path(__file__).resolve().parent
WINE = "/usr/lib/wine/wine64"
TIMED_OUT = 111


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
        self.environment = dict(
            os.environ, WINEPREFIX=str(scratch / "wine"), WINEDEBUG="-all", LC_ALL="C.UTF-8",
            WINEDLLOVERRIDES="mscoree,mshtml=")
        self.environment.pop("DISPLAY", None)
        self.starter = scratch / "start-hidden.exe"
        subprocess.run(
            ["x86_64-w64-mingw32-gcc-posix", "-O1", "-Wall", "-Wextra", "-Werror", "-municode",
             "-mwindows", "-static", "-o", self.starter, HERE / "start-hidden.c"], check=True)
        self.wine("wineboot", "--init", timeout=180)
        self.count = 0

    def wine(self, *command: str | int | pathlib.Path, timeout: int, cwd: pathlib.Path | None = None) -> int:
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

    def unzip(self, folder: pathlib.Path, *arguments: str, seconds: int = 30) -> tuple[int, str]:
        """The extractor's result and what it wrote."""
        result = self.wine(
            self.starter, "output.txt", seconds, "./unzip.exe", *arguments,
            timeout=seconds + 60, cwd=folder)
        text = (folder / "output.txt").read_bytes().decode("cp437")
        check(result != 112, "the extractor could not be started")
        check(result != TIMED_OUT, f"it did not end within {seconds} seconds; it wrote: {text!r}")
        return result, text

    def code_page(self) -> int:
        self.wine(self.starter, "code-page.txt", timeout=60)
        return int((self.scratch / "code-page.txt").read_text())

    def close(self) -> None:
        subprocess.run(["/usr/lib/wine/wineserver64", "-k"], env=self.environment, check=False)
        subprocess.run(["/usr/lib/wine/wineserver64", "-w"], env=self.environment, check=False)


def archive(path: pathlib.Path, entries: Mapping[str, bytes]) -> None:
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as target:
        for name, content in entries.items():
            target.writestr(name, content)


def encrypted(folder: pathlib.Path, name: str, password: str, entries: Mapping[str, bytes]) -> None:
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


def plain(world: World) -> None:
    folder = world.folder()
    content = {"game.exe": b"MZ" + bytes(70000), "data/deep/map.dat": os.urandom(300000),
               "data/empty": b""}
    archive(folder / "a.zip", content)
    target = folder / "Realm/Game/1.0"
    target.mkdir(parents=True)
    result, text = world.unzip(folder, "a.zip", "-d", "Realm/Game/1.0")
    check(result == 0, f"ended with {result}: {text}")
    expect_tree(target, content)


def password(world: World) -> None:
    folder = world.folder()
    encrypted(folder, "a.zip", "open sesame", {"game.exe": b"secret" * 900})
    result, text = world.unzip(folder, "-P", "open sesame", "a.zip", "-d", "out")
    check(result == 0, f"ended with {result}: {text}")
    expect_tree(folder / "out", {"game.exe": b"secret" * 900})


def password_beyond_code_page(world: World) -> None:
    folder = world.folder()
    encrypted(folder, "a.zip", "Пароль", {"game.exe": b"secret" * 900})
    result, text = world.unzip(folder, "-P", "Пароль", "a.zip", "-d", "out")
    check(result == 0, f"ended with {result}: {text}")
    expect_tree(folder / "out", {"game.exe": b"secret" * 900})


def wrong_password(world: World) -> None:
    folder = world.folder()
    encrypted(folder, "a.zip", "right", {"game.exe": b"secret" * 900})
    result, text = world.unzip(folder, "-P", "wrong", "a.zip", "-d", "out")
    check(result not in (0, TIMED_OUT), f"ended with {result}: {text}")
    expect_tree(folder / "out", {})


def no_password(world: World) -> None:
    folder = world.folder()
    encrypted(folder, "a.zip", "right", {"game.exe": b"secret" * 900, "more.dat": b"more" * 900})
    started = time.monotonic()
    result, text = world.unzip(folder, "a.zip", "-d", "out")
    check(result not in (0, TIMED_OUT), f"ended with {result}: {text}")
    check("unable to get password" in text, f"says nothing of a password: {text}")
    check(time.monotonic() - started < 20, "took longer than 20 seconds")
    expect_tree(folder / "out", {})


def unicode_names(world: World) -> None:
    folder = world.folder()
    content = {"Карты/Мир.dat": b"1", "données/été ñ.txt": b"2", "日本/ゲーム.bin": b"3",
               "emoji \N{DRAGON}.txt": b"4", "ı İ ß.txt": b"5"}
    archive(folder / "a.zip", content)
    result, text = world.unzip(folder, "a.zip", "-d", "out")
    check(result == 0, f"ended with {result}: {text}")
    expect_tree(folder / "out", content)


def unicode_names_by_zip(world: World) -> None:
    folder = world.folder()
    source = folder / "Карты"
    source.mkdir()
    (source / "Мир é.dat").write_bytes(b"1")
    subprocess.run(["zip", "-q", "-r", "a.zip", "Карты"], cwd=folder, check=True,
                   env=dict(os.environ, LC_ALL="C.UTF-8"))
    result, text = world.unzip(folder, "a.zip", "-d", "out")
    check(result == 0, f"ended with {result}: {text}")
    expect_tree(folder / "out", {"Карты/Мир é.dat": b"1"})


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


def oem_name(world: World) -> None:
    folder = world.folder()
    unflagged(folder, "Übergröße.txt".encode("cp437"), 0)
    result, text = world.unzip(folder, "a.zip", "-d", "out")
    check(result == 0, f"ended with {result}: {text}")
    expect_tree(folder / "out", {"Übergröße.txt": b"1"})


def unflagged_utf8_name(world: World) -> None:
    folder = world.folder()
    unflagged(folder, "Карта.txt".encode("utf-8"), 3)
    result, text = world.unzip(folder, "a.zip", "-d", "out")
    check(result == 0, f"ended with {result}: {text}")
    expect_tree(folder / "out", {"Карта.txt": b"1"})


def target_beyond_code_page(world: World) -> None:
    folder = world.folder()
    archive(folder / "архив é.zip", {"Мир/game.exe": b"1"})
    target = "Сервер Один/Игра é/1.0 日本"
    (folder / target).mkdir(parents=True)
    result, text = world.unzip(folder, "архив é.zip", "-d", target)
    check(result == 0, f"ended with {result}: {text}")
    expect_tree(folder / target, {"Мир/game.exe": b"1"})


def installed_beyond_code_page(world: World) -> None:
    folder = world.folder() / "Игры и 遊戲"
    folder.mkdir()
    shutil.copy(world.extractor, folder / "unzip.exe")
    archive(folder / "a.zip", {"game.exe": b"1"})
    result, text = world.unzip(folder, "a.zip", "-d", "Realm")
    check(result == 0, f"ended with {result}: {text}")
    expect_tree(folder / "Realm", {"game.exe": b"1"})


def long_name(world: World) -> None:
    folder = world.folder()
    name = "я" * 60 + "/" + "日" * 80 + ".txt"
    archive(folder / "a.zip", {name: b"1"})
    result, text = world.unzip(folder, "a.zip", "-d", "out")
    check(result == 0, f"ended with {result}: {text}")
    expect_tree(folder / "out", {name: b"1"})


def no_escape(world: World) -> None:
    folder = world.folder()
    archive(folder / "a.zip", {
        "../up.txt": b"1", "../../up2.txt": b"2", "inside/../../up3.txt": b"3",
        "..\\back.txt": b"4", "/top.txt": b"5", "C:/drive.txt": b"6", "C:\\drive2.txt": b"7",
        "\\\\host\\share\\net.txt": b"8", "good.txt": b"9"})
    target = folder / "Realm/Game/1.0"
    target.mkdir(parents=True)
    world.unzip(folder, "a.zip", "-d", "Realm/Game/1.0")
    check((target / "good.txt").is_file(), "the good entry is missing")
    outside = [name for name in tree(folder)
               if not name.startswith("Realm/Game/1.0/") and name not in ("a.zip", "unzip.exe", "output.txt")]
    check(not outside, f"written outside: {outside}")
    names = {"up.txt", "up2.txt", "up3.txt", "back.txt", "top.txt", "drive.txt", "drive2.txt", "net.txt"}
    stray = [str(path) for root in (world.scratch / "wine/drive_c", world.scratch)
             for path in root.iterdir() if path.name in names]
    check(not stray, f"written outside: {stray}")
    check(not any(pathlib.Path("/", name).exists() for name in names), "written to the top folder")


def overlong_escape(world: World) -> None:
    """A slash hidden in a byte sequence that is not valid UTF-8."""
    folder = world.folder()
    unflagged(folder, b"..\xc0\xafup.txt", 3)
    data = bytearray((folder / "a.zip").read_bytes())
    central = data.index(b"PK\1\2")
    # "The name is UTF-8", in both headers.
    for offset in (6, central + 8):
        flags = struct.unpack_from("<H", data, offset)[0]
        struct.pack_into("<H", data, offset, flags | 0x800)
    (folder / "a.zip").write_bytes(data)
    (folder / "out").mkdir()
    world.unzip(folder, "a.zip", "-d", "out")
    check(not (folder / "up.txt").exists(), "written outside")


def zip64(world: World) -> None:
    folder = world.folder()
    with zipfile.ZipFile(folder / "a.zip", "w", zipfile.ZIP_DEFLATED) as target:
        with target.open("small.dat", "w", force_zip64=True) as entry:
            entry.write(b"1" * 5000)
    result, text = world.unzip(folder, "a.zip", "-d", "out")
    check(result == 0, f"ended with {result}: {text}")
    expect_tree(folder / "out", {"small.dat": b"1" * 5000})
    _, text = world.unzip(folder, "-v")
    for feature in ("LARGE_FILE_SUPPORT", "ZIP64_SUPPORT", "UNICODE_SUPPORT"):
        check(feature in text, f"-v does not name {feature}")
    # The licence wants it.
    check("altered for the Emberwake Online Launcher" in text, "-v does not say that it is altered")


def over_4_gib(world: World) -> None:
    """Read through to its checksum, not written: that needs no disk."""
    folder = world.folder()
    size = 4 * 1024**3 + 12345
    with zipfile.ZipFile(folder / "a.zip", "w", zipfile.ZIP_DEFLATED, compresslevel=1) as target:
        with target.open("big.dat", "w", force_zip64=True) as entry:
            block, left = bytes(16 * 1024**2), size
            while left:
                left -= entry.write(block[:left])
    result, text = world.unzip(folder, "-l", "a.zip")
    check(str(size) in text, f"the size is read wrongly: {text}")
    result, text = world.unzip(folder, "-t", "a.zip", seconds=300)
    check(result == 0 and "No errors detected" in text, f"ended with {result}: {text}")


def existing_file(world: World) -> None:
    folder = world.folder()
    archive(folder / "a.zip", {"game.exe": b"new", "other.dat": b"2"})
    (folder / "out").mkdir()
    (folder / "out/game.exe").write_bytes(b"old")
    result, text = world.unzip(folder, "a.zip", "-d", "out")
    check(result == 1, f"ended with {result}: {text}")
    expect_tree(folder / "out", {"game.exe": b"old", "other.dat": b"2"})


def times(world: World) -> None:
    folder = world.folder()
    with zipfile.ZipFile(folder / "a.zip", "w") as target:
        target.writestr(zipfile.ZipInfo("old.txt", (2011, 2, 3, 4, 5, 6)), b"1")
    world.unzip(folder, "a.zip", "-d", "out")
    year = time.localtime((folder / "out/old.txt").stat().st_mtime).tm_year
    check(year == 2011, f"the file is of {year}, not 2011")


def no_archive(world: World) -> None:
    folder = world.folder()
    (folder / "a.zip").write_bytes(b"<html>not found</html>")
    result, text = world.unzip(folder, "a.zip", "-d", "out")
    check(result not in (0, TIMED_OUT), f"ended with {result}: {text}")
    result, text = world.unzip(folder, "missing.zip", "-d", "out")
    check(result not in (0, TIMED_OUT), f"ended with {result}: {text}")


CASES = {
    "a plain archive": plain,
    "an encrypted archive with its password": password,
    "a password with letters outside the code page": password_beyond_code_page,
    "a wrong password: nothing unpacked, ends by itself": wrong_password,
    "an encrypted archive without password and without console: ends by itself": no_password,
    "entries with UTF-8 names": unicode_names,
    "entries with non-ASCII names, archive made by zip": unicode_names_by_zip,
    "an entry with a name in the OEM code page": oem_name,
    "an entry with a UTF-8 name that does not say so": unflagged_utf8_name,
    "archive and target with blanks and letters outside the code page": target_beyond_code_page,
    "installed in a folder with letters outside the code page": installed_beyond_code_page,
    "a path of more than 260 bytes": long_name,
    "entries that would climb out stay inside": no_escape,
    "a slash in invalid UTF-8 does not climb out": overlong_escape,
    "a ZIP64 entry; the build names its features": zip64,
    "an entry of more than 4 GiB": over_4_gib,
    "a file that exists stays, and nothing is asked": existing_file,
    "the time of a file": times,
    "a file that is no archive, and none at all": no_archive,
}


def main() -> int:
    extractor = pathlib.Path(sys.argv[1] if len(sys.argv) > 1
                             else HERE / "../../build/windows-unzip/unzip.exe").resolve()
    if not extractor.is_file():
        sys.exit(f"test-unzip.py: {extractor} is not there; packaging/windows/build-unzip.sh makes it")
    passed = failed = 0
    with tempfile.TemporaryDirectory(prefix="test-unzip.") as scratch:
        world = World(pathlib.Path(scratch), extractor)
        try:
            # The names above are worth something only while the code page lacks their letters.
            code_page = world.code_page()
            if code_page != 1252:
                sys.exit(f"test-unzip.py: Wine's code page is {code_page}, and should be 1252")
            for name, case in CASES.items():
                try:
                    case(world)
                except (Failure, subprocess.TimeoutExpired, OSError) as error:
                    failed += 1
                    print(f"FAIL  {name}: {error}", flush=True)
                else:
                    passed += 1
                    print(f"ok    {name}", flush=True)
        finally:
            world.close()
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
