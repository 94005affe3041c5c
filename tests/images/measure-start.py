#!/usr/bin/python3
"""How much the launcher's start costs with its pictures, beside plain ones of the same sizes.

    tests/support/with-display.sh tests/images/measure-start.py BENCH_START [ROUNDS]

BENCH_START is the built bench_start. Both kinds are started in turn, each as a
fresh process; the figures are medians: of the time from the process's start to
its end, which follows the painted window, of the part from main() to the
painted window, and of the processor time, which other work on the machine
disturbs least. A measurement: it judges nothing.
"""

import resource
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
import xml.etree.ElementTree as ElementTree
from pathlib import Path

from PIL import Image

IMAGES = Path(__file__).resolve().parents[2] / "images"


def bundle(folder: Path, plain: bool) -> Path:
    """The resource list's pictures, or single-colour ones of the same sizes, as a resource file."""
    shutil.copy(IMAGES / "images.qrc", folder / "images.qrc")
    for entry in ElementTree.parse(IMAGES / "images.qrc").iter("file"):
        target = folder / entry.text
        target.parent.mkdir(parents=True, exist_ok=True)
        if not plain or target.suffix != ".png":
            shutil.copy(IMAGES / entry.text, target)
            continue
        with Image.open(IMAGES / entry.text) as picture:
            mode = "RGBA" if picture.mode == "RGBA" else "RGB"
            Image.new(mode, picture.size, (27, 34, 56, 255)[: len(mode)]).save(target, optimize=True)
    out = folder / "images.rcc"
    subprocess.run(["rcc", "--binary", "images.qrc", "-o", out], cwd=folder, check=True)
    return out


def start(program: str, pictures: Path) -> tuple[float, float, float]:
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    begin = time.perf_counter()
    inner = subprocess.run([program, pictures], check=True, capture_output=True, text=True).stdout
    whole = time.perf_counter() - begin
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    processor = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return whole * 1000, float(inner), processor * 1000


def main() -> int:
    program = sys.argv[1]
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 21
    with tempfile.TemporaryDirectory() as name:
        kinds = {}
        for kind in ("ours", "plain"):
            folder = Path(name) / kind
            folder.mkdir()
            kinds[kind] = bundle(folder, kind == "plain")
        times = {kind: [] for kind in kinds}
        for number in range(rounds + 1):
            # Whoever comes second finds the caches warm.
            for kind in ("ours", "plain") if number % 2 else ("plain", "ours"):
                measured = start(program, kinds[kind])
                if number:  # the first round warms up
                    times[kind].append(measured)
        for place, what in enumerate(("whole process", "main() to painted window", "processor time")):
            ours, plain = (statistics.median(t[place] for t in times[kind]) for kind in ("ours", "plain"))
            print(f"{what}: ours {ours:.1f} ms, plain {plain:.1f} ms, ratio {ours / plain:.3f} ({rounds} rounds)")
    return 0


if __name__ == "__main__":
    sys.exit(main())
