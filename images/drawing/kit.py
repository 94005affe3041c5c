"""Small drawing kit for the launcher artwork: writes plain SVG files.

Everything is deterministic (seeded random numbers, fixed number formatting),
so the same sources always give the same files.  Lettering is written as
outlines taken from the Lato font, so rendering does not need any font.

kit.py alone prints what else decides which bytes the drawings have.
"""
from __future__ import annotations

import functools
import logging
import math
import platform
import random
import subprocess
from collections.abc import Sequence
from pathlib import Path

import fontTools
from fontTools.pens.basePen import BasePen
from fontTools.ttLib import TTFont

SOURCES = Path(__file__).resolve().parents[1] / "sources"

EMBERS = ["#ffc27a", "#ffa45a", "#ff7a2f"]

Point = tuple[float, float]
# Where on the gradient (0 to 1), the colour, and its opacity if it is not 1.
Stop = tuple[float, str] | tuple[float, str, float]
# Middle, radius, colour and opacity of the light on a ridge.
Rim = tuple[float, float, float, str, float]

# It warns of Lato's date.
logging.getLogger("fontTools").setLevel(logging.ERROR)


def n(v: float) -> str:
    """Short, stable number formatting."""
    s = "%.2f" % v
    s = s.rstrip("0").rstrip(".")
    return "0" if s in ("-0", "") else s


# --------------------------------------------------------------- lettering

@functools.lru_cache(maxsize=None)
def lato(style: str) -> TTFont:
    path = subprocess.run(
        ["fc-match", "-f", "%{file}", "Lato:style=" + style],
        check=True, stdout=subprocess.PIPE, text=True).stdout
    if "Lato" not in Path(path).name:
        raise SystemExit("the Lato font is needed to generate lettering")
    return TTFont(path)


class Outline(BasePen):  # type: ignore[misc]  # fontTools has no types
    """Writes a glyph down as path data, its origin at (x, y)."""

    def __init__(self, glyphs: object, x: float, y: float, scale: float) -> None:
        super().__init__(glyphs)
        self.x, self.y, self.scale = x, y, scale
        self.start: Point = (0, 0)
        self.data: list[str] = []

    def place(self, point: Point) -> str:
        return n(self.x + point[0] * self.scale) + " " + n(self.y - point[1] * self.scale)

    def _moveTo(self, pt: Point) -> None:
        self.start = pt
        self.data.append("M" + self.place(pt))

    def _lineTo(self, pt: Point) -> None:
        self.data.append("L" + self.place(pt))

    def _qCurveToOne(self, pt1: Point, pt2: Point) -> None:
        self.data.append("Q" + self.place(pt1) + " " + self.place(pt2))

    def _closePath(self) -> None:
        # fontTools leaves a last straight line, be it without length, to the closing.
        if self.data[-1][0] != "Q" or self._getCurrentPoint() != self.start:
            self._lineTo(self.start)
        self.data.append("Z")


KERN = {"AY": -70, "LA": 0, "LO": -20, "PL": 0, "AT": -90, "TA": -90, "DA": -20,
        "PD": 0, "OA": -25, "WN": 0, "OW": -15, "FF": 0, "FA": -60, "RF": 0}


def lettering(text: str, x: float, y: float, size: float, style: str = "Black", spacing: float = 0.0,
              anchor: str = "middle") -> tuple[str, float]:
    """Path data of a text line with its baseline at y, and its width."""
    font = lato(style)
    glyphs, names = font.getGlyphSet(), font.getBestCmap()
    k = size / font["head"].unitsPerEm
    pens, pen = [], 0.0
    for i, ch in enumerate(text):
        if i:
            pen += spacing + KERN.get(text[i - 1:i + 1], 0) * size / 1000.0
        pens.append(pen)
        pen += glyphs[names[ord(ch)]].width * k
    x0 = x - {"start": 0, "middle": pen / 2, "end": pen}[anchor]
    out: list[str] = []
    for ch, px in zip(text, pens):
        outline = Outline(glyphs, x0 + px, y, k)
        glyphs[names[ord(ch)]].draw(outline)
        out += outline.data
    return "".join(out), pen


def drawn_with() -> str:
    """The font and the programs; each of them may change a digit somewhere."""
    font = lato("Black")["name"].getDebugName(5).partition(";")[0]
    python = ".".join(platform.python_version_tuple()[:2])
    return f"Lato {font}, fontTools {fontTools.version}, Python {python}, {platform.machine()}"


# ------------------------------------------------------------------ canvas

# The sign of the game: a flame that stands in its own wake.
FLAME = ("M53 2C57 21 83 35 83 61C83 72 78 80 70 84C57 78 43 78 30 84"
         "C22 79 17 71 17 60C17 45 26 37 31 24C37 32 39 39 40 46C48 37 55 21 53 2Z")
FLAME_IN = ("M52 43C55 54 67 60 67 72C67 75 66.500 77 65.500 79C55 75.500 45 75.500 34.500 79"
            "C33.500 77 33 75 33 72C33 63 41 60 43.500 53C47 56 48.500 59 49.500 62C52 57 53 50 52 43Z")
WAKE = "M14 93C26 83 38 83 50 89C62 95 74 95 86 87"


# People, 100 high, standing at the origin: a hooded cloak, a coat with a staff, a skirt with a basket.
PEOPLE: tuple[str, ...] = (
    "M-15 0C-14 -26 -14 -48 -15 -62C-15 -72 -12 -79 -6 -82C-10 -88 -8 -98 1 -101C8 -100 11 -93 9 -87L7 -82"
    "C13 -80 16 -73 17 -64C18 -46 20 -24 24 -1L17 -3L11 0L3 -2L-4 1L-10 -1Z",
    "M-11 0H-3L0 -34L5 0H13L12 -36C13 -48 13 -56 13 -62L20 -52L24 -56V0H26.500V-96H24V-60L20 -60L14 -78C12 -82 8 -83 4 -84V-86"
    "C8 -89 9 -100 0 -100C-9 -100 -8 -89 -4 -86V-84C-10 -83 -14 -80 -14 -72L-16 -44L-11 -40Z",
    "M-19 0C-15 -20 -10 -38 -8 -52L-13 -42L-17 -44L-11 -72C-10 -80 -7 -83 -3 -84V-86C-9 -88 -9 -101 1 -101C10 -100 9 -90 5 -86V-84"
    "C10 -83 12 -78 13 -70L19 -52H29L26 -40H14L13 -48L9 -56C12 -40 17 -20 20 0Z",
)


class Scene:
    def __init__(self, w: int, h: int, seed: int = 1) -> None:
        self.w, self.h = w, h
        self.r = random.Random(seed)
        self.defs: list[str] = []
        self.out: list[str] = []
        self.ids = 0
        # Where text stands: no star and no spark may glow there.
        self.quiet: list[tuple[float, float, float, float]] = []

    def id(self) -> str:
        self.ids += 1
        return "d%d" % self.ids

    def add(self, s: str) -> None:
        self.out.append(s)

    def save(self, name: str) -> None:
        path = SOURCES / (name + ".svg")
        path.parent.mkdir(parents=True, exist_ok=True)
        with open(path, "w", newline="\n") as f:
            f.write('<svg xmlns="http://www.w3.org/2000/svg" width="%s" height="%s" viewBox="0 0 %s %s">\n'
                    % (self.w, self.h, self.w, self.h))
            if self.defs:
                f.write("<defs>\n%s\n</defs>\n" % "\n".join(self.defs))
            f.write("\n".join(self.out) + "\n</svg>\n")

    # --- paint servers
    def stop(self, offset: float, color: str, opacity: float | None = None) -> str:
        return '<stop offset="%s" stop-color="%s"%s/>' % (
            n(offset), color, "" if opacity is None else ' stop-opacity="%s"' % n(opacity))

    def stops(self, stops: Sequence[Stop]) -> str:
        return "".join(self.stop(*s) for s in stops)

    def lin(self, stops: Sequence[Stop], x1: float = 0, y1: float = 0, x2: float = 0, y2: float = 1,
            user: bool = False) -> str:
        i = self.id()
        self.defs.append('<linearGradient id="%s" x1="%s" y1="%s" x2="%s" y2="%s"%s>%s</linearGradient>' % (
            i, n(x1), n(y1), n(x2), n(y2), ' gradientUnits="userSpaceOnUse"' if user else "", self.stops(stops)))
        return "url(#%s)" % i

    def rad(self, stops: Sequence[Stop], cx: float = .5, cy: float = .5, r: float = .5, user: bool = False) -> str:
        i = self.id()
        self.defs.append('<radialGradient id="%s" cx="%s" cy="%s" r="%s"%s>%s</radialGradient>' % (
            i, n(cx), n(cy), n(r), ' gradientUnits="userSpaceOnUse"' if user else "", self.stops(stops)))
        return "url(#%s)" % i

    def soft(self, color: str, op: float, around_origin: bool = False) -> str:
        """Radial falloff without a visible edge, over the shape's box or over the circle of radius 1."""
        stops: list[Stop] = [(t, color, op * (math.exp(-4.2 * t * t) - math.exp(-4.2)) / (1 - math.exp(-4.2)))
                             for t in (0, .12, .25, .38, .5, .62, .75, .88, 1)]
        return self.rad(stops, 0, 0, 1, user=True) if around_origin else self.rad(stops)

    def blur(self, s: float) -> str:
        i = self.id()
        self.defs.append('<filter id="%s" x="-60%%" y="-60%%" width="220%%" height="220%%">'
                         '<feGaussianBlur stdDeviation="%s"/></filter>' % (i, n(s)))
        return "url(#%s)" % i

    # --- shapes
    def rect(self, x: float, y: float, w: float, h: float, fill: str, extra: str = "") -> None:
        self.add('<rect x="%s" y="%s" width="%s" height="%s" fill="%s"%s/>' % (
            n(x), n(y), n(w), n(h), fill, " " + extra if extra else ""))

    def path(self, d: str, fill: str, extra: str = "") -> None:
        self.add('<path d="%s" fill="%s"%s/>' % (d, fill, " " + extra if extra else ""))

    def poly(self, pts: Sequence[Point], fill: str, extra: str = "") -> None:
        self.path("M" + "L".join("%s %s" % (n(x), n(y)) for x, y in pts) + "Z", fill, extra)

    def ell(self, cx: float, cy: float, rx: float, ry: float, fill: str, extra: str = "") -> None:
        self.add('<ellipse cx="%s" cy="%s" rx="%s" ry="%s" fill="%s"%s/>' % (
            n(cx), n(cy), n(rx), n(ry), fill, " " + extra if extra else ""))

    def sky(self, *stops: Stop) -> None:
        self.rect(0, 0, self.w, self.h, self.lin(stops))

    def glow(self, cx: float, cy: float, rx: float, ry: float, color: str, op: float) -> None:
        self.ell(cx, cy, rx, ry, self.soft(color, op))

    def is_quiet(self, x: float, y: float, margin: float) -> bool:
        return any(a - margin < x < c + margin and b - margin < y < d + margin for a, b, c, d in self.quiet)

    def cloud(self, fx: float, fy: float, seed: int, color: str, gain: float, floor: float, mask: str,
              octaves: int = 4) -> None:
        """Drifting smoke over the whole picture: noise, seen where the mask is white."""
        f, m = self.id(), self.id()
        rgb = [int(color[i:i + 2], 16) / 255.0 for i in (1, 3, 5)]
        self.defs.append(
            '<filter id="%s" x="0" y="0" width="100%%" height="100%%" color-interpolation-filters="sRGB">'
            '<feTurbulence type="fractalNoise" baseFrequency="%s %s" numOctaves="%d" seed="%d"/>'
            '<feColorMatrix values="0 0 0 0 %s 0 0 0 0 %s 0 0 0 0 %s %s 0 0 0 %s"/></filter>' % (
                f, "%.4f" % fx, "%.4f" % fy, octaves, seed, n(rgb[0]), n(rgb[1]), n(rgb[2]), n(gain), n(-floor)))
        self.defs.append('<mask id="%s" maskUnits="userSpaceOnUse" x="0" y="0" width="%s" height="%s">'
                         '<rect width="%s" height="%s" fill="%s"/></mask>' % (m, self.w, self.h, self.w, self.h, mask))
        self.add('<g mask="url(#%s)">' % m)
        self.rect(0, 0, self.w, self.h, "#000000", 'filter="url(#%s)"' % f)
        self.add("</g>")

    def stars(self, count: int, y1: float, op: float = .8, color: str = "#dfe6ff", big: float = 1.0) -> None:
        for _ in range(count):
            x, y = self.r.uniform(0, self.w), self.r.uniform(0, 1) ** 1.3 * y1
            o = op * self.r.uniform(.2, 1) * (1 - .8 * y / y1)
            rr = big * (.35 + .55 * self.r.random() ** 3)
            # Left out after all numbers are drawn, so that the rest of the scene stays where it is.
            if not self.is_quiet(x, y, 2):
                self.add('<circle cx="%s" cy="%s" r="%s" fill="%s" opacity="%s"/>' % (
                    n(x), n(y), n(rr), color, n(o)))

    def ridgeline(self, yl: float, yr: float, amp: float, steps: int = 7, rough: float = .55) -> list[Point]:
        pts = [yl, yr]
        a = amp
        for _ in range(steps):
            new: list[float] = []
            for p, q in zip(pts, pts[1:]):
                new += [p, (p + q) / 2 + self.r.uniform(-a, a)]
            pts = new + [pts[-1]]
            a *= rough
        c = len(pts) - 1
        return [(-8 + (self.w + 16) * i / c, y) for i, y in enumerate(pts)]

    def ridge(self, yl: float, yr: float, amp: float, top: str, bottom: str | None = None,
              depth: float | None = None, rim: Rim | None = None, steps: int = 7, rough: float = .55) -> list[Point]:
        """A mountain line down to the lower edge.  rim = (cx, cy, r, color, opacity)."""
        line = self.ridgeline(yl, yr, amp, steps, rough)
        y0 = min(p[1] for p in line)
        fill = top if bottom is None else self.lin(
            [(0, top), (1, bottom)], 0, y0, 0, y0 + (depth or (self.h - y0)), user=True)
        self.poly(line + [(self.w + 8, self.h + 8), (-8, self.h + 8)], fill)
        if rim:
            cx, cy, r, color, op = rim
            g = self.rad([(0, color, op), (.5, color, op * .35), (1, color, 0)], cx, cy, r, user=True)
            self.path("M" + "L".join("%s %s" % (n(x), n(y + .5)) for x, y in line), "none",
                      'stroke="%s" stroke-width="%s" stroke-linejoin="round"' % (g, n(max(.7, self.w / 900))))
        return line

    def fog(self, y: float, h: float, color: str, op: float) -> None:
        self.rect(0, y - h, self.w, 2 * h, self.lin(
            [(0, color, 0), (.25, color, op * .35), (.5, color, op), (.75, color, op * .35), (1, color, 0)]))

    def mist(self, count: int, x0: float, y0: float, x1: float, y1: float, rx: float, ry: float, color: str,
             op: float, turned: bool = False) -> None:
        """Soft clouds. In a group that is turned they are stretched circles, not ellipses: there
        librsvg 2.54 lays an ellipse's gradient over a wrong box, and the clouds get edges."""
        f = self.soft(color, op, around_origin=turned)
        for _ in range(count):
            s = self.r.uniform(.6, 1.3)
            x, y = self.r.uniform(x0, x1), self.r.uniform(y0, y1)
            a, b = rx * s, ry * self.r.uniform(.6, 1.3)
            if turned:
                self.add('<circle r="1" fill="%s" transform="translate(%s %s) scale(%s %s)"/>' % (
                    f, n(x), n(y), n(a), n(b)))
            else:
                self.ell(x, y, a, b, f)

    def embers(self, count: int, x0: float, y0: float, x1: float, y1: float, rmin: float = .5, rmax: float = 1.8,
               bias: float = 1.6, op: float = .95, drift: float = 0) -> None:
        halo = self.soft("#ff7a2f", .55)
        for _ in range(count):
            u = self.r.random() ** bias
            x, y = self.r.uniform(x0, x1) + drift * u, y1 - (y1 - y0) * u
            rr = rmin + (rmax - rmin) * self.r.random() ** 3
            o = op * self.r.uniform(.35, 1) * (1 - .5 * u)
            flat, color, turn = self.r.uniform(.55, .95), self.r.choice(EMBERS), self.r.uniform(-60, 60)
            if self.is_quiet(x, y, rr * 5):
                continue
            if rr > rmin + .25 * (rmax - rmin):
                self.add('<circle cx="%s" cy="%s" r="%s" fill="%s" opacity="%s"/>' % (
                    n(x), n(y), n(rr * 5), halo, n(o)))
            self.add('<ellipse cx="%s" cy="%s" rx="%s" ry="%s" fill="%s" opacity="%s" transform="rotate(%s %s %s)"/>' % (
                n(x), n(y), n(rr), n(rr * flat), color, n(o), n(turn), n(x), n(y)))

    def tower(self, x: float, base: float, w: float, h: float, fill: str, broken: bool = True, slits: int = 0,
              lit: str = "#ffb866") -> None:
        """A ruined tower; x is its middle."""
        l, r, t = x - w / 2, x + w / 2, base - h
        pts = [(l - w * .08, base), (l, base - h * .12), (l, t)]
        if broken:
            k = 6
            for i in range(1, k):
                pts.append((l + w * i / k, t + h * (.02 + .16 * i / k) * self.r.uniform(.3, 1.2)))
            pts.append((r, t + h * .2))
        else:
            e = w * .14
            pts[-1] = (l, t + e * 2)
            pts += [(l - e, t + e), (l - e, t - e * .8)]
            k = 7
            ww = (w + 2 * e) / k
            for i in range(k):
                y = t - e * .8 if i % 2 == 0 else t
                pts += [(l - e + ww * i, y), (l - e + ww * (i + 1), y)]
            pts += [(r + e, t + e), (r, t + e * 2)]
        pts += [(r, base - h * .12), (r + w * .08, base)]
        self.poly(pts, fill)
        for i in range(slits):
            sy = base - h * (.3 + .5 * i / max(1, slits))
            sx = x + w * self.r.uniform(-.18, .18)
            self.glow(sx, sy, w * .4, w * .4, "#ff7a2f", .35)
            self.path("M%s %sv%sq%s %s %s 0v%sZ" % (n(sx - w * .06), n(sy + w * .16), n(-w * .24), n(w * .06),
                                                    n(-w * .12), n(w * .12), n(w * .24)), lit)

    def figure(self, x: float, y: float, h: float, fill: str) -> None:
        """A cloaked person standing at (x, y)."""
        s = h / 100.0
        flip = self.r.choice((-1, 1))
        body = self.r.choice(PEOPLE)
        self.path(body, fill, 'transform="translate(%s %s) scale(%s %s)"' % (n(x), n(y), "%.4f" % (s * flip), "%.4f" % s))

    def pine(self, x: float, y: float, h: float, fill: str) -> None:
        w = h * .22
        pts = [(x, y - h)]
        left: list[Point] = []
        for i in range(1, 6):
            yy = y - h + h * .9 * i / 5
            ww = w * i / 5
            pts += [(x + ww * self.r.uniform(.9, 1.15), yy), (x + ww * .55, yy - h * .03)]
            left += [(x - ww * self.r.uniform(.9, 1.15), yy), (x - ww * .55, yy - h * .03)]
        self.poly(pts + [(x + h * .02, y - h * .1), (x + h * .02, y), (x - h * .02, y), (x - h * .02, y - h * .1)]
                  + left[::-1], fill)

    def vignette(self, op: float = .6, color: str = "#05070d") -> None:
        self.rect(0, 0, self.w, self.h, self.rad(
            [(0, color, 0), (.55, color, 0), (.8, color, op * .4), (1, color, op)], .5, .5, .75))

    def flame(self, cx: float, cy: float, size: float, fill: str, inner: str | None = None, wake: str | None = None,
              extra: str = "") -> None:
        s = size / 100.0
        self.add('<g transform="translate(%s %s) scale(%s)"%s>' % (
            n(cx - 50 * s), n(cy - 50 * s), "%.4f" % s, " " + extra if extra else ""))
        self.path(FLAME, fill)
        if inner:
            self.path(FLAME_IN, inner)
        if wake:
            self.path(WAKE, "none", 'stroke="%s" stroke-width="6" stroke-linecap="round"' % wake)
        self.add("</g>")

    def text(self, s: str, x: float, y: float, size: float, fill: str, style: str = "Black", spacing: float = 0.0,
             anchor: str = "middle", extra: str = "") -> float:
        d, width = lettering(s, x, y, size, style, spacing, anchor)
        self.path(d, fill, extra)
        return width


if __name__ == "__main__":
    print(drawn_with())
