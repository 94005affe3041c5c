"""What the two ways of showing the demo have in common.

A scene is a laid-out world, a server that serves it, an installation folder for
the launcher to live in, and a desktop of the demo's own that knows how to start
the sample client. Everything it starts, it ends, by process number.
"""

from __future__ import annotations

import json
import os
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from typing import IO
from urllib.parse import urlsplit

import make_world
from authority import Authority
from make_world import WorldError, fresh_folder
from open_client import Settings

DEMO = Path(__file__).resolve().parents[2] / "demo"

# Fast enough not to bore, slow enough to see the bar move.
ARCHIVE_BYTES_PER_SECOND = 1_500_000

# What a file that is to be "opened" may be taken for, by name or by content.
CLIENT_TYPES = (
    "x-scheme-handler/file",
    "application/octet-stream",
    "application/vnd.microsoft.portable-executable",
    "application/x-dosexec",
    "application/x-ms-dos-executable",
    "application/x-msdos-program",
    "application/x-msdownload",
    "application/x-shellscript",
    "text/plain",
    "text/x-shellscript",
)
PAGE_TYPES = ("x-scheme-handler/http", "x-scheme-handler/https")


def say(text: str) -> None:
    print(text, flush=True)


def end_process(process: subprocess.Popen[bytes] | subprocess.Popen[str], patience: float = 5.0) -> None:
    """Ends a child process: asks first, insists after `patience` seconds."""
    if process.poll() is None:
        process.terminate()
        try:
            process.wait(patience)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


def exit_on_terminate() -> None:
    """Lets SIGTERM end this program the orderly way, with its clean-up."""

    def stop(*_: object) -> None:
        # Once: a second signal must not break off the clean-up.
        signal.signal(signal.SIGTERM, signal.SIG_IGN)
        sys.exit(143)

    signal.signal(signal.SIGTERM, stop)


def read_line(output: IO[bytes], seconds: float) -> str:
    """The first line that a process prints; empty when it ends or takes too long."""
    deadline = time.monotonic() + seconds
    line = b""
    while not line.endswith(b"\n"):
        left = deadline - time.monotonic()
        if left <= 0 or not select.select([output], [], [], left)[0]:
            return ""
        byte = os.read(output.fileno(), 1)
        if not byte:
            return ""
        line += byte
    return line.decode(errors="replace").strip()


class World:
    """The demo world, laid out and served at the base URL that the launcher knows."""

    def __init__(self, folder: Path, base_url: str, access_log: Path):
        self.folder = folder
        self.base_url = base_url
        self.access_log = access_log
        # Set before the start by whoever serves https, or has a client program
        # in place of the shell script.
        self.authority: Authority | None = None
        self.client_program: Path | None = None
        self._server: subprocess.Popen[bytes] | None = None

    def start(self, bytes_per_second: int = ARCHIVE_BYTES_PER_SECOND) -> None:
        parts = urlsplit(self.base_url)
        scheme = "http" if self.authority is None else "https"
        if parts.scheme != scheme or parts.hostname != "127.0.0.1" or not parts.port:
            raise WorldError(f"the demo serves {scheme}://127.0.0.1:PORT/ only, not {self.base_url}")
        make_world.lay(self.folder, self.base_url, client_program=self.client_program)
        command: list[str | Path] = [sys.executable, DEMO / "serve.py", self.folder, "--port", str(parts.port)]
        command += ["--log", self.access_log, "--throttle", str(bytes_per_second)]
        if self.authority is not None:
            command += ["--certificate", self.authority.certificate, "--key", self.authority.key]

        self.access_log.unlink(missing_ok=True)
        server = subprocess.Popen(
            command,
            # The server ends with this pipe, even if nobody gets to end it.
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
        )
        self._server = server
        assert server.stdout is not None
        if read_line(server.stdout, 10) != f"READY {self.base_url}":
            self.stop()
            raise WorldError(f"the demo's server did not come up at {self.base_url}")

    def publish(self, server: str, client: str, version: str) -> None:
        make_world.publish(self.folder, server, client, version, client_program=self.client_program)

    def stop(self) -> None:
        if self._server is not None:
            end_process(self._server)
            self._server = None

    @property
    def process(self) -> int:
        return self._server.pid if self._server is not None else 0

    def requests(self) -> str:
        return self.access_log.read_text(encoding="utf-8") if self.access_log.exists() else ""


def prepare_installation(folder: Path, extractor: Path) -> None:
    """An empty folder with nothing but the extractor, under the name the launcher calls."""
    fresh_folder(folder)
    (folder / "unzip.exe").symlink_to(extractor.resolve())


class Desktop:
    """Desktop settings of the demo's own, so that xdg-open starts the sample client.

    They live in a temporary folder and count for the launcher's process only.
    The user's own settings are neither read nor written.
    """

    def __init__(self, installation: Path, pages_list: Path | None):
        """With `pages_list`, web pages are written there; without, the user's browser opens them."""
        # Not in the build folder: xdg-open splits these paths at blanks, and
        # nobody promises that the repository lies in a folder without any.
        self.folder = Path(tempfile.mkdtemp(prefix="emberwake-desktop-", dir="/tmp"))
        self._own: dict[str, str | None] = {
            "XDG_CONFIG_HOME": os.fspath(self.folder / "config"),
            "XDG_DATA_HOME": os.fspath(self.folder / "data"),
            # The name under which xdg-open asks no particular desktop.
            "XDG_CURRENT_DESKTOP": "X-Generic",
            # Two more ways in which something else could be asked than the
            # settings above; None: not set.
            "QT_USE_PORTAL": None,
            "BROWSER": None,
        }

        handler = self.folder / "open_client.py"
        shutil.copy(Path(__file__).with_name("open_client.py"), handler)
        settings: Settings = {
            "installation": os.fspath(installation.resolve()),
            "pages_list": os.fspath(pages_list.resolve()) if pages_list else None,
            "user_environment": {name: os.environ.get(name) for name in self._own},
        }
        handler.with_suffix(".json").write_text(json.dumps(settings), encoding="utf-8")

        types = CLIENT_TYPES + PAGE_TYPES
        applications = self.folder / "data" / "applications"
        applications.mkdir(parents=True)
        (applications / "emberwake-demo.desktop").write_text(
            "[Desktop Entry]\nType=Application\nName=Emberwake demo\nNoDisplay=true\n"
            f"Exec={handler} %u\nMimeType={';'.join(types)};\n",
            encoding="utf-8",
        )
        config = self.folder / "config"
        config.mkdir()
        (config / "mimeapps.list").write_text(
            "[Default Applications]\n" + "".join(f"{kind}=emberwake-demo.desktop\n" for kind in types),
            encoding="utf-8",
        )

    def environment(self, base: dict[str, str]) -> dict[str, str]:
        """`base` with the demo's desktop in place of the user's."""
        changed = {name: value for name, value in base.items() if name not in self._own}
        changed.update({name: value for name, value in self._own.items() if value is not None})
        return changed

    def remove(self) -> None:
        shutil.rmtree(self.folder, ignore_errors=True)
