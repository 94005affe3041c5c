#!/usr/bin/python3
"""For the tests: prints a text of a program's version resource, or looks for its icon.

    packaging/windows/program-text.py PROGRAM NAME        for example: setup.exe CompanyName
    packaging/windows/program-text.py PROGRAM --icon ICON ends with 0 when its pictures are inside
"""

from __future__ import annotations

import pathlib
import struct
import sys


def text(data: bytes, name: str) -> str:
    """A string entry: length, value's length and kind, the name, then the value at the next 4 bytes."""
    key = name.encode("utf-16-le") + b"\0\0"
    place = data.find(struct.pack("<H", 1) + key)
    if place < 0:
        sys.exit(f"no {name}")
    letters = struct.unpack_from("<H", data, place - 2)[0]
    # The entry itself begins at a multiple of 4.
    start = place - 4
    value = start + (6 + len(key) + 3) // 4 * 4
    return data[value:value + 2 * letters].decode("utf-16-le").rstrip("\0")


def has_icon(data: bytes, icon: bytes) -> bool:
    count = int(struct.unpack_from("<H", icon, 4)[0])
    for index in range(count):
        size, offset = struct.unpack_from("<II", icon, 6 + 16 * index + 8)
        if icon[offset:offset + size] not in data:
            return False
    return count > 0


def main(program: str, name: str, *icon: str) -> int:
    data = pathlib.Path(program).read_bytes()
    if name == "--icon":
        return 0 if has_icon(data, pathlib.Path(icon[0]).read_bytes()) else 1
    print(text(data, name))
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
