"""Start, time to choice, and the window's own steps."""

from __future__ import annotations

import os
import shutil
import subprocess
import sys
import time
import xml.etree.ElementTree as ElementTree
from pathlib import Path

from PIL import Image

from bench_tools import Setting, in_turn, run, wait_until
from bench_world import REPOSITORY, SERVERS, background_as_drawn, photographs
from table import Row, above, at_most, counted_too, exponent, stated
from web import Web

IMAGES = REPOSITORY / "images"
FONTS = Path("/usr/share/fonts/truetype/lato")
# Where the document comes at once, and pictures and logos stay on their way.
SLOW = "slowlogos/"


def window_until(setting: Setting, url: str, until: str, pictures: Path | None = None) -> dict[str, float]:
    """One start of the launcher in an empty folder, up to a moment."""
    command: list[str | Path] = [setting.program("bench_window"), url, until]
    if pictures:
        command.append(pictures)
    ended = run(command, setting.folder("installation"))
    expected = {"choice": 0, "pictures": 9 + len(SERVERS)}[until]
    if ended.result["pictures"] != expected:
        sys.exit(f"{ended.result['pictures']} pictures were there instead of {expected}")
    return {"wall": ended.result["at"] - ended.started, "processor": ended.result["processor"],
            "peak": ended.result["peak"] / 1024, "anonymous": ended.result["anonymous"] / 1024}


def bare_window(setting: Setting, *arguments: str | Path) -> dict[str, float]:
    ended = run([setting.program("bench_bare_window"), *arguments], setting.folder("installation"))
    return {"wall": ended.result["at"] - ended.started, "processor": ended.result["processor"],
            "peak": ended.result["peak"] / 1024, "anonymous": ended.result["anonymous"] / 1024}


def start(setting: Setting, web: Web) -> list[Row]:
    picture = background_as_drawn(setting.scratch)
    ours, bare, packed, text, pictures = in_turn(
        setting.rounds,
        lambda: window_until(setting, web.url + SLOW, "choice"),
        lambda: bare_window(setting, picture),
        lambda: bare_window(setting),
        lambda: bare_window(setting, picture, "text"),
        lambda: window_until(setting, web.url, "pictures"))
    return [
        at_most("start: processor time until the complete window is painted", "ms", ours["processor"],
                bare["processor"], 1.6),
        stated("start: the same, beside a bare window whose picture is packed as ours", "ms", ours["processor"],
               packed["processor"]),
        stated("start: the same, beside a window with one text and the icon", "ms", ours["processor"],
               text["processor"]),
        above("start: peak memory", "MiB", ours["peak"], bare["peak"], 24,
              f"of its own, without libraries: {ours['anonymous']:.1f} and {bare['anonymous']:.1f} MiB"),
        stated("start: until all pictures are shown, processor time", "ms", pictures["processor"], bare["processor"],
               f"peak memory {pictures['peak']:.0f} MiB"),
        stated("start: time until the complete window is painted", "ms", ours["wall"], bare["wall"]),
    ]


def choice(setting: Setting, web: Web) -> list[Row]:
    base = web.url + SLOW
    picture = background_as_drawn(setting.scratch)

    def fetch() -> dict[str, float]:
        folder = setting.folder("fetched")
        ended = run(["curl", "-s", "-f", "-o", "launcher.xml", base + "launcher.xml"], folder, prints_result=False)
        if (folder / "launcher.xml").stat().st_size == 0:
            sys.exit("the document is empty")
        return {"wall": ended.wall}

    ours, fetched, bare = in_turn(
        setting.rounds, lambda: window_until(setting, base, "choice"), fetch,
        lambda: bare_window(setting, picture))
    return [above("time to choice", "ms", ours["wall"], fetched["wall"] + bare["wall"], 50,
                  f"curl {fetched['wall']:.0f} ms, bare window {bare['wall']:.0f} ms")]


def bundle(folder: Path, plain: bool) -> Path:
    """The resource list's pictures, or single-colour ones of the same sizes, as a resource file."""
    shutil.copy(IMAGES / "images.qrc", folder / "images.qrc")
    for entry in ElementTree.parse(IMAGES / "images.qrc").iter("file"):
        target = folder / str(entry.text)
        target.parent.mkdir(parents=True, exist_ok=True)
        if not plain or target.suffix != ".png":
            shutil.copy(IMAGES / str(entry.text), target)
            continue
        with Image.open(IMAGES / str(entry.text)) as picture:
            mode = "RGBA" if picture.mode == "RGBA" else "RGB"
            Image.new(mode, picture.size, (27, 34, 56, 255)[: len(mode)]).save(target, optimize=True)
    out = folder / "images.rcc"
    subprocess.run(["rcc", "--binary", "images.qrc", "-o", out], cwd=folder, check=True)
    return out


def own_pictures(setting: Setting, web: Web) -> list[Row]:
    ours, plain = (bundle(setting.folder(f"bundle-{kind}"), kind == "plain") for kind in ("ours", "plain"))
    drawn, flat = in_turn(
        setting.rounds,
        lambda: window_until(setting, web.url + SLOW, "choice", ours),
        lambda: window_until(setting, web.url + SLOW, "choice", plain))
    return [stated("start: processor time with our pictures, and with plain ones of the same sizes", "ms",
                   drawn["processor"], flat["processor"])]


def own_font(setting: Setting, web: Web) -> list[Row]:
    """The font from beside the program, as the packages have it, and the system's own."""
    program = Path(setting.program("bench_window"))
    beside = setting.folder("program-with-font")
    shutil.copy(program, beside)
    (beside / "fonts").mkdir()
    for face in ("Regular", "Bold"):
        shutil.copy(FONTS / f"Lato-{face}.ttf", beside / "fonts")
    without = beside / "fonts.conf"
    without.write_text(
        '<?xml version="1.0"?>\n<!DOCTYPE fontconfig SYSTEM "fonts.dtd">\n<fontconfig>\n'
        "<include>/etc/fonts/fonts.conf</include>\n"
        f"<selectfont><rejectfont><glob>{FONTS}/*</glob></rejectfont></selectfont>\n</fontconfig>\n",
        encoding="utf-8")

    def start_of(program: Path, environment: dict[str, str]) -> dict[str, float]:
        ended = run([program, web.url + SLOW, "choice"], setting.folder("installation"), environment)
        return {"processor": ended.result["processor"]}

    shipped, system = in_turn(
        setting.rounds,
        lambda: start_of(beside / program.name, {"FONTCONFIG_FILE": os.fspath(without)}),
        lambda: start_of(program, {}))
    return [stated("start: processor time with the font beside the program, and with the system's", "ms",
                   shipped["processor"], system["processor"])]


def document(setting: Setting, _: Web) -> list[Row]:
    rows = []
    points: list[tuple[int, float]] = []
    once = 0.0
    for entries in (100, 1_000, 10_000):
        result = run([setting.program("bench_document"), str(entries), str(setting.rounds)],
                     setting.folder("installation")).result
        if result["read"] != entries:
            sys.exit(f"{result['read']} entries were read instead of {entries}")
        rows.append(counted_too(f"document: {entries:,} entries", "ms", result["ours"], result["bare"]))
        points.append((entries, result["ours"]))
        once = result["once"]
    rows.append(counted_too("document: growth exponent", "", exponent(points)))
    rows.append(stated("document: the first time, with panel and requests for pictures", "ms", once))
    return rows


def versions(setting: Setting, _: Web) -> list[Row]:
    rows = []
    for entries in (10, 1_000, *([] if setting.quick else [100_000])):
        folder = setting.folder("versions")
        result = run([setting.program("bench_versions"), str(entries), str(setting.rounds)], folder).result
        if result["listed"] != entries or not result["installed"]:
            sys.exit(f"{result['listed']} versions were listed instead of {entries}")
        what = f"installed version: {entries:,} entries"
        # So many are not counted: it would take too long.
        rows.append(at_most(what, "ms", result["ours"], result["bare"], 1.3) if entries == 100_000 else
                    counted_too(what, "ms", result["ours"], result["bare"]))
        shutil.rmtree(folder)
    return rows


def rescale(setting: Setting, _: Web) -> list[Row]:
    result = run([setting.program("bench_rescale"), str(setting.rounds)], setting.folder("installation")).result
    return [counted_too("rescale: one step of the full window", "ms", result["ours"], result["bare"])]


def pictures(setting: Setting, _: Web) -> list[Row]:
    paths = photographs(setting.scratch / "photographs", 9)
    rounds = min(setting.rounds, 7)
    result = run([setting.program("bench_pictures"), str(rounds), *paths], setting.folder("installation")).result
    return [at_most("pictures: nine of 3840 x 2160, from bytes to shown", "ms", result["ours"], result["bare"], 1.1,
                    f"processor time of the window's thread {result['ourThread']:.0f} and "
                    f"{result['bareThread']:.0f} ms; the cache files are written meanwhile")]


def hover(setting: Setting, _: Web) -> list[Row]:
    result = run([setting.program("bench_hover"), str(setting.rounds)], setting.folder("installation")).result
    if not result["samePicture"]:
        sys.exit("the two ways paint different pictures")
    return [counted_too("hover: one paint of a glowing button", "ms", result["ours"], result["bare"])]


def threads(process: int) -> dict[str, tuple[str, int, float]]:
    """Of each thread: name, wake-ups, milliseconds of processor time."""
    found = {}
    for task in Path(f"/proc/{process}/task").iterdir():
        try:
            lines = (task / "status").read_text().splitlines()
            processor = int((task / "schedstat").read_text().split()[0]) / 1e6
        except (FileNotFoundError, ProcessLookupError):
            continue  # it has just ended
        status = dict(line.split(":\t", 1) for line in lines if ":\t" in line)
        found[task.name] = (status["Name"].strip(), int(status["voluntary_ctxt_switches"]), processor)
    return found


def minute_of(setting: Setting, command: list[str], seconds: int,
              environment: dict[str, str] | None = None) -> tuple[float, dict[str, int]]:
    """Per cent of a processor, and each thread's wake-ups, while a window stands open."""
    with subprocess.Popen(command, cwd=setting.folder("installation"), env={**os.environ, **(environment or {})},
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as process:
        try:
            if process.stdout is None or not process.stdout.readline():
                sys.exit("the window never became complete")
            # What is still painted and written does not count.
            last = threads(process.pid)
            quiet_since = time.monotonic()

            def is_quiet() -> bool:
                nonlocal last, quiet_since
                now = threads(process.pid)
                if now != last:
                    last, quiet_since = now, time.monotonic()
                return time.monotonic() - quiet_since > 1

            wait_until(is_quiet, "the window falls silent")
            before = threads(process.pid)
            # Not a wait for anything: the minute is what is measured.
            time.sleep(seconds)
            after = threads(process.pid)
        finally:
            process.terminate()
    none = ("", 0, 0.0)
    processor = sum(after[key][2] - before.get(key, none)[2] for key in after)
    wakes: dict[str, int] = {}
    for key, (name, count, _) in after.items():
        if woken := count - before.get(key, none)[1]:
            wakes[name] = wakes.get(name, 0) + woken
    return processor / seconds / 10, wakes


def idle(setting: Setting, web: Web) -> list[Row]:
    seconds = 10 if setting.quick else 60
    ours = [setting.program("bench_window"), web.url, "idle"]
    bare = [setting.program("bench_bare_window"), web.url + "launcher.xml"]
    percent, wakes = minute_of(setting, ours, seconds)
    bare_percent, bare_wakes = minute_of(setting, bare, seconds)
    # As shipped: the packages leave the plug-in out that asks for the network interfaces.
    shipped_percent, shipped = minute_of(setting, ours, seconds, {"QT_BEARER_POLL_TIMEOUT": "2000000000"})

    def in_a_minute(counts: dict[str, int]) -> float:
        return sum(counts.values()) * 60 / seconds

    def names(counts: dict[str, int]) -> str:
        return ", ".join(f"{name} {count}" for name, count in counts.items()) or "nobody"

    return [
        Row("idle: processor, as shipped", "%", shipped_percent, goal="0.0 %", met=round(shipped_percent, 1) == 0.0),
        stated("idle: processor, with the toolkit's look at the network", "%", percent, bare_percent),
        stated("idle: wake-ups a minute, with the toolkit's look at the network", "", in_a_minute(wakes),
               in_a_minute(bare_wakes), f"in {seconds} s woke: {names(wakes)}; of the bare window: {names(bare_wakes)}"),
        # The toolkit empties its cache of pictures by and by, once in ten seconds.
        Row("idle: wake-ups a minute, as shipped", "", in_a_minute(shipped),
            goal="none but the 6 of the toolkit's picture cache", met=in_a_minute(shipped) <= 6,
            note=f"in {seconds} s woke: {names(shipped)}"),
    ]
