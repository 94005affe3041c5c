"""Checks the pictures against their sources: pictures.py IMAGES DEMO_WORLD

Every picture has a drawing and every drawing a picture, at twice its size but
for a few; no drawing needs a font or another file; drawing and rendering
everything anew gives the committed files. Bit for bit, where the renderer is
the one that images/rendered-with.txt names; elsewhere no picture may look
different.
"""

import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from PIL import Image, ImageChops, ImageStat

# Mean difference of a channel, of 255. Another renderer draws edges differently; a picture that was
# changed without its drawing differs by more.
LOOKS_THE_SAME = 0.5

# Every start decodes them, seen or not: they are content with fewer pixels than twice their size.
SCALES = dict.fromkeys(("servers_nobutton_dark", "newsBig", "newsMedium1", "newsMedium2",
                        "newsSmall1", "newsSmall2", "newsSmall3"), 1)


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
    expected = tuple(round(float(side) * scale) for side in size.groups())
    if not picture.is_file():
        return problems + [f"{drawing.name} has no picture"]
    with Image.open(picture) as image:
        if image.size != expected:
            problems.append(f"{picture.name} is {image.size}, its drawing asks for {expected}")
    return problems


def difference(one: Path, other: Path) -> float:
    """Mean difference of the worst channel; 255 for pictures that cannot be compared."""
    with Image.open(one) as a, Image.open(other) as b:
        if a.size != b.size:
            return 255.0
        return max(ImageStat.Stat(ImageChops.difference(a.convert("RGBA"), b.convert("RGBA"))).mean)


def check_rendering(images: Path, world: Path) -> list[str]:
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

        record = "rendered-with.txt"
        same_renderer = (copy / record).read_bytes() == (images / record).read_bytes()
        if not same_renderer:
            print(f"Another renderer than the pictures': {(copy / record).read_text()}Comparing looks, not bytes.")
        copied_world = Path(name) / "demo" / "world"
        pairs = [(images / path.relative_to(copy), path) for path in pictures]
        pairs += [(path, copied_world / path.relative_to(world)) for path in sorted(world.rglob("*.png"))]
        for committed, made in pairs:
            if not made.is_file():
                problems.append(f"{committed.name} is not made by render.sh")
            elif committed.suffix == ".svg" or same_renderer:
                if committed.read_bytes() != made.read_bytes():
                    problems.append(f"{committed.name}: rendering it anew gives other bytes")
            elif committed.suffix == ".png" and difference(committed, made) > LOOKS_THE_SAME:
                problems.append(f"{committed.name}: rendering it anew gives another picture")
        if len(pairs) < 100:
            problems.append(f"only {len(pairs)} files compared")
    return problems


def main() -> int:
    images, world = (Path(argument).resolve() for argument in sys.argv[1:3])
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
    problems += check_rendering(images, world)
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
