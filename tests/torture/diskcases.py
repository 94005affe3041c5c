"""What can be wrong with the disk, the extractor and the archive, and what the launcher does then."""

from __future__ import annotations

import shutil
from collections.abc import Callable
from dataclasses import dataclass
from pathlib import Path

import archives
from diskjudge import NAME, DiskJudge
from namespaces import mount
from road import ACTION_BUTTON
from testbed import ARCHIVE, CLIENT, SERVER

MEBIBYTE = 1024**2
# Pictures, settings and the document's copy take less than this; the archive is 6 MiB, and so is
# what is in it.
PICTURES = 4 * MEBIBYTE
READ_ONLY = "Read-only file system"
NO_SPACE = "No space left on device"


Run = Callable[[DiskJudge], None]


@dataclass(frozen=True)
class Case:
    name: str
    run: Run
    mounts: bool = False
    # Only when asked for, and only with so many bytes free.
    room: int = 0


CASES: list[Case] = []


def case(name: str, mounts: bool = False, room: int = 0) -> Callable[[Run], Run]:
    def add(function: Run) -> Run:
        CASES.append(Case(name, function, mounts, room))
        return function

    return add


# The disk


@case("read-only folder", mounts=True)
def read_only(judge: DiskJudge) -> None:
    judge.mount(64 * MEBIBYTE)
    mount("-o", "remount,ro", judge.folder)
    judge.choose(written=False)
    judge.download_does_not_begin(NAME, READ_ONLY)
    judge.leave()
    judge.testbed.check("nothing was written", [path.name for path in judge.folder.iterdir()] == ["unzip.exe"])
    mount("-o", "remount,rw", judge.folder)
    judge.choose()
    judge.leave()


@case("full disk", mounts=True)
def full(judge: DiskJudge) -> None:
    judge.mount(16 * MEBIBYTE)
    before = "||true|"
    (judge.folder / "settings.txt").write_text(before, encoding="ascii")
    filler = judge.fill(0)
    judge.choose(written=False)
    judge.download_fails(NO_SPACE)
    judge.leave()
    judge.testbed.check("settings.txt is as it was", judge.testbed.settings() == before)
    filler.unlink()
    judge.choose()
    judge.leave()


@case("no room for the archive", mounts=True)
def no_room(judge: DiskJudge) -> None:
    judge.mount(16 * MEBIBYTE)
    judge.fill(PICTURES + 2 * MEBIBYTE)
    judge.choose()
    judge.download_fails(NO_SPACE)
    judge.testbed.wait_for("the transfer to be given up", lambda: ARCHIVE in judge.told.broken)
    judge.leave()
    judge.next_start("red", "download")


@case("no room for an update", mounts=True)
def no_room_for_an_update(judge: DiskJudge) -> None:
    judge.mount(16 * MEBIBYTE)
    older = judge.folder / SERVER / CLIENT / "2.0.0"
    older.mkdir(parents=True)
    (older / "Emberwake.exe").write_bytes(b"older")
    judge.fill(PICTURES + 2 * MEBIBYTE)
    judge.choose("orange", "update", "play")
    # The colour is that of what was there before the end.
    judge.download_fails(NO_SPACE, colour="orange")
    judge.testbed.check("the older version is gone, too", not older.exists())
    judge.leave()
    judge.next_start("red", "download")


@case("no room for what is in the archive", mounts=True)
def no_room_to_unpack(judge: DiskJudge) -> None:
    judge.mount(32 * MEBIBYTE)
    judge.fill(PICTURES + 8 * MEBIBYTE)
    unpacks_not_at_all(judge, judge.original)


# Files and folders in each other's place


def file_in_the_way(judge: DiskJudge, path: Path) -> None:
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("in the way\n", encoding="ascii")
    judge.choose()
    judge.nothing_to_unpack_into()
    judge.leave()
    judge.next_start("red", "download")
    judge.testbed.check("the file is as it was", path.read_text(encoding="ascii") == "in the way\n")


@case("file in place of the server's folder")
def file_for_server(judge: DiskJudge) -> None:
    file_in_the_way(judge, judge.folder / SERVER)


@case("file in place of the client's folder")
def file_for_client(judge: DiskJudge) -> None:
    file_in_the_way(judge, judge.folder / SERVER / CLIENT)


@case("file in place of the version's folder")
def file_for_version(judge: DiskJudge) -> None:
    judge.version.parent.mkdir(parents=True)
    judge.version.write_text("in the way\n", encoding="ascii")
    # It counts as a version, and Play finds nothing in it.
    judge.choose("green", "play")
    judge.testbed.click(ACTION_BUTTON)
    judge.leave()
    judge.testbed.check("nothing was started", not judge.testbed.pages_list.exists())
    judge.next_start("green", "play")
    judge.testbed.check("the file is as it was", judge.version.read_text(encoding="ascii") == "in the way\n")


@case("folder in place of settings.txt")
def folder_for_settings(judge: DiskJudge) -> None:
    (judge.folder / "settings.txt").mkdir()
    for _ in range(2):
        judge.choose(written=False)
        judge.leave()
    judge.testbed.check("the folder is still there", (judge.folder / "settings.txt").is_dir())


@case("settings.txt that cannot be opened")
def settings_nowhere(judge: DiskJudge) -> None:
    (judge.folder / "settings.txt").symlink_to("nowhere/settings.txt")
    for _ in range(2):
        judge.choose(written=False)
        judge.leave()
    judge.testbed.check("the link is still there", (judge.folder / "settings.txt").is_symlink())


@case("folder in place of offline.txt")
def folder_for_copy(judge: DiskJudge) -> None:
    (judge.folder / "offline.txt").mkdir()
    judge.choose()
    judge.download_finishes(judge.whole())
    judge.leave()
    judge.next_start("green", "play")
    judge.testbed.check("the folder is still there", (judge.folder / "offline.txt").is_dir())


@case("folders in place of pictures")
def folders_for_pictures(judge: DiskJudge) -> None:
    names = ("homeNewsImageBackground.png", f"{SERVER}.png")
    for name in names:
        (judge.folder / name).mkdir()
    judge.choose()
    judge.leave()
    judge.next_start("red", "download")
    judge.testbed.check("the folders are still there", all((judge.folder / name).is_dir() for name in names))


@case("folder in place of the archive")
def folder_for_archive(judge: DiskJudge) -> None:
    (judge.folder / NAME / "deep").mkdir(parents=True)
    judge.choose()
    judge.download_finishes(judge.whole())
    judge.leave()
    judge.next_start("green", "play")
    judge.testbed.check("the folder is still there", (judge.folder / NAME / "deep").is_dir())


@case("save file that cannot be opened")
def name_too_long(judge: DiskJudge) -> None:
    name = "x" * 300 + ".zip"
    document = judge.told.contents["/launcher.xml"]
    judge.told.contents["/launcher.xml"] = document.replace(NAME.encode(), name.encode())
    judge.choose()
    judge.download_does_not_begin(name, "File name too long")
    judge.leave()
    judge.next_start("red", "download")


# The extractor


def unpacks_nothing(judge: DiskJudge) -> None:
    """Whatever became of the extractor: the version's folder is there, and empty."""
    judge.choose()
    judge.download_finishes(files={})
    judge.leave()
    judge.next_start("green", "play")


@case("extractor missing")
def extractor_missing(judge: DiskJudge) -> None:
    (judge.folder / "unzip.exe").unlink()
    unpacks_nothing(judge)


@case("folder in place of the extractor")
def extractor_folder(judge: DiskJudge) -> None:
    (judge.folder / "unzip.exe").unlink()
    (judge.folder / "unzip.exe").mkdir()
    unpacks_nothing(judge)


@case("extractor that may not be run")
def extractor_forbidden(judge: DiskJudge) -> None:
    judge.extractor("exit 0", mode=0o644)
    unpacks_nothing(judge)


@case("extractor fails")
def extractor_fails(judge: DiskJudge) -> None:
    judge.extractor("echo it failed >&2; exit 9")
    unpacks_nothing(judge)


@case("extractor crashes")
def extractor_crashes(judge: DiskJudge) -> None:
    judge.extractor("kill -SEGV $$")
    unpacks_nothing(judge)


@case("extractor asks and waits for an answer")
def extractor_asks(judge: DiskJudge) -> None:
    # Neither its input nor a terminal has one.
    judge.extractor(
        'read answer; echo "input: $?" > asked.txt; (read answer < /dev/tty); echo "terminal: $?" >> asked.txt'
    )
    unpacks_nothing(judge)
    said = (judge.folder / "asked.txt").read_text(encoding="ascii").split()
    judge.testbed.check(f"it got no answer: {said}", said[0] == "input:" and "0" not in said and len(said) == 4)


# The same call with an extractor of another make: the distribution's own, which leaves what it could
# unpack.


def other_extractor(judge: DiskJudge) -> None:
    program = judge.folder / "unzip.exe"
    program.unlink()
    program.symlink_to(shutil.which("unzip") or "")


@case("extractor of another make")
def extractor_of_another_make(judge: DiskJudge) -> None:
    other_extractor(judge)
    judge.choose()
    judge.download_finishes(judge.whole())
    judge.leave()
    judge.next_start("green", "play")


@case("extractor of another make, corrupt archive")
def extractor_of_another_make_corrupt(judge: DiskJudge) -> None:
    other_extractor(judge)
    judge.archive(archives.corrupt(judge.original))
    judge.choose()
    judge.download_finishes(files=None)
    judge.testbed.check("the client is not whole", archives.unpacked(judge.version) != archives.contents(judge.original))
    judge.leave()
    judge.next_start("green", "play")


# The archive


def unpacks_not_at_all(judge: DiskJudge, content: bytes) -> None:
    """The extractor refuses it, and takes the version's folder away, by which the launcher sees it."""
    judge.archive(content)
    judge.choose()
    judge.nothing_to_unpack_into()
    left = [path.name for path in judge.version.parent.iterdir()]
    judge.testbed.check(f"nothing of it is left: {left}", not left)
    judge.leave()
    judge.next_start("red", "download")


@case("corrupt archive")
def corrupt(judge: DiskJudge) -> None:
    unpacks_not_at_all(judge, archives.corrupt(judge.original))


@case("truncated archive")
def truncated(judge: DiskJudge) -> None:
    unpacks_not_at_all(judge, judge.original[: len(judge.original) // 2])


@case("empty archive")
def empty(judge: DiskJudge) -> None:
    unpacks_not_at_all(judge, b"")


@case("web page in place of the archive")
def web_page(judge: DiskJudge) -> None:
    unpacks_not_at_all(judge, b"<!DOCTYPE html><html><body><p>Please sign in.</p></body></html>\n")


@case("encrypted archive")
def encrypted(judge: DiskJudge) -> None:
    unpacks_not_at_all(judge, archives.locked(judge.testbed.scratch / "world"))


@case("archive with names that climb out")
def climbing(judge: DiskJudge) -> None:
    unpacks_not_at_all(judge, archives.climbing(judge.testbed.scratch))
    escaped = list(judge.testbed.scratch.rglob("escaped*"))
    judge.testbed.check(f"nothing climbed out: {escaped}", not escaped)


@case("archive with 10,000 files")
def crowded(judge: DiskJudge) -> None:
    judge.archive(archives.crowded(10_000))
    judge.choose()
    judge.download_finishes(judge.whole(), 60)
    judge.leave()
    judge.next_start("green", "play")


@case("archive with a file of 3 GiB", room=4 * archives.GIBIBYTE)
def huge(judge: DiskJudge) -> None:
    judge.archive(archives.huge(3 * archives.GIBIBYTE))
    judge.choose()
    judge.download_finishes(None, 300)
    size = (judge.version / "zeros.dat").stat().st_size
    judge.testbed.check(f"the file is whole ({size} bytes)", size == 3 * archives.GIBIBYTE)
    judge.leave()
    judge.next_start("green", "play")
