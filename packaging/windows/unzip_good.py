"""What the extractor for Windows unpacks, and how it is called."""

from __future__ import annotations

import ctypes
import os
import pathlib
import random
import shutil
import struct
import subprocess
import time
import zipfile
from collections.abc import Mapping

from unzip_world import (
    HERE,
    TIMED_OUT,
    WRONG_USE,
    World,
    archive,
    check,
    encrypted,
    expect_tree,
    names,
    tree,
    unflagged,
)


def plain(world: World) -> None:
    folder = world.folder()
    content = {"game.exe": b"MZ" + bytes(70000), "data/deep/map.dat": os.urandom(300000),
               "data/empty": b""}
    archive(folder / "a.zip", content)
    target = folder / "Realm/Game/1.0"
    target.mkdir(parents=True)
    world.unpacks(folder, "a.zip", "-d", "Realm/Game/1.0")
    expect_tree(target, content)
    check(names(target.parent) == {"1.0"}, f"left beside it: {names(target.parent)}")


def folder_that_is_not_there(world: World) -> None:
    folder = world.folder()
    archive(folder / "a.zip", {"game.exe": b"1", "empty/": b""})
    world.unpacks(folder, "a.zip", "-d", "out")
    expect_tree(folder / "out", {"game.exe": b"1"})
    check((folder / "out/empty").is_dir(), "the empty folder is missing")


def password(world: World) -> None:
    folder = world.folder()
    content = {"game.exe": b"secret" * 900}
    # "Ete" with accents, in UTF-8 as a Linux packs it, in the OEM and in the ANSI code page.
    for text, lock in (("open sesame", b"open sesame"), ("Пароль", "Пароль".encode()),
                       ("Été", "Été".encode("cp437")), ("Été", "Été".encode("cp1252")),
                       ('with "quotes\\', b'with "quotes\\')):
        (folder / "a.zip").unlink(missing_ok=True)
        encrypted(folder, "a.zip", lock, content)
        world.unpacks(folder, "-P", text, "a.zip", "-d", "out")
        expect_tree(folder / "out", content)
        shutil.rmtree(folder / "out")


def pack_aes(path: pathlib.Path, method: int, entries: Mapping[str, bytes]) -> None:
    library = ctypes.CDLL("libzip.so")
    library.zip_open.restype = library.zip_source_buffer.restype = ctypes.c_void_p
    library.zip_file_add.restype = ctypes.c_int64
    error = ctypes.c_int()
    handle = ctypes.c_void_p(library.zip_open(os.fsencode(path), 1, ctypes.byref(error)))
    for name, content in entries.items():
        source = ctypes.c_void_p(
            library.zip_source_buffer(handle, content, ctypes.c_uint64(len(content)), 0))
        index = library.zip_file_add(handle, name.encode(), source, 0)
        done = library.zip_file_set_encryption(handle, ctypes.c_uint64(index), method, b"code")
        check(index >= 0 and done == 0, "libzip does not encrypt")
    check(library.zip_close(handle) == 0, "libzip does not pack")


def aes(world: World) -> None:
    # A short member carries no sum, a longer one does.
    content = {"short.txt": b"short", "game.exe": os.urandom(300000)}
    for method in (0x101, 0x102, 0x103):
        folder = world.folder()
        pack_aes(folder / "a.zip", method, content)
        world.unpacks(folder, "-P", "code", "a.zip", "-d", "right")
        expect_tree(folder / "right", content)
        world.refuses(folder, "-P", "other", "a.zip")


def unicode_names(world: World) -> None:
    folder = world.folder()
    content = {"Карты/Мир.dat": b"1", "données/été ñ.txt": b"2", "日本/ゲーム.bin": b"3",
               "emoji \N{DRAGON}.txt": b"4", "ı İ ß.txt": b"5"}
    archive(folder / "a.zip", content)
    world.unpacks(folder, "a.zip", "-d", "out")
    expect_tree(folder / "out", content)


def unicode_names_by_zip(world: World) -> None:
    folder = world.folder()
    source = folder / "Карты"
    source.mkdir()
    (source / "Мир é.dat").write_bytes(b"1")
    subprocess.run(["zip", "-q", "-r", "a.zip", "Карты"], cwd=folder, check=True,
                   env=dict(os.environ, LC_ALL="C.UTF-8"))
    world.unpacks(folder, "a.zip", "-d", "out")
    expect_tree(folder / "out", {"Карты/Мир é.dat": b"1"})


def oem_name(world: World) -> None:
    folder = world.folder()
    unflagged(folder, "Übergröße.txt".encode("cp437"), 0)
    world.unpacks(folder, "a.zip", "-d", "out")
    expect_tree(folder / "out", {"Übergröße.txt": b"1"})


def unflagged_utf8_name(world: World) -> None:
    folder = world.folder()
    unflagged(folder, "Карта.txt".encode("utf-8"), 3)
    world.unpacks(folder, "a.zip", "-d", "out")
    expect_tree(folder / "out", {"Карта.txt": b"1"})


def backslashes(world: World) -> None:
    """Some programs for Windows separate by them."""
    folder = world.folder()
    archive(folder / "a.zip", {"data\\deep\\map.dat": b"1"})
    world.unpacks(folder, "a.zip", "-d", "out")
    expect_tree(folder / "out", {"data/deep/map.dat": b"1"})


def target_beyond_code_page(world: World) -> None:
    folder = world.folder()
    archive(folder / "архив é.zip", {"Мир/game.exe": b"1"})
    target = "Сервер Один/Игра é/1.0 日本"
    (folder / target).mkdir(parents=True)
    world.unpacks(folder, "архив é.zip", "-d", target)
    expect_tree(folder / target, {"Мир/game.exe": b"1"})


def installed_beyond_code_page(world: World) -> None:
    folder = world.folder() / "Игры и 遊戲"
    folder.mkdir()
    shutil.copy(world.extractor, folder / "unzip.exe")
    archive(folder / "a.zip", {"game.exe": b"1"})
    world.unpacks(folder, "a.zip", "-d", "Realm")
    expect_tree(folder / "Realm", {"game.exe": b"1"})


def long_paths(world: World) -> None:
    """More than 260 characters: of a member alone, and of everything."""
    folder = world.folder()
    name = "/".join(letter * 80 for letter in "яцш日") + ".txt"
    archive(folder / "a.zip", {name: b"1"})
    world.unpacks(folder, "a.zip", "-d", "out")
    expect_tree(folder / "out", {name: b"1"})
    deep = folder / "/".join(letter * 100 for letter in "abc")
    deep.mkdir(parents=True)
    shutil.move(folder / "a.zip", deep / "a.zip")
    drive = "Z:" + str(deep).replace("/", "\\")
    (deep / "2.0").mkdir()
    world.unpacks(folder, drive + "\\a.zip", "-d", drive + "\\2.0")
    expect_tree(deep / "2.0", {name: b"1"})
    check(names(deep) == {"2.0", "a.zip"}, f"left beside it: {names(deep)}")


def zip64(world: World) -> None:
    folder = world.folder()
    with zipfile.ZipFile(folder / "a.zip", "w", zipfile.ZIP_DEFLATED) as target:
        with target.open("small.dat", "w", force_zip64=True) as entry:
            entry.write(b"1" * 5000)
    world.unpacks(folder, "a.zip", "-d", "out")
    expect_tree(folder / "out", {"small.dat": b"1" * 5000})


def many_members(world: World) -> None:
    """More than the short form of an archive can count."""
    folder = world.folder()
    with zipfile.ZipFile(folder / "a.zip", "w") as target:
        for number in range(66000):
            target.writestr(f"{number % 100}/{number}", b"%d" % number)
    world.unpacks(folder, "a.zip", "-d", "out", seconds=300)
    found = [path for path in (folder / "out").rglob("*") if path.is_file()]
    check(len(found) == 66000, f"{len(found)} files")
    check(all(path.read_bytes() == path.name.encode() for path in found), "a file has another's content")


def over_4_gib(world: World) -> None:
    folder = world.folder()
    size = 4 * 1024**3 + 12345
    free = shutil.disk_usage(folder).free
    check(free > size + 1024**3, f"the disk has no room for it: {free} bytes")
    with zipfile.ZipFile(folder / "a.zip", "w", zipfile.ZIP_DEFLATED, compresslevel=1) as target:
        with target.open("big.dat", "w", force_zip64=True) as entry:
            block, left = bytes(16 * 1024**2), size
            while left:
                left -= entry.write(block[:left])
    world.unpacks(folder, "a.zip", "-d", "out", seconds=300)
    found = (folder / "out/big.dat").stat().st_size
    shutil.rmtree(folder / "out")
    check(found == size, f"{found} bytes")


def existing_files(world: World) -> None:
    folder = world.folder()
    archive(folder / "a.zip", {"game.exe": b"new", "other.dat": b"2", "data/map": b"new"})
    (folder / "out/data").mkdir(parents=True)
    for name in ("game.exe", "mine.txt", "data/map", "data/mine.txt"):
        (folder / "out" / name).write_bytes(b"old")
    # What Windows protects is replaced as well: an archive may have been unpacked from a disc once.
    (folder / "out/game.exe").chmod(0o444)
    world.unpacks(folder, "a.zip", "-d", "out")
    expect_tree(folder / "out", {"game.exe": b"new", "other.dat": b"2", "mine.txt": b"old",
                                 "data/map": b"new", "data/mine.txt": b"old"})
    before = tree(folder / "out")
    (folder / "a.zip").write_bytes(b"<html>not found</html>")
    result, text = world.unzip(folder, "a.zip", "-d", "out")
    check(result not in (0, WRONG_USE), f"ended with {result}: {text}")
    expect_tree(folder / "out", before)
    check(names(folder) == {"a.zip", "out", "unzip.exe"}, f"left behind: {names(folder)}")


def times(world: World) -> None:
    folder = world.folder()
    with zipfile.ZipFile(folder / "a.zip", "w") as target:
        target.writestr(zipfile.ZipInfo("old.txt", (2011, 2, 3, 4, 5, 6)), b"1")
    world.unpacks(folder, "a.zip", "-d", "out")
    found = time.localtime((folder / "out/old.txt").stat().st_mtime)[:6]
    check(found == (2011, 2, 3, 4, 5, 6), f"the file is of {found}")


def wrong_use(world: World) -> None:
    folder = world.folder()
    archive(folder / "a.zip", {"game.exe": b"1"})
    for arguments in ((), ("a.zip",), ("-v",), ("--help",), ("a.zip", "-d"), ("-d", "out", "a.zip"),
                      ("a.zip", "-d", "out", "game.exe"), ("-P", "a.zip", "-d", "out"), ("-o", "a.zip", "-d", "out"),
                      ("-P", "code", "a.zip")):
        before = names(folder)
        result, text = world.unzip(folder, *arguments)
        check(result == WRONG_USE, f"{arguments} ended with {result}: {text}")
        check("unzip" in text, f"{arguments}: no usage: {text!r}")
        check(names(folder) == before, f"{arguments}: {names(folder) - before}")


def no_options_from_outside(world: World) -> None:
    folder = world.folder()
    archive(folder / "a.zip", {"game.exe": b"one letter"})
    archive(folder / "a[1].zip", {"game.exe": b"brackets"})
    world.environment |= {"UNZIP": "-l", "UNZIPOPT": "-l"}
    try:
        world.refuses(folder, "?.zip")
        world.unpacks(folder, "a[1].zip", "-d", "out")
    finally:
        del world.environment["UNZIP"], world.environment["UNZIPOPT"]
    expect_tree(folder / "out", {"game.exe": b"brackets"})


def killed(world: World) -> None:
    """At any moment: absent, empty or whole; and the next run takes away what was left."""
    folder = world.folder()
    content = {f"{number % 10}/{number}": os.urandom(20000) for number in range(300)}
    archive(folder / "a.zip", content)
    parent = folder / "Realm"
    parent.mkdir()
    (parent / ".mine").mkdir()
    (parent / ".mine/save").write_bytes(b"mine")
    started = time.monotonic()
    world.unpacks(folder, "a.zip", "-d", "Realm/1.0")
    longest = time.monotonic() - started
    shutil.rmtree(parent / "1.0")
    chance = random.Random(4)
    kills = left = whole = 0
    for _ in range(24):
        (parent / "1.0").mkdir()
        result, text = world.start(folder, round(chance.uniform(0.01, longest), 3), "a.zip", "-d", "Realm/1.0")
        check(result in (0, TIMED_OUT), f"ended with {result}: {text}")
        kills += result == TIMED_OUT
        found = tree(parent / "1.0")
        check(found in ({}, content), f"half of it is there: {len(found)} files")
        check(result != 0 or found == content, "it ended well, without its files")
        whole += bool(found)
        left += names(parent) - {".mine"} not in (set(), {"1.0"})
        shutil.rmtree(parent / "1.0", ignore_errors=True)
    check(kills >= 5 and left >= 1, f"only {kills} kills met it, and {left} of them left something")
    world.unpacks(folder, "a.zip", "-d", "Realm/1.0")
    expect_tree(parent / "1.0", content)
    check(names(parent) == {".mine", "1.0"}, f"left: {names(parent)}")
    check((parent / ".mine/save").read_bytes() == b"mine", "it took away what is not its own")
    print(f"      {kills} kills, {left} left something, {whole} times it was whole", flush=True)


def program_file(world: World) -> None:
    data = world.extractor.read_bytes()
    header = struct.unpack_from("<L", data, 0x3C)[0]
    subsystem = struct.unpack_from("<H", data, header + 24 + 68)[0]
    check(subsystem == 3, f"it is no program for the console: {subsystem}")
    for text in ("OriginalFilename\0", "unzip.exe\0", "FileVersion\0"):
        check(text.encode("utf-16-le") in data, f"the version resource lacks {text!r}")
    for words in (b"<longPathAware", b'level="asInvoker"'):
        check(words in data, f"the manifest lacks {words!r}")
    known = {line for line in (HERE / "windows-dlls.txt").read_text().splitlines() if not line.startswith("#")}
    listing = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", world.extractor], check=True,
                             capture_output=True, text=True).stdout
    imports = {line.split()[-1].lower() for line in listing.splitlines() if "DLL Name:" in line}
    check(bool(imports) and imports <= known, f"it wants {sorted(imports - known)}")
