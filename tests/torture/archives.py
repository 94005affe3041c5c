"""Archives that no operator should publish."""

from __future__ import annotations

import io
import zipfile
import zlib
from pathlib import Path

from make_world import pack_client

GIBIBYTE = 1024**3


def packed(files: dict[str, bytes]) -> bytes:
    target = io.BytesIO()
    with zipfile.ZipFile(target, "w") as archive:
        for name, content in files.items():
            archive.writestr(zipfile.ZipInfo(name, date_time=(2024, 1, 1, 0, 0, 0)), content)
    return target.getvalue()


def corrupt(archive: bytes) -> bytes:
    """With some bytes of the largest file turned round."""
    middle = len(archive) // 2
    return archive[:middle] + bytes(byte ^ 0xFF for byte in archive[middle : middle + 64]) + archive[middle + 64 :]


def climbing(outside: Path) -> bytes:
    """With names that lead out of the folder it is unpacked into; all of the files are called escaped."""
    names = ["../escaped-1", "../../escaped-2", "../../../escaped-3", "../../../../escaped-4"]
    names += ["inside/../../../../escaped-5", f"{outside}/escaped-6"]
    return packed({name: b"out\n" for name in names} | {"Emberwake.exe": b"in\n"})


def crowded(count: int) -> bytes:
    return packed({f"part-{number % 100:02d}/file-{number:05d}": b"%d\n" % number for number in range(count)})


def huge(size: int) -> bytes:
    """With one file of zeros."""
    target = io.BytesIO()
    entry = zipfile.ZipInfo("zeros.dat", date_time=(2024, 1, 1, 0, 0, 0))
    entry.compress_type = zipfile.ZIP_DEFLATED
    with zipfile.ZipFile(target, "w") as archive:
        with archive.open(entry, "w", force_zip64=True) as file:
            piece = bytes(16 * 1024 * 1024)
            for _ in range(size // len(piece)):
                file.write(piece)
    return target.getvalue()


def locked(folder: Path) -> bytes:
    """Encrypted, though the document does not say so."""
    target = folder / "locked.zip"
    pack_client(target, "Cinderfall", "Official", "2.1.4", 1000, password="nobody knows")
    content = target.read_bytes()
    target.unlink()
    return content


def contents(archive: bytes) -> dict[str, tuple[int, int]]:
    """Size and checksum of each file."""
    with zipfile.ZipFile(io.BytesIO(archive)) as packed_files:
        return {entry.filename: (entry.file_size, entry.CRC) for entry in packed_files.infolist()}


def unpacked(folder: Path) -> dict[str, tuple[int, int]]:
    return {
        path.relative_to(folder).as_posix(): (path.stat().st_size, zlib.crc32(path.read_bytes()))
        for path in folder.rglob("*")
        if path.is_file()
    }
