#!/usr/bin/python3
"""Tests check-imports.py with a small program folder made for it: it accepts the folder, and refuses
each way of spoiling it with the reason.

    packaging/windows/test-check-imports.py

One line per case; the last line is "N passed, N failed".
"""

from __future__ import annotations

import pathlib
import shutil
import subprocess
import sys
import tempfile
from collections.abc import Callable
from dataclasses import dataclass

HERE = pathlib.Path(__file__).resolve().parent
COMPILER = "x86_64-w64-mingw32-gcc-posix"
PLUGINS = ("platforms/qwindows", "styles/qwindowsvistastyle", "imageformats/qgif", "imageformats/qico",
           "imageformats/qjpeg")
# What the compiler itself brings into every program.
WINDOWS_DLLS = "# comment\nkernel32.dll\nmsvcrt.dll\n"


def compile_file(target: pathlib.Path, source: str, *options: str | pathlib.Path) -> None:
    target.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run([COMPILER, "-x", "c", "-", "-o", target, "-x", "none", *options],
                   input=source.encode(), check=True)


def make_world(folder: pathlib.Path) -> None:
    """Two libraries, of which one is imported by the other, and a program that needs both."""
    inner, outer = folder / "Inner.dll", folder / "Outer.dll"
    compile_file(inner, "int inner(void) { return 1; }", "-shared")
    compile_file(outer, "int inner(void); int outer(void) { return inner(); }", "-shared", inner)
    compile_file(folder / "emberwake-launcher.exe",
                 "int outer(void); int main(void) { return outer(); }", outer)
    compile_file(folder / "unzip.exe", "int main(void) { return 0; }")
    for plugin in PLUGINS:
        compile_file(folder / f"{plugin}.dll", "int inner(void); int load(void) { return inner(); }",
                     "-shared", inner)


def delayed_import(folder: pathlib.Path) -> None:
    """The linker here writes no such table, so the table is spelled out, and entered in the header."""
    compile_file(folder / "unzip.exe", """
        int main(void) { return 0; }
        __asm__(".section .didat, \\"dr\\"\\n"
                ".long 1\\n.rva late_name\\n.zero 24\\n.zero 32\\n"
                "late_name: .asciz \\"late.dll\\"\\n"
                ".text");""")
    data = bytearray((folder / "unzip.exe").read_bytes())
    header = int.from_bytes(data[0x3C:0x40], "little")
    section = data.index(b".didat\0\0")
    directory = header + 24 + 112 + 8 * 13
    data[directory:directory + 4] = data[section + 12:section + 16]
    data[directory + 4:directory + 8] = (64).to_bytes(4, "little")
    (folder / "unzip.exe").write_bytes(data)


def other_processor(folder: pathlib.Path) -> None:
    data = bytearray((folder / "unzip.exe").read_bytes())
    header = int.from_bytes(data[0x3C:0x40], "little")
    data[header + 4:header + 6] = (0x14C).to_bytes(2, "little")
    (folder / "unzip.exe").write_bytes(data)


def copy(source: str, target: str) -> Callable[[pathlib.Path], None]:
    def spoil(folder: pathlib.Path) -> None:
        (folder / target).parent.mkdir(exist_ok=True)
        shutil.copy(folder / source, folder / target)
    return spoil


@dataclass(frozen=True)
class Case:
    # What is done to the folder, and what the check must say then.
    spoil: Callable[[pathlib.Path], object]
    expected: str | None
    # The list of Windows' libraries.
    windows_dlls: str = WINDOWS_DLLS
    options: tuple[str, ...] = ()


def leave(folder: pathlib.Path) -> None:
    pass


def cut_off(folder: pathlib.Path) -> None:
    (folder / "unzip.exe").write_bytes((folder / "unzip.exe").read_bytes()[:64])


def make_checker(folder: pathlib.Path) -> None:
    (folder / "emberwake-launcher.exe").rename(folder / "emberwake-check.exe")
    (folder / "unzip.exe").unlink()
    shutil.rmtree(folder / "platforms")
    shutil.rmtree(folder / "styles")


def make_checker_with_window(folder: pathlib.Path) -> None:
    (folder / "emberwake-launcher.exe").rename(folder / "emberwake-check.exe")
    (folder / "unzip.exe").unlink()


CASES = {
    "the complete folder": Case(leave, None),
    "a library that the program imports is missing": Case(
        lambda folder: (folder / "Outer.dll").unlink(),
        "emberwake-launcher.exe imports outer.dll, which is neither shipped"),
    "a library that only another library imports is missing": Case(
        lambda folder: (folder / "Inner.dll").unlink(),
        "Outer.dll imports inner.dll, which is neither shipped"),
    "a library lies where Windows does not look": Case(
        lambda folder: (folder / "Inner.dll").rename(folder / "platforms/Inner.dll"),
        "Outer.dll imports inner.dll, which is neither shipped"),
    "a delayed import is missing": Case(
        delayed_import, "unzip.exe imports late.dll, which is neither shipped"),
    "a library is not on the list of Windows": Case(
        leave, "imports msvcrt.dll, which is neither shipped", "kernel32.dll\n"),
    "a library that nobody imports": Case(
        copy("Outer.dll", "Stray.dll"), "Stray.dll is loaded by nothing"),
    "a plug-in that is not known": Case(
        copy("Outer.dll", "platforms/qother.dll"), "platforms/qother.dll is loaded by nothing"),
    "the plug-in that polls the network": Case(
        copy("Outer.dll", "bearer/qgenericbearer.dll"), "bearer/qgenericbearer.dll must not be shipped"),
    "a plug-in is missing": Case(
        lambda folder: (folder / "imageformats/qjpeg.dll").unlink(), "imageformats/qjpeg.dll is missing"),
    "the extractor is missing": Case(
        lambda folder: (folder / "unzip.exe").unlink(), "unzip.exe is missing"),
    "a program for another processor": Case(
        other_processor, "unzip.exe is for another processor"),
    "a program that is cut off": Case(cut_off, "unzip.exe cannot be read"),
    "a line of the list that is of no use": Case(
        leave, "old.dll is listed as part of Windows, but nothing imports it", WINDOWS_DLLS + "old.dll\n"),
    "a line of the list that may be of no use": Case(leave, None, WINDOWS_DLLS + "old.dll ?\n"),
    "such a line is of use": Case(leave, None, "kernel32.dll\nmsvcrt.dll ?\n"),
    "the checker's folder, which needs less": Case(
        make_checker, None, WINDOWS_DLLS + "old.dll\n", ("--checker",)),
    "the checker is missing": Case(
        leave, "emberwake-check.exe is missing", options=("--checker",)),
    "a plug-in that only a window needs": Case(
        make_checker_with_window, "platforms/qwindows.dll is loaded by nothing", options=("--checker",)),
}


def main() -> int:
    passed = failed = 0
    with tempfile.TemporaryDirectory(prefix="test-check-imports.") as temporary:
        scratch = pathlib.Path(temporary)
        make_world(scratch / "world")
        for name, case in CASES.items():
            folder = scratch / "copy"
            shutil.rmtree(folder, ignore_errors=True)
            shutil.copytree(scratch / "world", folder)
            case.spoil(folder)
            (scratch / "windows-dlls.txt").write_text(case.windows_dlls)
            result = subprocess.run(
                [sys.executable, HERE / "check-imports.py", *case.options, folder, scratch / "windows-dlls.txt"],
                capture_output=True, text=True, check=False)
            if case.expected is None:
                right = result.returncode == 0 and not result.stderr
            else:
                right = result.returncode == 1 and case.expected in result.stderr
            passed, failed = passed + right, failed + (not right)
            print(f"ok    {name}" if right
                  else f"FAIL  {name}: ended with {result.returncode}: {result.stderr}", flush=True)
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
