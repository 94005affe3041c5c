"""Sizes of what is shipped, and what makes them up."""

from __future__ import annotations

import subprocess
import zipfile
from pathlib import Path

from bench_tools import Setting
from bench_world import REPOSITORY
from table import Row, stated
from web import Web

KIB = 1024


def sections(program: Path) -> dict[str, int]:
    lines = subprocess.run(["size", "-A", program], check=True, capture_output=True, text=True).stdout.splitlines()
    fields = (line.split() for line in lines)
    return {parts[0]: int(parts[1]) for parts in fields if len(parts) == 3 and parts[1].isdigit()}


def resource_pictures() -> int:
    folder = REPOSITORY / "images"
    lines = (folder / "images.qrc").read_text(encoding="utf-8").splitlines()
    names = [line.split(">")[1].split("<")[0] for line in lines if "<file" in line]
    return sum((folder / name).stat().st_size for name in names)


def size(setting: Setting, _: Web) -> list[Row]:
    stripped = setting.folder("size") / "emberwake-launcher"
    built = setting.programs.parents[1] / "emberwake-launcher"
    subprocess.run(["strip", "-o", stripped, built], check=True)
    parts = sections(stripped)
    rows = [stated("size: stripped program", "KiB", stripped.stat().st_size / KIB,
                   note=f"code {parts['.text'] // KIB} KiB, constants {parts['.rodata'] // KIB} KiB, of which "
                        f"pictures {resource_pictures() // KIB} KiB")]
    for package in sorted((REPOSITORY / "build" / "packages").glob("*-windows-x86_64.zip")):
        with zipfile.ZipFile(package) as archive:
            largest = sorted(archive.infolist(), key=lambda entry: -entry.compress_size)[:6]
        made_of = ", ".join(f"{Path(entry.filename).name} {entry.compress_size // KIB}" for entry in largest)
        rows.append(stated(f"size: {package.name}", "KiB", package.stat().st_size / KIB,
                           note=f"largest, compressed, KiB: {made_of}"))
    return rows
