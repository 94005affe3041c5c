"""What the extractor for Windows refuses: nothing of the archive is there then."""

from __future__ import annotations

import os
import pathlib
import shutil
import struct
import time
import zipfile
from collections.abc import Callable

from unzip_world import Failure, World, archive, check, encrypted, unflagged


def wrong_password(world: World) -> None:
    folder = world.folder()
    encrypted(folder, "a.zip", b"right", {"game.exe": b"secret" * 900, "more.dat": b"more" * 900})
    world.refuses(folder, "-P", "wrong", "a.zip")


def no_password(world: World) -> None:
    folder = world.folder()
    encrypted(folder, "a.zip", b"right", {"game.exe": b"secret" * 900, "more.dat": b"more" * 900})
    started = time.monotonic()
    text = world.refuses(folder, "a.zip")
    check("password" in text, f"says nothing of a password: {text}")
    check(time.monotonic() - started < 20, "took longer than 20 seconds")


OUTWARD = (
    "../up.txt", "../../up2.txt", "inside/../../up3.txt", "..\\back.txt", "inside\\..\\..\\back2.txt", "/top.txt",
    "C:/drive.txt", "C:\\drive2.txt", "C:drive3.txt", "\\\\host\\share\\net.txt", "//host/share/net2.txt",
    "\\\\?\\C:\\long.txt", "\\\\.\\C:\\device.txt", "inside/../up4.txt", "inside/..", "..",
)
UNHOLDABLE = (
    "CON", "nul.txt", "data/aux", "com1.tar.gz", "LPT9.x/map", "prn ", "data/CON .txt", "COM¹", "conin$", "CONOUT$",
    "game.exe.", "game.exe ", "data./map", "data /map", "...", "a<b", "a>b", "a:b", "game.exe:stream", 'a"b', "a|b",
    "a?b", "a*b", "a\tb", "a\x01b", "a\x7fb",
)


def refused_name(world: World, folder: pathlib.Path, name: str) -> None:
    archive(folder / "a.zip", {"good.txt": b"9", name: b"1"})
    try:
        world.refuses(folder, "a.zip")
    except Failure as failure:
        raise Failure(f"{name!r}: {failure}") from failure


def outward_names(world: World) -> None:
    folder = world.folder() / "Realm/Game"
    folder.mkdir(parents=True)
    shutil.copy(world.extractor, folder / "unzip.exe")
    for name in OUTWARD:
        refused_name(world, folder, name)
    files = {pathlib.PurePosixPath(name.replace("\\", "/")).name for name in OUTWARD} - {".."}
    roots = (world.scratch / "wine/drive_c", world.scratch, folder.parent, folder.parent.parent, pathlib.Path("/"))
    stray = [str(root / name) for root in roots for name in files if (root / name).exists()]
    check(not stray, f"written outside: {stray}")


def unholdable_names(world: World) -> None:
    folder = world.folder()
    for name in UNHOLDABLE:
        refused_name(world, folder, name)


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
    world.refuses(folder, "a.zip")


def one_in_anothers_place(world: World) -> None:
    folder = world.folder()
    for pair in (("Game.exe", "GAME.EXE"), ("data/map", "Data/other"), ("Мир.dat", "МИР.dat"),
                 ("data", "data/map"), ("data/map", "DATA"), ("game.exe", "./game.exe"),
                 ("data/map", "data\\map")):
        with zipfile.ZipFile(folder / "a.zip", "w") as target:
            for name in pair:
                target.writestr(name, b"1")
        world.refuses(folder, "a.zip")


def special_entries(world: World) -> None:
    folder = world.folder()
    # A link, a device, a pipe, a socket; by what Unix notes.
    for mode in (0o120777, 0o020666, 0o060666, 0o010666, 0o140777):
        with zipfile.ZipFile(folder / "a.zip", "w") as target:
            entry = zipfile.ZipInfo("special")
            entry.create_system = 3
            entry.external_attr = mode << 16
            target.writestr(entry, b"/etc/passwd")
            target.writestr("game.exe", b"1")
        world.refuses(folder, "a.zip")


def spoiled(folder: pathlib.Path, change: Callable[[bytearray, int], object]) -> None:
    """A good archive of one stored member; `change` gets its bytes and the place of the directory."""
    with zipfile.ZipFile(folder / "a.zip", "w") as target:
        target.writestr("game.exe", b"g" * 50000)
    data = bytearray((folder / "a.zip").read_bytes())
    change(data, data.index(b"PK\1\2"))
    (folder / "a.zip").write_bytes(data)


def bad_sum(world: World) -> None:
    folder = world.folder()

    def flip(data: bytearray, central: int) -> None:
        data[central - 100] ^= 1

    spoiled(folder, flip)
    text = world.refuses(folder, "a.zip")
    check("game.exe" in text, f"the member is not named: {text}")


def truncated(world: World) -> None:
    folder = world.folder()
    archive(folder / "whole.zip", {"game.exe": os.urandom(50000), "more.dat": os.urandom(50000)})
    whole = (folder / "whole.zip").read_bytes()
    for size in (0, 1, 60000, len(whole) - 30, len(whole) - 1):
        (folder / "a.zip").write_bytes(whole[:size])
        world.refuses(folder, "a.zip")


def sparse(path: pathlib.Path, size: int) -> None:
    """An archive of one stored member of this size, which is a hole and takes no room itself."""
    name = b"data.bin"
    sizes = struct.pack("<HHQQ", 1, 16, size, size)
    short = 0xFFFFFFFF
    common = struct.pack("<5H3L2H", 45, 0, 0, 0, 0x21, 0, short, short, len(name), len(sizes))
    local = b"PK\3\4" + common + name + sizes
    central = b"PK\1\2" + struct.pack("<H", 45) + common + struct.pack("<3H2L", 0, 0, 0, 0, 0) + name + sizes
    at = len(local) + size
    ending = b"PK\6\6" + struct.pack("<Q2H2L4Q", 44, 45, 45, 0, 0, 1, 1, len(central), at)
    ending += b"PK\6\7" + struct.pack("<LQL", 0, at + len(central), 1)
    ending += b"PK\5\6" + struct.pack("<4H2LH", 0, 0, 1, 1, len(central), short, 0)
    with path.open("wb") as file:
        file.write(local)
        file.seek(size, os.SEEK_CUR)
        file.write(central + ending)


def beyond_the_disk(world: World) -> None:
    """Told by what the member declares, before anything is written."""
    folder = world.folder()
    sparse(folder / "a.zip", shutil.disk_usage(folder).free + 2**30)
    text = world.refuses(folder, "a.zip")
    check("the disk has" in text, f"says nothing of the disk: {text}")


def no_archive(world: World) -> None:
    folder = world.folder()
    (folder / "a.zip").write_bytes(b"<html>not found</html>")
    world.refuses(folder, "a.zip")
    world.refuses(folder, "missing.zip")
    archive(folder / "a.zip", {})
    world.refuses(folder, "a.zip")
    (folder / "folder.zip").mkdir()
    world.refuses(folder, "folder.zip")
