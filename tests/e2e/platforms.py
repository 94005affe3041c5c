"""What differs between the launcher's two systems, for the one road that drive.py drives.

Native: the Linux program, as built. Wine: the Windows program out of its
portable package, in a Windows prefix of its own, which is made anew for each
drive and ended with it.
"""

from __future__ import annotations

import os
import re
import shutil
import subprocess
import zipfile
from pathlib import Path, PurePosixPath
from typing import IO

from authority import Authority, registry_file
from make_world import WorldError, fresh_folder
from scene import end_process, prepare_installation
from screen import Screen

DEMO = Path(__file__).resolve().parents[2] / "demo"


class Native:
    """The program that was built for this system."""

    needed = ("Xvfb", "xdotool", "xprop", "xwininfo", "xdg-open", "zip")

    def __init__(self, program: Path, extractor: Path):
        # Absolute: the launcher and what it starts work in another folder.
        self.program = program.resolve()
        self.extractor = extractor.resolve()
        # The sample client shows a window only where it finds the means.
        self.client_has_window = shutil.which("xmessage") is not None

    def missing(self) -> list[str]:
        """What has to be there before a drive and is not."""
        missing = [name for name in self.needed if shutil.which(name) is None]
        return missing + [os.fspath(path) for path in (self.program, self.extractor) if not path.is_file()]

    def installation(self, scratch: Path) -> Path:
        return scratch / "install"

    def client_program(self, scratch: Path) -> Path | None:
        """The program to pack as the sample client; none: the shell script."""
        return None

    def prepare(self, scratch: Path, environment: dict[str, str]) -> str:
        """Makes the installation folder; returns what is worth telling about it."""
        prepare_installation(self.installation(scratch), self.extractor)
        return ""

    def trust(self, authority: Authority) -> None:
        raise WorldError("the demo serves https to the Windows program only")

    def start(
        self, installation: Path, environment: dict[str, str], output: IO[bytes], errors: IO[bytes]
    ) -> subprocess.Popen[bytes]:
        return subprocess.Popen(
            [self.program],
            cwd=installation,
            env=environment,
            stdin=subprocess.DEVNULL,
            stdout=output,
            stderr=errors,
        )

    def client_process(self, told: int, screen: Screen, window: str) -> int:
        """Number of the sample client's process here; `told` is what its mark says."""
        return told

    def close(self) -> None:
        """Ends what belongs to the system itself."""


class Wine:
    """The Windows program, as it comes out of its portable package."""

    needed = ("Xvfb", "xdotool", "xprop", "xwininfo", "xdg-open", "zip", "openssl")
    compiler = "x86_64-w64-mingw32-gcc-posix"
    # The distribution puts neither on the search path.
    loader = Path("/usr/lib/wine/wine64")
    server = Path("/usr/lib/wine/wineserver64")
    client_has_window = True

    # The program's own folder, with blanks and with letters of which a Western
    # code page has none: whatever still goes through that code page is lost.
    folder_name = "Emberwake Искра Σπίθα 火の粉"

    def __init__(self, package: Path):
        self.package = package.resolve()
        self._prefix: Path | None = None
        self.environment: dict[str, str] = {}

    @property
    def prefix(self) -> Path:
        """The Windows prefix of this drive, made by prepare()."""
        assert self._prefix is not None
        return self._prefix

    def missing(self) -> list[str]:
        missing = [name for name in (*self.needed, self.compiler) if shutil.which(name) is None]
        missing += [os.fspath(path) for path in (self.loader, self.server, self.package) if not path.is_file()]
        return missing

    def installation(self, scratch: Path) -> Path:
        return scratch / "prefix" / "drive_c" / self.folder_name

    def client_program(self, scratch: Path) -> Path:
        program = scratch / "emberwake-client.exe"
        done = subprocess.run(
            [self.compiler, "-std=c11", "-Os", "-s", "-Wall", "-Wextra", "-Werror", "-municode", "-mwindows"]
            + [DEMO / "client" / "emberwake-client.c", "-o", program],
            stderr=subprocess.PIPE,
            check=False,
        )
        if done.returncode != 0:
            raise WorldError(f"the sample client was not compiled: {done.stderr.decode(errors='replace').strip()}")
        return program

    def prepare(self, scratch: Path, environment: dict[str, str]) -> str:
        self._prefix = scratch / "prefix"
        # WINEPATH would lengthen the search path inside, and the others change
        # what is run and where.
        self.environment = {name: value for name, value in environment.items() if not name.startswith("WINE")}
        self.environment.update(
            WINEPREFIX=os.fspath(self.prefix),
            WINEARCH="win64",
            WINEDEBUG="-all",
            # No menu entries on the host, no offers to fetch something.
            WINEDLLOVERRIDES="winemenubuilder.exe,mscoree,mshtml=",
        )
        self.run("wineboot", "-i")
        # Keyboard cues off, as Windows has them: it frames what has the focus only
        # once the keyboard was used.
        desktop = r"HKCU\Control Panel\Desktop"
        mask = bytes.fromhex(self.value(desktop, "UserPreferencesMask"))
        mask = bytes([mask[0] & ~0x20]) + mask[1:]
        self.run("reg", "add", desktop, "/v", "UserPreferencesMask", "/t", "REG_BINARY", "/d", mask.hex(), "/f")
        # The fonts of Windows are not here, and what is taken for them otherwise
        # is any font, one with serifs as soon as another.
        fonts = r"HKCU\Software\Wine\Fonts\Replacements"
        for name in ("Tahoma", "Segoe UI", "MS Shell Dlg", "MS Shell Dlg 2"):
            self.run("reg", "add", fonts, "/v", name, "/d", "DejaVu Sans", "/f")
        # What has been set up is written down before the drives change.
        subprocess.run([self.server, "-w"], env=self.environment, timeout=120, check=False)
        # C: alone is left. The toolkit knows the folder it was built for, and on
        # a machine that has that folder its plug-ins would be found there, too.
        for drive in (self.prefix / "dosdevices").iterdir():
            if drive.name != "c:":
                drive.unlink()

        installation = self.installation(scratch)
        fresh_folder(installation)
        self.unpack(installation)
        code_page = self.code_page()
        try:
            self.folder_name.encode(f"cp{code_page}")
        except UnicodeEncodeError:
            pass
        else:
            raise WorldError(f"code page {code_page} has every letter of {self.folder_name}: that proves nothing")
        libraries = {path.parent for path in (self.prefix / "drive_c").rglob("*") if is_toolkit(path.name)}
        if libraries != {installation}:
            raise WorldError(f"the toolkit's libraries lie in {sorted(os.fspath(path) for path in libraries)}")
        search_path = self.value(r"HKLM\System\CurrentControlSet\Control\Session Manager\Environment", "PATH")
        return (
            rf"The package is unpacked to C:\{self.folder_name}, the only drive; code page {code_page}, "
            f"search path {search_path}"
        )

    def unpack(self, installation: Path) -> None:
        """Unpacks the package without its top folder, whose name is the package's own."""
        with zipfile.ZipFile(self.package) as archive:
            for entry in archive.infolist():
                inside = PurePosixPath(*PurePosixPath(entry.filename).parts[1:])
                if entry.is_dir() or not inside.parts:
                    continue
                if ".." in inside.parts:
                    raise WorldError(f"{self.package.name} holds {entry.filename}")
                target = installation / inside
                target.parent.mkdir(parents=True, exist_ok=True)
                target.write_bytes(archive.read(entry))
        needed = ("emberwake-launcher.exe", "unzip.exe", "fonts/Lato-Regular.ttf", "fonts/Lato-Bold.ttf")
        lacking = [name for name in needed if not (installation / name).is_file()]
        if lacking:
            raise WorldError(f"{self.package.name} lacks {', '.join(lacking)} in its one top folder")

    def run(self, *command: str, seconds: float = 120) -> str:
        """Runs one of the system's own programs; returns what it printed."""
        try:
            done = subprocess.run(
                [self.loader, *command],
                cwd=self.prefix / "drive_c" if (self.prefix / "drive_c").is_dir() else self.prefix.parent,
                env=self.environment,
                stdin=subprocess.DEVNULL,
                stdout=subprocess.PIPE,
                stderr=subprocess.DEVNULL,
                timeout=seconds,
                check=False,
            )
        except subprocess.TimeoutExpired as error:
            raise WorldError(f"{command[0]} did not end within {seconds:.0f} s") from error
        if done.returncode != 0:
            raise WorldError(f"{' '.join(command)} failed under Wine (exit code {done.returncode})")
        return done.stdout.decode(errors="replace")

    def value(self, key: str, name: str) -> str:
        """One value of the registry."""
        told = self.run("reg", "query", key, "/v", name)
        found = re.search(rf"^ +{name} +REG_\w+ +(.*?)\r?$", told, re.M | re.I)
        if not found:
            raise WorldError(f"the registry has no {name} in {key}")
        return found.group(1)

    def code_page(self) -> str:
        return self.value(r"HKLM\System\CurrentControlSet\Control\Nls\CodePage", "ACP")

    def trust(self, authority: Authority) -> None:
        text = registry_file(authority.root_bytes())
        (self.prefix / "drive_c" / "authority.reg").write_text(text, encoding="ascii")
        self.run("regedit", "/S", r"C:\authority.reg")

    def start(
        self, installation: Path, environment: dict[str, str], output: IO[bytes], errors: IO[bytes]
    ) -> subprocess.Popen[bytes]:
        return subprocess.Popen(
            [self.loader, rf"C:\{installation.name}\emberwake-launcher.exe"],
            cwd=installation,
            env=self.environment,
            stdin=subprocess.DEVNULL,
            stdout=output,
            stderr=errors,
        )

    def client_process(self, told: int, screen: Screen, window: str) -> int:
        # The mark tells a number that means something inside Windows only.
        return screen.process_of(window)

    def close(self) -> None:
        if self._prefix is None or not self._prefix.is_dir():
            return
        # The server ends every process of this prefix, and no other.
        subprocess.run([self.server, "-k"], env=self.environment, timeout=60, check=False)
        waiting = subprocess.Popen([self.server, "-w"], env=self.environment)
        try:
            waiting.wait(30)
        except subprocess.TimeoutExpired:
            end_process(waiting)
        # Half a gigabyte of system files that nobody looks at again.
        shutil.rmtree(self.prefix / "drive_c" / "windows", ignore_errors=True)


def is_toolkit(name: str) -> bool:
    """Whether a file is one of the toolkit's libraries; its plug-ins are called otherwise."""
    return re.fullmatch(r"qt5\w+\.dll", name, re.I) is not None
