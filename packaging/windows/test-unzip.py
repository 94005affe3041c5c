#!/usr/bin/python3
"""Tests the extractor for Windows under Wine, started as the launcher starts it.

    packaging/windows/test-unzip.py [UNZIP.EXE [TEXT]]     default: build/windows-release/unzip.exe

With TEXT only the cases whose names have it. One line per case; the last line is "N passed, N failed",
and the result says whether one failed. Wine gets a folder of settings of its own, which is removed
afterwards.
"""

from __future__ import annotations

import pathlib
import subprocess
import sys
import tempfile

import unzip_bad
import unzip_good
from unzip_world import HERE, Failure, World

CASES = {
    "a plain archive": unzip_good.plain,
    "into a folder that is not there; an empty folder": unzip_good.folder_that_is_not_there,
    "passwords in UTF-8, in the OEM and in the ANSI code page": unzip_good.password,
    "a wrong password": unzip_bad.wrong_password,
    "an encrypted archive without password and without console: ends by itself": unzip_bad.no_password,
    "AES with 128, 192 and 256 bits": unzip_good.aes,
    "entries with UTF-8 names": unzip_good.unicode_names,
    "entries with non-ASCII names, archive made by zip": unzip_good.unicode_names_by_zip,
    "an entry with a name in the OEM code page": unzip_good.oem_name,
    "an entry with a UTF-8 name that does not say so": unzip_good.unflagged_utf8_name,
    "backslashes between folders": unzip_good.backslashes,
    "archive and target with blanks and letters outside the code page": unzip_good.target_beyond_code_page,
    "installed in a folder with letters outside the code page": unzip_good.installed_beyond_code_page,
    "paths of more than 260 characters": unzip_good.long_paths,
    "names that lead out": unzip_bad.outward_names,
    "names that Windows cannot hold": unzip_bad.unholdable_names,
    "a slash in invalid UTF-8": unzip_bad.overlong_escape,
    "names that mean the same file": unzip_bad.one_in_anothers_place,
    "links, devices and other special entries": unzip_bad.special_entries,
    "a member whose sum is wrong": unzip_bad.bad_sum,
    "an archive that is cut": unzip_bad.truncated,
    "more declared than the disk holds": unzip_bad.beyond_the_disk,
    "a ZIP64 entry": unzip_good.zip64,
    "66,000 members": unzip_good.many_members,
    "an entry of more than 4 GiB": unzip_good.over_4_gib,
    "files that exist are replaced, others stay": unzip_good.existing_files,
    "the time of a file": unzip_good.times,
    "a file that is no archive, none at all, and one without members": unzip_bad.no_archive,
    "wrong use": unzip_good.wrong_use,
    "no options from the environment, no wildcards": unzip_good.no_options_from_outside,
    "killed at any moment": unzip_good.killed,
    "console program with version and manifest, without DLLs": unzip_good.program_file,
}


def main() -> int:
    extractor = pathlib.Path(sys.argv[1] if len(sys.argv) > 1
                             else HERE / "../../build/windows-release/unzip.exe").resolve()
    if not extractor.is_file():
        sys.exit(f"test-unzip.py: {extractor} is not there; packaging/windows/package.sh makes it")
    only = sys.argv[2] if len(sys.argv) > 2 else ""
    passed = failed = 0
    with tempfile.TemporaryDirectory(prefix="test-unzip.") as scratch:
        world = World(pathlib.Path(scratch), extractor)
        try:
            # The names above are worth something only while the code page lacks their letters.
            code_page = world.code_page()
            if code_page != 1252:
                sys.exit(f"test-unzip.py: Wine's code page is {code_page}, and should be 1252")
            for name, case in CASES.items():
                if only not in name:
                    continue
                try:
                    case(world)
                except (Failure, subprocess.TimeoutExpired, OSError) as error:
                    failed += 1
                    print(f"FAIL  {name}: {error}", flush=True)
                else:
                    passed += 1
                    print(f"ok    {name}", flush=True)
        finally:
            world.close()
    print(f"{passed} passed, {failed} failed")
    return 1 if failed or not passed else 0


if __name__ == "__main__":
    sys.exit(main())
