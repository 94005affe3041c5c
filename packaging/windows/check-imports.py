#!/usr/bin/python3
"""Checks that a folder with the Windows program holds what the program loads, and nothing else.

    packaging/windows/check-imports.py [--checker] FOLDER [WINDOWS-DLLS.TXT]

With --checker it is the folder of emberwake-check, which needs less of Windows than the list has.
Fails, with a line for each reason, when
- a program or library imports something that is neither shipped beside the program nor part of
  Windows (delayed imports count: they only fail later);
- a shipped library is imported by nobody, and is no plug-in known here;
- a plug-in is missing, or one is there that was left out on purpose;
- a file is for another processor, or a line of the list is of no use any more, unless it ends in "?".
"""

from __future__ import annotations

import pathlib
import struct
import sys

HERE = pathlib.Path(__file__).resolve().parent
X86_64 = 0x8664

# Loaded by name at run time, so that nothing imports them.
PLUGINS = {
    "platforms/qwindows.dll",
    "styles/qwindowsvistastyle.dll",
    "imageformats/qgif.dll",
    "imageformats/qico.dll",
    "imageformats/qjpeg.dll",
}
PROGRAMS = {"emberwake-launcher.exe", "unzip.exe"}
CHECKERS_PLUGINS = {name for name in PLUGINS if name.startswith("imageformats/")}
CHECKERS_PROGRAMS = {"emberwake-check.exe"}


class NoProgramFile(Exception):
    """The file is not what Windows can load."""


class ProgramFile:
    """The processor and the imports of a program or library."""

    def __init__(self, path: pathlib.Path) -> None:
        self.data = path.read_bytes()
        self.machine = 0
        self.imports: set[str] = set()
        # Where each begins in memory, its size, and where it begins in the file.
        self.sections: list[tuple[int, int, int]] = []
        try:
            self._read()
        except (struct.error, IndexError, ValueError) as error:
            raise NoProgramFile(str(error)) from error

    def _read(self) -> None:
        header = self._number("<I", 0x3C)
        if self.data[header:header + 4] != b"PE\0\0":
            raise NoProgramFile("no PE header")
        self.machine = self._number("<H", header + 4)
        section_count = self._number("<H", header + 6)
        optional = header + 24
        if self._number("<H", optional) != 0x20B:
            # The 32-bit layout; the processor is wrong anyway.
            return
        first = optional + self._number("<H", header + 20)
        for index in range(section_count):
            section = first + 40 * index
            size, address, raw_size, raw = struct.unpack_from("<4I", self.data, section + 8)
            self.sections.append((address, max(size, raw_size), raw))
        directory_count = self._number("<I", optional + 108)
        # 1: imports, names 12 bytes into entries of 20; 13: delayed ones, 4 bytes into 32.
        for directory, entry_size, name_offset in ((1, 20, 12), (13, 32, 4)):
            if directory >= directory_count:
                continue
            address = self._number("<I", optional + 112 + 8 * directory)
            if address:
                self._read_names(self._offset(address), entry_size, name_offset)

    def _number(self, layout: str, offset: int) -> int:
        return int(struct.unpack_from(layout, self.data, offset)[0])

    def _offset(self, address: int) -> int:
        for start, size, raw in self.sections:
            if start <= address < start + size:
                return raw + address - start
        raise ValueError(f"address {address:#x} is in no section")

    def _read_names(self, entry: int, entry_size: int, name_offset: int) -> None:
        while any(self.data[entry:entry + entry_size]):
            start = self._offset(self._number("<I", entry + name_offset))
            self.imports.add(self.data[start:self.data.index(b"\0", start)].decode("ascii").lower())
            entry += entry_size


def problems(folder: pathlib.Path, windows_dlls: set[str], optional: set[str], checker: bool) -> list[str]:
    """Every reason why the folder cannot be shipped. Nobody has to import the optional ones."""
    named = CHECKERS_PROGRAMS | CHECKERS_PLUGINS if checker else PROGRAMS | PLUGINS
    found = []
    files: dict[str, ProgramFile] = {}
    for path in sorted(folder.rglob("*")):
        name = path.relative_to(folder).as_posix()
        if path.is_file() and path.read_bytes()[:2] == b"MZ":
            try:
                files[name] = ProgramFile(path)
            except NoProgramFile as error:
                found.append(f"{name} cannot be read: {error}")
    for name in sorted(named):
        if name not in files:
            found.append(f"{name} is missing")

    # Windows looks beside the program, not beside the library that imports.
    beside = {name.lower(): name for name in files if "/" not in name}
    imported: set[str] = set()
    of_windows: set[str] = set()
    for name, file in files.items():
        if file.machine != X86_64:
            found.append(f"{name} is for another processor ({file.machine:#x})")
        for wanted in sorted(file.imports):
            if wanted in beside:
                imported.add(beside[wanted])
            elif wanted in windows_dlls:
                of_windows.add(wanted)
            elif not wanted.startswith("api-ms-win-"):
                found.append(f"{name} imports {wanted}, which is neither shipped nor part of Windows")

    for name in files:
        if name.startswith("bearer/"):
            found.append(f"{name} must not be shipped: it polls the network all the time")
        elif name not in named | imported:
            found.append(f"{name} is loaded by nothing that is shipped")
    for name in sorted(windows_dlls - optional - of_windows if not checker else ()):
        found.append(f"{name} is listed as part of Windows, but nothing imports it")
    return found


def main() -> int:
    arguments = sys.argv[1:]
    checker = arguments[:1] == ["--checker"]
    if checker:
        del arguments[0]
    if len(arguments) not in (1, 2):
        print("usage: check-imports.py [--checker] FOLDER [WINDOWS-DLLS.TXT]", file=sys.stderr)
        return 64
    listing = pathlib.Path(arguments[1] if len(arguments) == 2 else HERE / "windows-dlls.txt")
    lines = [line.lower().split() for line in listing.read_text().splitlines()
             if line.strip() and not line.startswith("#")]
    found = problems(pathlib.Path(arguments[0]), {words[0] for words in lines},
                     {words[0] for words in lines if words[1:] == ["?"]}, checker)
    for problem in found:
        print(f"check-imports.py: {problem}", file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
