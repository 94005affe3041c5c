"""What the server serves and the launcher installs: documents, pictures, archives."""

from __future__ import annotations

import random
import shutil
import zipfile
from pathlib import Path
from xml.sax.saxutils import quoteattr

from PIL import Image

from bench_tools import say

REPOSITORY = Path(__file__).resolve().parents[2]
DEMO = REPOSITORY / "demo" / "world"
SERVERS = ("Cinderfall", "Ashenmoor", "Emberreach", "Duskhaven")
REMEMBERED = f"{SERVERS[0]}|Official|true|"
MIB = 1024 * 1024


def element(tag: str, **attributes: str) -> str:
    written = " ".join(f"{key}={quoteattr(value)}" for key, value in attributes.items())
    return f"  <{tag} {written}/>\n"


def document(pictures: str, archive: str) -> str:
    """Four servers with two clients each, three slides and six tiles."""
    text = '<?xml version="1.0" encoding="UTF-8"?>\n<launcher version="1">\n'
    for server in SERVERS:
        for kind in ("Official", "Beta"):
            text += element("client", server=server, name=kind, version="2.1.4", url=archive)
    for number in range(1, 10):
        kind, picture = ("homenews", f"slide{number}") if number < 4 else ("news", f"tile{number - 3}")
        text += element(kind, id=str(number), title="The Forge Awakens", description="Twelve new quests",
                        imageUrl=f"{pictures}news/{picture}.png", clickUrl="http://127.0.0.1:9/")
    return text + "</launcher>\n"


def publish(root: Path, base_url: str) -> None:
    """The pictures of the demo world, and a document for each purpose."""
    shutil.copytree(DEMO / "news", root / "news", dirs_exist_ok=True)
    logos = sorted(DEMO.glob("*.png"))
    for number, server in enumerate(SERVERS):
        shutil.copy(logos[number % len(logos)], root / f"{server}.png")
    for folder, pictures, archive in (("", base_url, "client.zip"), ("slowlogos", f"{base_url}slow/", "client.zip"),
                                      ("plain", base_url, "plain.zip"), ("late", base_url, "plain.zip"),
                                      ("large", base_url, "large.zip"), ("small", base_url, "small.zip"),
                                      ("sized", base_url, "sized.zip")):
        (root / folder).mkdir(exist_ok=True)
        (root / folder / "launcher.xml").write_text(document(pictures, base_url + archive), encoding="utf-8")
        if folder not in ("", "slowlogos"):
            for server in SERVERS:
                shutil.copy(root / f"{server}.png", root / folder)


def large_file(path: Path, size: int) -> None:
    """A file that cannot be stored in less than its size."""
    if path.exists() and path.stat().st_size == size:
        return
    block = random.Random(1).randbytes(8 * MIB)
    with path.open("wb") as file:
        for begin in range(0, size, len(block)):
            file.write(block[: size - begin])


def client_archive(path: Path, size: int, files: int) -> None:
    """A client of so many files that unpack to so many bytes, half of which can be compressed."""
    mark = path.with_suffix(".made")
    wanted = f"{size} {files}"
    if path.exists() and mark.exists() and mark.read_text(encoding="ascii") == wanted:
        return
    say(f"Making a client of {size // MIB} MiB in {files} files ...")
    source = random.Random(2)
    noise = source.randbytes(4 * MIB)
    each = size // files
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=1) as archive:
        for number in range(files):
            begin = source.randrange(len(noise) - each // 2)
            content = noise[begin : begin + each // 2] + b"embers in the wind, " * (each // 40 + 1)
            archive.writestr(f"data/{number // 100:03}/part{number:05}.pak", content[:each])
    mark.write_text(wanted, encoding="ascii")


def photographs(folder: Path, count: int, width: int = 3840) -> list[Path]:
    """JPEG pictures of so many pixels by nine sixteenths of them."""
    folder.mkdir(exist_ok=True)
    paths = [folder / f"photograph{number}.jpg" for number in range(count)]
    for number, path in enumerate(paths):
        if not path.exists():
            coarse = Image.frombytes("RGB", (480, 270), random.Random(number).randbytes(480 * 270 * 3))
            coarse.resize((width, width * 9 // 16), Image.Resampling.BICUBIC).save(path, quality=85)
    return paths


def background_as_drawn(folder: Path) -> Path:
    """The launcher's background picture as programs for drawing pack it: what a plain program would show."""
    path = folder / "background.png"
    with Image.open(REPOSITORY / "images" / "bg_new.png") as picture:
        picture.save(path, optimize=True)
    return path
