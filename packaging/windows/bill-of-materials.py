#!/usr/bin/python3
"""Writes the bill of materials of a package (CycloneDX 1.5): each file with its check sum, the source
package it comes from, the version and the licence.

    packaging/windows/bill-of-materials.py NAME VERSION PUBLISHER FOLDER [FILE...] < ORIGINS > BILL

FILEs are shipped beside the folder's own. Each line of ORIGINS is "KEY PACKAGE VERSION", with a KEY of
LICENCES below. Fails when a file's origin is not known here, or when an origin has no version. The
date is that in SOURCE_DATE_EPOCH; the same package has the same bill.
"""

from __future__ import annotations

import datetime
import fnmatch
import hashlib
import json
import os
import pathlib
import sys
import urllib.parse
import uuid
from typing import Any

LICENCES = {
    "own": "",
    "qt": "LGPL-3.0-only",
    "gcc": "GPL-3.0-or-later WITH GCC-exception-3.1",
    "mingw": "MIT AND BSD-3-Clause AND ZPL-2.1",
    "libzip": "BSD-3-Clause",
    "libdeflate": "MIT",
    "zlib": "Zlib",
    "nsis": "Zlib AND CPL-1.0",
    "base-files": "GPL-3.0-only",
    "lato": "OFL-1.1",
}
# Which file comes from where, and whose code is inside it besides; the first line that fits counts.
FILES: tuple[tuple[str, str, tuple[str, ...]], ...] = (
    ("emberwake-launcher.exe", "own", ("gcc", "mingw", "zlib")),
    ("emberwake-check.exe", "own", ("gcc", "mingw", "zlib", "libzip", "libdeflate")),
    ("unzip.exe", "own", ("gcc", "mingw", "zlib", "libzip", "libdeflate")),
    ("uninstall.exe", "own", ("nsis",)),
    ("UNSIGNED.txt", "own", ()),
    ("package-files.txt", "own", ()),
    ("README.txt", "own", ()),
    ("licenses/README.txt", "own", ()),
    ("licenses/qt-*.txt", "qt", ()),
    ("licenses/gcc-copyright.txt", "gcc", ()),
    ("licenses/mingw-w64-copyright.txt", "mingw", ()),
    ("licenses/libzip-license.txt", "libzip", ()),
    ("licenses/libdeflate-license.txt", "libdeflate", ()),
    ("licenses/zlib-copyright.txt", "zlib", ()),
    ("licenses/GPL-3.txt", "base-files", ()),
    ("licenses/lato-copyright.txt", "lato", ()),
    ("fonts/Lato-*.ttf", "lato", ()),
    ("Qt5*.dll", "qt", ("gcc", "mingw")),
    ("platforms/*.dll", "qt", ("gcc", "mingw")),
    ("styles/*.dll", "qt", ("gcc", "mingw")),
    ("imageformats/*.dll", "qt", ("gcc", "mingw")),
    ("libgcc_s_seh-1.dll", "gcc", ("mingw",)),
    ("libstdc++-6.dll", "gcc", ("mingw",)),
    ("libwinpthread-1.dll", "mingw", ()),
)


def origin_of(name: str) -> tuple[str, tuple[str, ...]]:
    for pattern, key, inside in FILES:
        # A star does not reach into folders.
        if name.count("/") == pattern.count("/") and fnmatch.fnmatchcase(name, pattern):
            return key, inside
    sys.exit(f"bill-of-materials.py: nothing here says where {name} comes from")


def read_origins(publisher: str, version: str) -> dict[str, dict[str, Any]]:
    """The components that files come from, by their keys."""
    found: dict[str, dict[str, Any]] = {
        "own": {"type": "application", "bom-ref": "own", "name": "emberwake-launcher", "version": version,
                "supplier": {"name": publisher},
                "licenses": [{"license": {"name": "none chosen"}}]}}
    for line in sys.stdin:
        key, package, package_version = line.split()
        quoted = urllib.parse.quote(package_version, safe="")
        found[key] = {"type": "library", "bom-ref": key, "name": package, "version": package_version,
                      "licenses": [{"expression": LICENCES[key]}],
                      "purl": f"pkg:deb/debian/{package}@{quoted}?arch=source"}
    return found


def main(name: str, version: str, publisher: str, folder: pathlib.Path, *others: str) -> None:
    origins = read_origins(publisher, version)
    files = {path.relative_to(folder).as_posix(): path for path in folder.rglob("*") if path.is_file()}
    files.update((pathlib.Path(each).name, pathlib.Path(each)) for each in others)
    needed = {"own"}
    dependencies = []
    for file, path in sorted(files.items()):
        key, inside = origin_of(file)
        for each in (key, *inside):
            if each not in origins:
                sys.exit(f"bill-of-materials.py: {file} comes from {each}, which has no version")
        needed.update((key, *inside))
        reference = f"file:{file}"
        origins[key].setdefault("components", []).append(
            {"type": "file", "bom-ref": reference, "name": file,
             "hashes": [{"alg": "SHA-256", "content": hashlib.sha256(path.read_bytes()).hexdigest()}]})
        if inside:
            dependencies.append({"ref": reference, "dependsOn": list(inside)})

    components = [origins[key] for key in LICENCES if key in needed]
    date = datetime.datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), datetime.timezone.utc)
    bill = {
        "bomFormat": "CycloneDX",
        "specVersion": "1.5",
        "serialNumber": "",
        "version": 1,
        "metadata": {
            "timestamp": date.strftime("%Y-%m-%dT%H:%M:%SZ"),
            "component": {"type": "application", "bom-ref": "package", "name": name, "version": version,
                          "supplier": {"name": publisher}},
        },
        "components": components,
        "dependencies": dependencies,
    }
    # Another number for other contents, and the same one for the same.
    bill["serialNumber"] = uuid.uuid5(uuid.NAMESPACE_OID, json.dumps(bill, sort_keys=True)).urn
    json.dump(bill, sys.stdout, indent=1, ensure_ascii=False)
    print()


if __name__ == "__main__":
    if len(sys.argv) < 5:
        print("usage: bill-of-materials.py NAME VERSION PUBLISHER FOLDER [FILE...] < ORIGINS", file=sys.stderr)
        sys.exit(64)
    main(sys.argv[1], sys.argv[2], sys.argv[3], pathlib.Path(sys.argv[4]), *sys.argv[5:])
