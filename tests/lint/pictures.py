"""Checks the pictures against their sources: pictures.py IMAGES DEMO_WORLD [--looks]

Every picture has a drawing and every drawing a picture, at twice its size but
for a few; no drawing needs a font or another file; drawing and rendering
everything anew gives the committed files. Bit for bit, where font and programs
are those that images/drawn-with.txt and images/rendered-with.txt name;
elsewhere, or with --looks, no picture may look different. The launcher's own are
packed in a way that is quickly undone.
"""

from __future__ import annotations

import argparse
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib
from collections.abc import Iterator
from dataclasses import dataclass, field
from pathlib import Path

from PIL import Image, ImageChops, ImageFilter

# Two pictures look the same when they differ, after a little blur, by no more than this of 255 at their
# worst place, in any channel. The blur takes off what renderers disagree about: edges, dithering, single
# pixels. Between librsvg 2.54.7 and 2.60.0, Pillow 9.4 and 11.1, Lato 2.007 and 2.015 it leaves 3, and 10
# where each quantiser chose its own 256 colours. What may go unnoticed is a faint star or spark of about
# a pixel.
BLUR = 1.5
LIMIT = 6
LIMIT_OF_256_COLOURS = 15

# Every start decodes the first ones, seen or not: they are content with fewer pixels than twice their
# size. The others grow with the window only as far as their pixels go.
SCALES = dict.fromkeys(("servers_nobutton_dark", "newsBig", "newsMedium1", "newsMedium2",
                        "newsSmall1", "newsSmall2", "newsSmall3"), 1)
SCALES |= dict.fromkeys(("leftArrow", "rightArrow", "facebook", "discord"), 4)


@dataclass
class Change:
    """Something done to a drawing that must be noticed, lest the limits become too wide."""

    what: str
    drawing: str
    pattern: str
    replacement: str


MARK = r'(<path d="M59[^"]*" fill=)"#5e1f0a"/>'
RUNE = r'<path d="M309[^"]*" fill="#ffb061"/>'
CHANGES = (
    Change("a mark that is gone", "new_buttons/play", MARK, ""),
    Change("a mark in another red", "new_buttons/play", MARK, r'\1"#8e1f0a"/>'),
    Change("a mark moved by 3 pixels", "new_buttons/play", MARK, r'<g transform="translate(1.5 0)">\g<0></g>'),
    Change("an A without its hole", "new_buttons/play", r'(<path d="(?:M[^MZ"]*Z){4})M[^MZ"]*Z', r"\1"),
    Change("a rune moved by 3 pixels", "demo/Cinderfall", RUNE, r'<g transform="translate(3 0)">\g<0></g>'),
)


def drawings(images: Path, world: Path) -> dict[Path, tuple[Path, int]]:
    """Each drawing's picture, and how many pixels of it one unit of the drawing becomes."""
    sources = images / "sources"
    found = {}
    for drawing in sorted(sources.rglob("*.svg")):
        name = drawing.relative_to(sources).with_suffix(".png")
        if name.parts[0] == "demo":
            found[drawing] = world / name.relative_to("demo"), 1
        elif not name.stem.startswith("clienticon"):
            found[drawing] = images / name, SCALES.get(name.stem, 2)
    return found


def check_drawing(drawing: Path, picture: Path, scale: int) -> list[str]:
    text = drawing.read_text(encoding="utf-8")
    problems = [
        f"{drawing.name} holds <{what}>: what it looks like depends on something outside it"
        for what in re.findall(r"<(text|image|use|style|foreignObject|a)\b", text)
    ]
    size = re.match(r'<svg [^>]*width="([\d.]+)" height="([\d.]+)"', text)
    if size is None:
        return problems + [f"{drawing.name} does not state its size"]
    expected = tuple(round(float(side) * scale) for side in size.groups())
    if not picture.is_file():
        return problems + [f"{drawing.name} has no picture"]
    with Image.open(picture) as image:
        if image.size != expected:
            problems.append(f"{picture.name} is {image.size}, its drawing asks for {expected}")
    return problems


def blurred_frames(path: Path) -> dict[tuple[int, int], Image.Image]:
    """What is seen of a picture, for each size that is in the file."""
    frames = {}
    with Image.open(path) as image:
        for size in sorted(image.info.get("sizes", [image.size])):
            if size != image.size:
                image.size = size
            # Premultiplied: the colour of what is transparent is not seen.
            seen = image.convert("RGBA").convert("RGBa")
            frames[size] = Image.merge("RGBA", seen.split()).filter(ImageFilter.GaussianBlur(BLUR))
    return frames


def difference(one: Path, other: Path) -> int:
    """How much two pictures differ at their worst place; 255 for those that cannot be compared."""
    frames, others = blurred_frames(one), blurred_frames(other)
    if frames.keys() != others.keys():
        return 255
    return max(
        int(high)
        for size, frame in frames.items()
        for _, high in ImageChops.difference(frame, others[size]).getextrema()
    )


def limit_of(committed: Path) -> int:
    with Image.open(committed) as image:
        return LIMIT_OF_256_COLOURS if image.mode == "P" else LIMIT


def render(drawing: Path, picture: Path, scale: int) -> None:
    subprocess.run(["rsvg-convert", "--zoom", str(scale), "--output", picture, drawing], check=True)


def chunks(png: bytes) -> Iterator[tuple[bytes, bytes]]:
    """Names and contents of the parts of a PNG file."""
    at = 8
    while at < len(png):
        length, name = struct.unpack_from(">L4s", png, at)
        yield name, png[at + 8 : at + 8 + length]
        at += 12 + length


def ways_of_lines(png: bytes) -> set[int]:
    """How the lines of a PNG file in 256 or all colours are told: as they are (0), by the pixel to the left
    (1) or above (2), by the mean of both (3), or by a guess from three (4)."""
    parts = list(chunks(png))
    width, _, bits, colours = struct.unpack_from(">LLBB", parts[0][1])
    line = 1 + (width * bits * {2: 3, 3: 1, 6: 4}[colours] + 7) // 8
    return set(zlib.decompress(b"".join(content for name, content in parts if name == b"IDAT"))[::line])


def frames_of_icon(icon: bytes) -> list[bytes]:
    entries = [struct.unpack_from("<LL", icon, 14 + 16 * i) for i in range(struct.unpack_from("<H", icon, 4)[0])]
    return [icon[begin : begin + size] for size, begin in entries]


def check_packing(images: Path) -> list[str]:
    """Every start undoes it. What other programs prefer takes the toolkit several times as long."""
    frames = frames_of_icon((images / "clienticon.ico").read_bytes())
    packed = [(f"clienticon.ico, size {number}", frame) for number, frame in enumerate(frames, 1)]
    packed += [(path.name, path.read_bytes()) for path in sorted(images.rglob("*.png"))]
    problems = [] if len(frames) == 7 else [f"clienticon.ico has {len(frames)} sizes"]
    for name, png in packed:
        in_256_colours = any(part == b"PLTE" for part, _ in chunks(png))
        if ways_of_lines(png) != ({0} if in_256_colours else {1}):
            problems.append(f"{name} has lines that are told in another way: see finish.py simple")
    return problems


def check_eyes(images: Path, world: Path) -> list[str]:
    """The comparison of looks notices what somebody would."""
    problems = []
    found = drawings(images, world)
    with tempfile.TemporaryDirectory() as name:
        for change in CHANGES:
            drawing = images / "sources" / (change.drawing + ".svg")
            text, count = re.subn(change.pattern, change.replacement, drawing.read_text(encoding="utf-8"))
            changed, made = Path(name) / "changed.svg", Path(name) / "changed.png"
            changed.write_text(text, encoding="utf-8")
            picture, scale = found[drawing]
            render(changed, made, scale)
            if count != 1:
                problems.append(f"{drawing.name} has nothing for {change.what}")
            elif difference(picture, made) <= limit_of(picture):
                problems.append(f"{picture.name}: {change.what} would not be noticed")
    return problems


@dataclass
class Looks:
    """Compares looks, and remembers how close it was."""

    worst: dict[int, tuple[int, str]] = field(default_factory=dict)

    def same(self, committed: Path, made: Path, limit: int) -> bool:
        found = difference(committed, made)
        self.worst[limit] = max(self.worst.get(limit, (0, "none")), (found, committed.name))
        return found <= limit

    def same_drawing(self, committed: Path, made: Path, scale: int) -> bool:
        """By the same renderer, so that only the drawings can differ."""
        with tempfile.TemporaryDirectory() as name:
            pictures = Path(name) / committed.name, Path(name) / "made"
            render(committed, pictures[0], scale)
            render(made, pictures[1], scale)
            return self.same(*pictures, LIMIT)

    def report(self) -> None:
        for limit, (found, name) in sorted(self.worst.items()):
            print(f"Compared by looks: at most {found} of {limit}, in {name}.")


def same_record(images: Path, copy: Path, record: str) -> bool:
    ours, here = ((folder / record).read_text(encoding="utf-8") for folder in (images, copy))
    if ours != here:
        print(f"{record} says:\n{ours}Here it is:\n{here}", end="")
    return ours == here


def check_rendering(images: Path, world: Path, by_looks: bool) -> list[str]:
    """Draws and renders everything in a copy, and compares the copy with the committed files."""
    problems = []
    with tempfile.TemporaryDirectory() as name:
        copy = Path(name) / "images"
        shutil.copytree(images, copy)
        # What is not made anew must not be found.
        pictures = [path for path in copy.rglob("*") if path.suffix in (".png", ".ico", ".svg")]
        for path in pictures:
            path.unlink()
        result = subprocess.run(
            [copy / "render.sh", "--generate"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True
        )
        if result.returncode != 0:
            return [f"render.sh ended with {result.returncode}: {result.stdout}"]

        same_drawing = same_record(images, copy, "drawn-with.txt") and not by_looks
        same_renderer = same_record(images, copy, "rendered-with.txt") and same_drawing
        looks = Looks()
        scales = {drawing: scale for drawing, (_, scale) in drawings(images, world).items()}
        other_bytes = 0
        copied_world = Path(name) / "demo" / "world"
        pairs = [(images / path.relative_to(copy), path) for path in pictures]
        pairs += [(path, copied_world / path.relative_to(world)) for path in sorted(world.rglob("*.png"))]
        for committed, made in pairs:
            if not made.is_file():
                problems.append(f"{committed.name} is not made by render.sh")
            elif committed.read_bytes() == made.read_bytes():
                continue
            elif committed.suffix == ".svg":
                other_bytes += 1
                if same_drawing:
                    problems.append(f"{committed.name}: drawing it anew gives other bytes")
                elif not looks.same_drawing(committed, made, scales.get(committed, 2)):
                    problems.append(f"{committed.name}: drawing it anew gives another drawing")
            elif same_renderer:
                problems.append(f"{committed.name}: rendering it anew gives other bytes")
            elif not looks.same(committed, made, limit_of(committed)):
                problems.append(f"{committed.name}: rendering it anew gives another picture")
        if not same_renderer:
            print(f"{len(pairs)} files, {other_bytes} drawings with other bytes. Not compared: the other files' bytes.")
            looks.report()
        if len(pairs) < 100:
            problems.append(f"only {len(pairs)} files compared")
    return problems


def main() -> int:
    parser = argparse.ArgumentParser(description="Checks the pictures against their sources.")
    parser.add_argument("images", type=Path)
    parser.add_argument("world", type=Path)
    parser.add_argument("--looks", action="store_true", help="compare looks wherever bytes differ")
    arguments = parser.parse_args()
    images, world = arguments.images.resolve(), arguments.world.resolve()
    found = drawings(images, world)
    problems = []
    for drawing, (picture, scale) in found.items():
        problems += check_drawing(drawing, picture, scale)
    drawn = {picture for picture, _ in found.values()}
    problems += [
        f"{path.name} has no drawing"
        for path in sorted([*images.rglob("*.png"), *world.rglob("*.png")])
        if path not in drawn
    ]
    problems += check_packing(images)
    problems += check_eyes(images, world)
    problems += check_rendering(images, world, arguments.looks)
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
