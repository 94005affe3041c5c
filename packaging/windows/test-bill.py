#!/usr/bin/python3
"""Tests the bills of materials and the check sums in build/packages against what is in the packages.

    packaging/windows/test-bill.py [FOLDER]               the packages' folder; default: build/packages

One line per check; the last line is "N passed, N failed", and the result says whether one failed.
"""

from __future__ import annotations

import hashlib
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import zipfile
from typing import Any

HERE = pathlib.Path(__file__).resolve().parent
# Not in the folder: the installer makes it.
UNINSTALLER = "uninstall.exe"

results: list[bool] = []


def check(name: str, good: bool, detail: object = "") -> None:
    results.append(good)
    print(f"ok    {name}" if good else f"FAIL  {name}\n      {detail}")


def write_bill(folder: pathlib.Path, origins: str) -> subprocess.CompletedProcess[str]:
    return subprocess.run([HERE / "bill-of-materials.py", "name", "1.0.0", "publisher", folder], input=origins,
                          env={**os.environ, "SOURCE_DATE_EPOCH": "1000000000"}, capture_output=True, text=True, check=False)


def check_bill(archive: pathlib.Path, bill: dict[str, Any]) -> None:
    name = archive.name
    with zipfile.ZipFile(archive) as package:
        found = {entry.partition("/")[2]: hashlib.sha256(package.read(entry)).hexdigest()
                 for entry in package.namelist() if not entry.endswith("/")}
        readme = package.read(f"{archive.stem}/licenses/README.txt").decode()
    origins = {component["bom-ref"]: component for component in bill["components"]}
    listed = {file["name"]: file["hashes"][0]["content"]
              for component in bill["components"] for file in component.get("components", [])}
    check(f"{name}: the bill says that it is CycloneDX 1.5",
          (bill["bomFormat"], bill["specVersion"]) == ("CycloneDX", "1.5"))
    uninstaller = listed.pop(UNINSTALLER, None)
    check(f"{name}: the uninstaller is listed where there is one",
          (uninstaller is not None) == ("launcher" in name), uninstaller)
    check(f"{name}: each file is listed, and nothing else", listed.keys() == found.keys(),
          sorted(listed.keys() ^ found.keys()))
    wrong = sorted(file for file in listed.keys() & found.keys() if listed[file] != found[file])
    check(f"{name}: with its check sum", not wrong, wrong)
    for component in bill["components"]:
        reference = component["bom-ref"]
        licences = [each.get("expression") or each["license"]["name"] for each in component["licenses"]]
        check(f"{name}: {reference} has a version and a licence", bool(component["version"] and all(licences) and licences))
        # The players' own list says the same.
        if reference not in ("own", "nsis", "base-files"):
            said = f"{component['name']} {component['version']}"
            check(f"{name}: licenses/README.txt says {said}, too", said in readme)
    for dependency in bill["dependencies"]:
        missing = [each for each in dependency["dependsOn"] if each not in origins]
        check(f"{name}: what is inside {dependency['ref']} is listed", not missing, missing)


def main(packages: pathlib.Path) -> int:
    archives = sorted(packages.glob("*.zip"))
    check("there are packages", bool(archives), packages)
    for archive in archives:
        check_bill(archive, json.loads(archive.with_suffix(".cdx.json").read_text()))

    sums: dict[str, str] = {}
    for line in (packages / "SHA256SUMS").read_text().splitlines():
        digest, _, package = line.partition("  ")
        sums[package] = digest
    there = {path.name: hashlib.sha256(path.read_bytes()).hexdigest()
             for path in packages.iterdir() if path.name != "SHA256SUMS"}
    check("SHA256SUMS has each package and nothing else", sums.keys() == there.keys(), sums.keys() ^ there.keys())
    check("and each sum is right", sums == there)
    verified = subprocess.run(["sha256sum", "--check", "--strict", "--quiet", "SHA256SUMS"], cwd=packages, check=False)
    check("sha256sum agrees", verified.returncode == 0)

    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch, "folder")
        shutil.copytree(HERE, folder / "platforms", ignore=lambda _, names: names)
        (folder / "platforms" / "qwindows.dll").write_text("library")
        origins = "qt qtbase 5\ngcc gcc 12\nmingw mingw 10\n"
        done = write_bill(folder, origins)
        check("a bill is written", done.returncode == 0, done.stderr)
        check("the same folder has the same bill", done.stdout == write_bill(folder, origins).stdout)
        (folder / "platforms" / "qwindows.dll").write_text("another")
        check("another one has another number", json.loads(done.stdout)["serialNumber"]
              != json.loads(write_bill(folder, origins).stdout)["serialNumber"])
        done = write_bill(folder, "qt qtbase 5\n")
        check("a part without a version is refused", done.returncode == 1 and "gcc" in done.stderr, done.stderr)
        (folder / "stranger.dll").write_text("library")
        done = write_bill(folder, origins)
        check("a file of unknown origin is refused", done.returncode == 1 and "stranger.dll" in done.stderr, done.stderr)

    print(f"{results.count(True)} passed, {results.count(False)} failed")
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else HERE.parents[1] / "build" / "packages"))
