"""What lies beside the installation folder, and must not change whatever happens in it."""

from __future__ import annotations

import hashlib
import os
from pathlib import Path


def checksum(folder: Path) -> str:
    """Of all names and contents in a folder."""
    digest = hashlib.sha256()
    for path in sorted(folder.rglob("*")):
        digest.update(os.fsencode(path.relative_to(folder)) + b"\0")
        if path.is_file():
            digest.update(path.read_bytes())
    return digest.hexdigest()


class Neighbour:
    """A folder with somebody's files, in the folder that the installation lies in."""

    def __init__(self, scratch: Path):
        self.scratch = scratch
        self.folder = scratch / "neighbour"
        (self.folder / "deep").mkdir(parents=True)
        (self.folder / "letter.txt").write_text("precious\n", encoding="ascii")
        (self.folder / "deep" / "client.zip").write_bytes(b"mine" * 1000)
        self.untouched = checksum(self.folder)
        self.names = self.names_beside()

    def names_beside(self) -> set[str]:
        """What lies beside the installation folder, but for the torture's own logs."""
        return {path.name for path in self.scratch.iterdir() if not path.name.startswith("launcher-")}

    def is_unchanged(self) -> bool:
        return checksum(self.folder) == self.untouched and self.names_beside() == self.names
