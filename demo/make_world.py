#!/usr/bin/python3
"""Lays out the demo world: a folder that a web server hands to the launcher.

    make_world.py lay --out DIR --base-url URL
    make_world.py publish --out DIR --server NAME --client KIND --version V

`lay` copies the fixed files (logos, pictures, pages), writes launcher.xml and
packs one archive per client. `publish` adds a newer archive of one client and
names it in launcher.xml, as an operator who ships an update would.

Only the standard library is used, and the `zip` command for the one archive
that is locked with a password, which the standard library cannot write.
"""

from __future__ import annotations

import argparse
import hashlib
import random
import shutil
import subprocess
import sys
import tempfile
import zipfile
from pathlib import Path
from urllib.parse import urlsplit
from xml.etree import ElementTree

DEMO = Path(__file__).resolve().parent

# The code a player types after F12. Its SHA-1 stands in the document, the code
# itself is the password of the archive.
BETA_CODE = "emberwake-beta"

# Big enough that a throttled download lasts some seconds, and incompressible,
# so that what travels is as big as what is unpacked.
DEFAULT_DATA_BYTES = 6 * 1024 * 1024

# The launcher asks for an engine before it starts a client of this kind, and
# looks for one program per engine.
PROGRAMS_BY_KIND = {"Beta": ("Emberwake_dx.exe", "Emberwake_gl.exe")}
DEFAULT_PROGRAMS = ("Emberwake.exe",)

# What demo/client/emberwake-client.c looks for at the end of its own file.
TOLD_START = "\n-- emberwake client --\n"

# A folder that carries this file was made by the demo and may be emptied by it.
MARKER = ".emberwake-demo"


class WorldError(Exception):
    """Something the user has to know about, in one sentence."""


def fresh_folder(folder: Path) -> None:
    """Leaves `folder` there and empty but for the marker.

    Raises WorldError, and removes nothing, when the folder holds files and was
    not made by the demo: a mistyped option must not empty somebody's folder.
    """
    if folder.is_symlink() or (folder.exists() and not folder.is_dir()):
        raise WorldError(f"{folder} is in the way: it is not a folder")
    if folder.is_dir():
        if any(folder.iterdir()) and not (folder / MARKER).is_file():
            raise WorldError(f"{folder} holds files that the demo did not make; name another folder")
        shutil.rmtree(folder)
    folder.mkdir(parents=True)
    (folder / MARKER).touch()


def archive_name(server: str, client: str, version: str) -> str:
    return f"{server.lower()}-{client.lower()}-{version}.zip"


def client_script(server: str, client: str, version: str, program: str) -> str:
    text = (DEMO / "client" / "Emberwake.sh.in").read_text(encoding="utf-8")
    for name, value in (("SERVER", server), ("CLIENT", client), ("VERSION", version), ("PROGRAM", program)):
        text = text.replace(f"@{name}@", value)
    return text


def client_from_file(path: Path, server: str, client: str, version: str) -> bytes:
    """A compiled sample client, told behind its own end which one it is."""
    try:
        program = path.read_bytes()
    except OSError as error:
        raise WorldError(f"{path}: {error.strerror}") from error
    return program + f"{TOLD_START}server: {server}\nclient: {client}\nversion: {version}\n".encode()


def pack_client(
    target: Path,
    server: str,
    client: str,
    version: str,
    data_bytes: int,
    password: str = "",
    client_program: Path | None = None,
) -> None:
    """Writes the archive of one client to `target`, locked when there is a password."""
    programs = PROGRAMS_BY_KIND.get(client, DEFAULT_PROGRAMS)
    if client_program is not None:
        files = {program: client_from_file(client_program, server, client, version) for program in programs}
    else:
        files = {program: client_script(server, client, version, program).encode() for program in programs}
    # Seeded by what it is, so that the same client has the same bytes every time.
    files["world.dat"] = random.Random(f"{server}/{client}/{version}").randbytes(data_bytes)
    files["README.txt"] = f"Emberwake {version}, {client} client for {server}: the demo world's sample game.\n".encode()

    target.parent.mkdir(parents=True, exist_ok=True)
    unfinished = target.with_name(target.name + ".part")
    unfinished.unlink(missing_ok=True)
    if password:
        pack_locked(unfinished, files, programs, password)
    else:
        with zipfile.ZipFile(unfinished, "w", zipfile.ZIP_STORED) as archive:
            for name, content in files.items():
                entry = zipfile.ZipInfo(name, date_time=(2024, 1, 1, 0, 0, 0))
                entry.create_system = 3  # Unix, so that the mode below means something
                entry.external_attr = (0o100755 if name in programs else 0o100644) << 16
                archive.writestr(entry, content)
    # In place at once: a launcher never downloads half an archive.
    unfinished.replace(target)


def pack_locked(target: Path, files: dict[str, bytes], programs: tuple[str, ...], password: str) -> None:
    if shutil.which("zip") is None:
        raise WorldError("the zip command is missing (Debian package: zip)")
    with tempfile.TemporaryDirectory(prefix="emberwake-pack-") as folder:
        for name, content in files.items():
            path = Path(folder, name)
            path.write_bytes(content)
            path.chmod(0o755 if name in programs else 0o644)
        # An output that does not end in .zip keeps its name only in this form.
        with target.open("wb") as output:
            done = subprocess.run(
                ["zip", "-q", "-0", "-P", password, "-", *files], cwd=folder, stdout=output, stderr=subprocess.PIPE
            )
    if done.returncode != 0:
        raise WorldError(f"zip could not pack {target.name}: {done.stderr.decode(errors='replace').strip()}")


def attribute(element: ElementTree.Element, name: str) -> str:
    """One that every entry of the demo's document has."""
    value = element.get(name)
    if value is None:
        raise WorldError(f"launcher.xml has a {element.tag} without {name}")
    return value


def check_links(world: Path, base_url: str, document: ElementTree.Element) -> None:
    """Raises WorldError when the document points at a file that is not there."""
    links = [element.get(name) for element in document.iter() for name in ("url", "imageUrl", "clickUrl")]
    # The launcher asks for one logo per server, beside the document.
    links += [f"{base_url}{element.get('server')}.png" for element in document.iter("client")]
    for link in links:
        if link is None:
            continue
        if not link.startswith(base_url):
            raise WorldError(f"launcher.xml points outside the demo world: {link}")
        if not (world / link[len(base_url) :]).is_file():
            raise WorldError(f"launcher.xml points at a file that is not there: {link}")


def write_document(world: Path, text: str) -> None:
    unfinished = world / "launcher.xml.part"
    unfinished.write_text(text, encoding="utf-8")
    unfinished.replace(world / "launcher.xml")


def lay(
    world: Path,
    base_url: str,
    launcher_version: int = 1,
    data_bytes: int = DEFAULT_DATA_BYTES,
    client_program: Path | None = None,
) -> None:
    """Makes the whole world anew in `world`, for a server that answers at `base_url`."""
    parts = urlsplit(base_url)
    if parts.scheme not in ("http", "https") or not parts.netloc or not base_url.endswith("/"):
        raise WorldError(f"not a base URL (http or https, ending in a slash): {base_url}")

    fresh_folder(world)
    shutil.copytree(DEMO / "world", world, dirs_exist_ok=True)

    text = (DEMO / "launcher.xml.in").read_text(encoding="utf-8")
    beta_auth = hashlib.sha1(BETA_CODE.encode()).hexdigest()
    for name, value in (
        ("BASE_URL", base_url),
        ("LAUNCHER_VERSION", str(launcher_version)),
        ("BETA_AUTH", beta_auth),
    ):
        text = text.replace(f"@{name}@", value)

    document = ElementTree.fromstring(text)
    for element in document.iter("client"):
        server, client, version = (attribute(element, key) for key in ("server", "name", "version"))
        name = archive_name(server, client, version)
        if element.get("url") != f"{base_url}clients/{name}":
            raise WorldError(f"the document names another archive than {name} for {server} {client}")
        password = BETA_CODE if element.get("auth") else ""
        pack_client(world / "clients" / name, server, client, version, data_bytes, password, client_program)

    check_links(world, base_url, document)
    write_document(world, text)


def publish(
    world: Path,
    server: str,
    client: str,
    version: str,
    data_bytes: int = DEFAULT_DATA_BYTES,
    client_program: Path | None = None,
) -> None:
    """Adds a new version of one client to a world that is already laid out."""
    try:
        text = (world / "launcher.xml").read_text(encoding="utf-8")
    except OSError as error:
        raise WorldError(f"no demo world in {world}: {error.strerror}") from error

    builder = ElementTree.TreeBuilder(insert_comments=True)
    document = ElementTree.fromstring(text, ElementTree.XMLParser(target=builder))
    found = [e for e in document.iter("client") if (e.get("server"), e.get("name")) == (server, client)]
    if len(found) != 1:
        raise WorldError(f"launcher.xml has {len(found)} entries for {server} {client}, not one")

    entry = found[0]
    name = archive_name(server, client, version)
    password = BETA_CODE if entry.get("auth") else ""
    pack_client(world / "clients" / name, server, client, version, data_bytes, password, client_program)
    # The archive is there before the document names it.
    entry.set("version", version)
    entry.set("url", attribute(entry, "url").rpartition("/")[0] + "/" + name)
    write_document(world, ElementTree.tostring(document, encoding="unicode", xml_declaration=False) + "\n")


def main() -> int:
    parser = argparse.ArgumentParser(description="Lay out the Emberwake demo world, or publish a newer client in it.")
    commands = parser.add_subparsers(dest="command", required=True)

    making = commands.add_parser("lay", help="make the world anew")
    making.add_argument("--base-url", required=True, help="where it will be served, ending in a slash")
    making.add_argument("--launcher-version", type=int, default=1, help="newest launcher version (default: 1)")

    adding = commands.add_parser("publish", help="add a newer version of one client")
    adding.add_argument("--server", required=True)
    adding.add_argument("--client", required=True)
    adding.add_argument("--version", required=True)

    for command in (making, adding):
        command.add_argument("--out", required=True, type=Path, help="the world's folder")
        command.add_argument("--data-bytes", type=int, default=DEFAULT_DATA_BYTES, help="size of a client's data file")
        command.add_argument(
            "--client-program", type=Path, metavar="EXE", help="the sample client (default: a shell script)"
        )

    given = parser.parse_args()
    try:
        if given.command == "lay":
            lay(given.out, given.base_url, given.launcher_version, given.data_bytes, given.client_program)
        else:
            publish(
                given.out, given.server, given.client, given.version, given.data_bytes, given.client_program
            )
    except WorldError as error:
        print(f"make_world.py: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
