"""finish.py shrink FILE...      drop unused alpha, recompress, no metadata
finish.py palette FILE...     256 colours: decoded several times as fast
finish.py simple FILE...      true colour packed so that it is quickly undone, the same pixels
finish.py icon OUT FRAME...   put square PNG frames into one .ico file"""
from __future__ import annotations

import functools
import struct
import sys
import zlib

from PIL import Image, ImageChops, ImageStat


def shrink(path: str) -> None:
    im = Image.open(path)
    im.load()
    if im.mode == "RGBA" and im.getchannel("A").getextrema()[0] == 255:
        im = im.convert("RGB")
    clean = Image.new(im.mode, im.size)
    clean.paste(im)
    clean.save(path, "PNG", optimize=True)


def palette(path: str) -> None:
    # Of all ways to choose, this one keeps the few warm pixels of a dark picture and half-transparent
    # edges; a Pillow without it stops with an error of its own.
    im = Image.open(path)
    few = im.quantize(256, method=Image.Quantize.LIBIMAGEQUANT)
    if few.palette.mode == "RGB":
        mend(few, im)
    few.save(path, "PNG", optimize=True)


def mend(few: Image.Image, im: Image.Image) -> None:
    """Gives a colour that is far from all that it stands for their mean: libimagequant 2.16 makes one
    glaring red of some dark edges."""
    indices = Image.frombytes("L", few.size, few.tobytes())
    channels = ImageChops.difference(few.convert("RGB"), im).split()
    far = functools.reduce(ImageChops.lighter, channels).point(lambda v: 255 if v > 128 else 0)
    colours = few.getpalette()
    for index, count in enumerate(indices.histogram(far)):
        if count:
            mask = indices.point(lambda v, index=index: 255 if v == index else 0)
            colours[3 * index:3 * index + 3] = [round(v) for v in ImageStat.Stat(im, mask).mean]
            few.putpalette(colours)


def by_the_left(im: Image.Image) -> bytes:
    """A PNG file in true colour that holds each pixel as the difference from its left neighbour. Pillow
    would choose a way for each line. Undoing the one that it likes best, a guess from three neighbours,
    takes the toolkit several times as long, and saves no byte here."""
    left = Image.new(im.mode, im.size)
    left.paste(im, (1, 0))
    data = ImageChops.subtract_modulo(im, left).tobytes()
    width, height = im.size
    line = len(data) // height
    difference_from_left = b"\1"
    lines = b"".join(difference_from_left + data[i:i + line] for i in range(0, len(data), line))

    def chunk(name: bytes, content: bytes) -> bytes:
        return struct.pack(">L", len(content)) + name + content + struct.pack(">L", zlib.crc32(name + content))

    colours = {"RGB": 2, "RGBA": 6}[im.mode]
    head = struct.pack(">LLBBBBB", width, height, 8, colours, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(lines, 9))
            + chunk(b"IEND", b""))


def simple(path: str) -> None:
    im = Image.open(path)
    im.load()
    # Lines of indices are packed as they are: a difference between two of them says nothing.
    if im.mode != "P":
        with open(path, "wb") as file:
            file.write(by_the_left(im))


def icon(out: str, frames: list[str]) -> None:
    blobs = []
    for f in frames:
        im = Image.open(f).convert("RGBA")
        blobs.append((im.size[0], by_the_left(im)))
    offset = 6 + 16 * len(blobs)
    head = struct.pack("<HHH", 0, 1, len(blobs))
    for size, data in blobs:
        head += struct.pack("<BBBBHHLL", size % 256, size % 256, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    with open(out, "wb") as file:
        file.write(head + b"".join(d for _, d in blobs))


if __name__ == "__main__":
    if sys.argv[1] == "icon":
        icon(sys.argv[2], sys.argv[3:])
    else:
        for p in sys.argv[2:]:
            {"shrink": shrink, "palette": palette, "simple": simple}[sys.argv[1]](p)
