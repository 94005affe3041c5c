#!/usr/bin/python3
"""Tests check-imports.py with a small program folder made for it: it accepts the folder, and refuses
each way of spoiling it with the reason.

    packaging/windows/test-check-imports.py

One line per case; the last line is "N passed, N failed".
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
COMPILER = "x86_64-w64-mingw32-gcc-posix"
PLUGINS = ("platforms/qwindows", "styles/qwindowsvistastyle", "imageformats/qgif", "imageformats/qico",
           "imageformats/qjpeg")
# What the compiler itself brings into every program.
WINDOWS_DLLS = "# comment\nkernel32.dll\nmsvcrt.dll\n"


def compile_file(target, source, *options):
    target.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run([COMPILER, "-x", "c", "-", "-o", target, "-x", "none", *options],
                   input=source.encode(), check=True)


def make_world(folder):
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


def delayed_import(folder):
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


def other_processor(folder):
    data = bytearray((folder / "unzip.exe").read_bytes())
    header = int.from_bytes(data[0x3C:0x40], "little")
    data[header + 4:header + 6] = (0x14C).to_bytes(2, "little")
    (folder / "unzip.exe").write_bytes(data)


def copy(source, target):
    def spoil(folder):
        (folder / target).parent.mkdir(exist_ok=True)
        shutil.copy(folder / source, folder / target)
    return spoil


# name: (what is done to the folder, what the check must say, the list of Windows' libraries)
CASES = {
    "the complete folder": (lambda folder: None, None, WINDOWS_DLLS),
    "a library that the program imports is missing":
        (lambda folder: (folder / "Outer.dll").unlink(),
         "emberwake-launcher.exe imports outer.dll, which is neither shipped", WINDOWS_DLLS),
    "a library that only another library imports is missing":
        (lambda folder: (folder / "Inner.dll").unlink(),
         "Outer.dll imports inner.dll, which is neither shipped", WINDOWS_DLLS),
    "a library lies where Windows does not look":
        (lambda folder: (folder / "Inner.dll").rename(folder / "platforms/Inner.dll"),
         "Outer.dll imports inner.dll, which is neither shipped", WINDOWS_DLLS),
    "a delayed import is missing":
        (delayed_import, "unzip.exe imports late.dll, which is neither shipped", WINDOWS_DLLS),
    "a library is not on the list of Windows":
        (lambda folder: None, "imports msvcrt.dll, which is neither shipped", "kernel32.dll\n"),
    "a library that nobody imports":
        (copy("Outer.dll", "Stray.dll"), "Stray.dll is loaded by nothing", WINDOWS_DLLS),
    "a plug-in that is not known":
        (copy("Outer.dll", "platforms/qother.dll"), "platforms/qother.dll is loaded by nothing",
         WINDOWS_DLLS),
    "the plug-in that polls the network":
        (copy("Outer.dll", "bearer/qgenericbearer.dll"), "bearer/qgenericbearer.dll must not be shipped",
         WINDOWS_DLLS),
    "a plug-in is missing":
        (lambda folder: (folder / "imageformats/qjpeg.dll").unlink(), "imageformats/qjpeg.dll is missing",
         WINDOWS_DLLS),
    "the extractor is missing":
        (lambda folder: (folder / "unzip.exe").unlink(), "unzip.exe is missing", WINDOWS_DLLS),
    "a program for another processor":
        (other_processor, "unzip.exe is for another processor", WINDOWS_DLLS),
    "a program that is cut off":
        (lambda folder: (folder / "unzip.exe").write_bytes((folder / "unzip.exe").read_bytes()[:64]),
         "unzip.exe cannot be read", WINDOWS_DLLS),
    "a line of the list that is of no use":
        (lambda folder: None, "old.dll is listed as part of Windows, but nothing imports it",
         WINDOWS_DLLS + "old.dll\n"),
}


def main():
    passed = failed = 0
    with tempfile.TemporaryDirectory(prefix="test-check-imports.") as name:
        scratch = pathlib.Path(name)
        make_world(scratch / "world")
        for case, (spoil, expected, windows_dlls) in CASES.items():
            folder = scratch / "copy"
            shutil.rmtree(folder, ignore_errors=True)
            shutil.copytree(scratch / "world", folder)
            spoil(folder)
            (scratch / "windows-dlls.txt").write_text(windows_dlls)
            result = subprocess.run(
                [sys.executable, HERE / "check-imports.py", folder, scratch / "windows-dlls.txt"],
                capture_output=True, text=True, check=False)
            if expected is None:
                right = result.returncode == 0 and not result.stderr
            else:
                right = result.returncode == 1 and expected in result.stderr
            passed, failed = passed + right, failed + (not right)
            print(f"ok    {case}" if right
                  else f"FAIL  {case}: ended with {result.returncode}: {result.stderr}", flush=True)
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
