"""finish.py shrink FILE...      drop unused alpha, recompress, no metadata
finish.py palette FILE...     the same with 256 colours, dithered: read several times as fast
finish.py icon OUT FRAME...   put square PNG frames into one .ico file"""
import io
import struct
import sys

from PIL import Image


def shrink(path):
    im = Image.open(path)
    im.load()
    if im.mode == "RGBA" and im.getchannel("A").getextrema()[0] == 255:
        im = im.convert("RGB")
    clean = Image.new(im.mode, im.size)
    clean.paste(im)
    clean.save(path, "PNG", optimize=True)


def palette(path):
    im = Image.open(path).convert("RGB")
    w, h = im.size
    # The colours are chosen from the whole picture and, once more, from its lower right: the few
    # warm pixels there are what a choice by number alone would starve.
    warm = im.crop((w * 72 // 100, h * 2 // 3, w, h))
    sample = Image.new("RGB", (w // 2 + warm.width, max(h // 2, 2 * warm.height)), im.getpixel((0, 0)))
    sample.paste(im.resize((w // 2, h // 2), Image.NEAREST), (0, 0))
    sample.paste(warm, (w // 2, 0))
    sample.paste(warm, (w // 2, warm.height))
    chosen = sample.quantize(256, method=Image.MEDIANCUT)
    im.quantize(palette=chosen, dither=Image.FLOYDSTEINBERG).save(path, "PNG", optimize=True)


def icon(out, frames):
    blobs = []
    for f in frames:
        im = Image.open(f).convert("RGBA")
        b = io.BytesIO()
        im.save(b, "PNG", optimize=True)
        blobs.append((im.size[0], b.getvalue()))
    offset = 6 + 16 * len(blobs)
    head = struct.pack("<HHH", 0, 1, len(blobs))
    for size, data in blobs:
        head += struct.pack("<BBBBHHLL", size % 256, size % 256, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    with open(out, "wb") as f:
        f.write(head + b"".join(d for _, d in blobs))


if __name__ == "__main__":
    if sys.argv[1] == "icon":
        icon(sys.argv[2], sys.argv[3:])
    else:
        for p in sys.argv[2:]:
            {"shrink": shrink, "palette": palette}[sys.argv[1]](p)
