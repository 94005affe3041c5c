"""Small drawing kit for the launcher artwork: writes plain SVG files.

Everything is deterministic (seeded random numbers, fixed number formatting),
so the same sources always give the same files.  Lettering is written as
outlines taken from the Lato font, so rendering does not need any font.
"""
import math
import os
import random
import struct
import subprocess

HERE = os.path.dirname(os.path.abspath(__file__))

EMBERS = ["#ffc27a", "#ffa45a", "#ff7a2f"]


def n(v):
    """Short, stable number formatting."""
    s = "%.2f" % v
    s = s.rstrip("0").rstrip(".")
    return "0" if s in ("-0", "") else s


# --------------------------------------------------------------- lettering

class Font:
    """Just enough of a TrueType reader to get glyph outlines."""
    _cache = {}

    @classmethod
    def get(cls, style):
        if style not in cls._cache:
            cls._cache[style] = cls(style)
        return cls._cache[style]

    def __init__(self, style):
        path = subprocess.run(
            ["fc-match", "-f", "%{file}", "Lato:style=" + style],
            check=True, stdout=subprocess.PIPE, universal_newlines=True).stdout
        if "Lato" not in os.path.basename(path):
            raise SystemExit("the Lato font is needed to generate lettering")
        with open(path, "rb") as f:
            self.d = f.read()
        self.t = {}
        for i in range(struct.unpack(">H", self.d[4:6])[0]):
            tag, _, off, ln = struct.unpack(">4sLLL", self.d[12 + 16 * i:28 + 16 * i])
            self.t[tag.decode()] = (off, ln)
        h = self.t["head"][0]
        self.em = self.u16(h + 18)
        long_loca = self.i16(h + 50)
        count = self.u16(self.t["maxp"][0] + 4)
        lo = self.t["loca"][0]
        if long_loca:
            self.loca = struct.unpack(">%dL" % (count + 1), self.d[lo:lo + 4 * count + 4])
        else:
            self.loca = [2 * v for v in struct.unpack(">%dH" % (count + 1), self.d[lo:lo + 2 * count + 2])]
        self.nhm = self.u16(self.t["hhea"][0] + 34)
        self.cmap = self.read_cmap()

    def u16(self, o):
        return struct.unpack(">H", self.d[o:o + 2])[0]

    def i16(self, o):
        return struct.unpack(">h", self.d[o:o + 2])[0]

    def read_cmap(self):
        base = self.t["cmap"][0]
        for i in range(self.u16(base + 2)):
            off = base + struct.unpack(">L", self.d[base + 8 + 8 * i:base + 12 + 8 * i])[0]
            if self.u16(off) == 4:
                break
        segs = self.u16(off + 6) // 2
        end, out = off + 14, {}
        start = end + 2 * segs + 2
        delta = start + 2 * segs
        rng = delta + 2 * segs
        for i in range(segs):
            a, b = self.u16(start + 2 * i), self.u16(end + 2 * i)
            dl, ro = self.u16(delta + 2 * i), self.u16(rng + 2 * i)
            for c in range(a, min(b, 0x24F) + 1):
                if ro:
                    g = self.u16(rng + 2 * i + ro + 2 * (c - a))
                    g = (g + dl) & 0xFFFF if g else 0
                else:
                    g = (c + dl) & 0xFFFF
                out[c] = g
        return out

    def advance(self, g):
        return self.u16(self.t["hmtx"][0] + 4 * min(g, self.nhm - 1))

    def contours(self, g):
        a, b = self.loca[g], self.loca[g + 1]
        if a == b:
            return []
        o = self.t["glyf"][0] + a
        nc = self.i16(o)
        if nc < 0:
            raise SystemExit("composite glyphs are not supported")
        ends = [self.u16(o + 10 + 2 * i) for i in range(nc)]
        p = o + 10 + 2 * nc
        p += 2 + self.u16(p)
        total = ends[-1] + 1
        flags = []
        while len(flags) < total:
            f = self.d[p]
            p += 1
            flags.append(f)
            if f & 8:
                flags += [f] * self.d[p]
                p += 1
        axes = []
        for short, same in ((2, 16), (4, 32)):
            v, vals = 0, []
            for f in flags:
                if f & short:
                    v += self.d[p] if f & same else -self.d[p]
                    p += 1
                elif not f & same:
                    v += self.i16(p)
                    p += 2
                vals.append(v)
            axes.append(vals)
        res, s = [], 0
        for e in ends:
            res.append([(axes[0][i], axes[1][i], flags[i] & 1) for i in range(s, e + 1)])
            s = e + 1
        return res


KERN = {"AY": -70, "LA": 0, "LO": -20, "PL": 0, "AT": -90, "TA": -90, "DA": -20,
        "PD": 0, "OA": -25, "WN": 0, "OW": -15, "FF": 0, "FA": -60, "RF": 0}


def lettering(text, x, y, size, style="Black", spacing=0.0, anchor="middle"):
    """Path data of a text line with its baseline at y."""
    font = Font.get(style)
    k = size / font.em
    pens, pen = [], 0.0
    for i, ch in enumerate(text):
        if i:
            pen += spacing + KERN.get(text[i - 1:i + 1], 0) * size / 1000.0
        pens.append(pen)
        pen += font.advance(font.cmap[ord(ch)]) * k
    x0 = x - {"start": 0, "middle": pen / 2, "end": pen}[anchor]
    out = []
    for ch, px in zip(text, pens):
        for pts in font.contours(font.cmap[ord(ch)]):
            full = []
            for i, pt in enumerate(pts):
                prev = pts[i - 1]
                if not prev[2] and not pt[2]:
                    full.append(((prev[0] + pt[0]) / 2, (prev[1] + pt[1]) / 2, 1))
                full.append(pt)
            first = next(i for i, q in enumerate(full) if q[2])
            full = full[first:] + full[:first + 1]
            f = lambda q: n(x0 + px + q[0] * k) + " " + n(y - q[1] * k)
            out.append("M" + f(full[0]))
            i = 1
            while i < len(full):
                if full[i][2]:
                    out.append("L" + f(full[i]))
                    i += 1
                else:
                    out.append("Q" + f(full[i]) + " " + f(full[i + 1]))
                    i += 2
            out.append("Z")
    return "".join(out), pen


# ------------------------------------------------------------------ canvas

# The sign of the game: a flame that stands in its own wake.
FLAME = ("M53 2C57 21 83 35 83 61C83 72 78 80 70 84C57 78 43 78 30 84"
         "C22 79 17 71 17 60C17 45 26 37 31 24C37 32 39 39 40 46C48 37 55 21 53 2Z")
FLAME_IN = ("M52 43C55 54 67 60 67 72C67 75 66.500 77 65.500 79C55 75.500 45 75.500 34.500 79"
            "C33.500 77 33 75 33 72C33 63 41 60 43.500 53C47 56 48.500 59 49.500 62C52 57 53 50 52 43Z")
WAKE = "M14 93C26 83 38 83 50 89C62 95 74 95 86 87"


# People, 100 high, standing at the origin: a hooded cloak, a coat with a staff, a skirt with a basket.
PEOPLE = (
    "M-15 0C-14 -26 -14 -48 -15 -62C-15 -72 -12 -79 -6 -82C-10 -88 -8 -98 1 -101C8 -100 11 -93 9 -87L7 -82"
    "C13 -80 16 -73 17 -64C18 -46 20 -24 24 -1L17 -3L11 0L3 -2L-4 1L-10 -1Z",
    "M-11 0H-3L0 -34L5 0H13L12 -36C13 -48 13 -56 13 -62L20 -52L24 -56V0H26.500V-96H24V-60L20 -60L14 -78C12 -82 8 -83 4 -84V-86"
    "C8 -89 9 -100 0 -100C-9 -100 -8 -89 -4 -86V-84C-10 -83 -14 -80 -14 -72L-16 -44L-11 -40Z",
    "M-19 0C-15 -20 -10 -38 -8 -52L-13 -42L-17 -44L-11 -72C-10 -80 -7 -83 -3 -84V-86C-9 -88 -9 -101 1 -101C10 -100 9 -90 5 -86V-84"
    "C10 -83 12 -78 13 -70L19 -52H29L26 -40H14L13 -48L9 -56C12 -40 17 -20 20 0Z",
)


class Scene:
    def __init__(self, w, h, seed=1):
        self.w, self.h = w, h
        self.r = random.Random(seed)
        self.defs, self.out, self.ids = [], [], 0
        # Where text stands: no star and no spark may glow there.
        self.quiet = []

    def id(self):
        self.ids += 1
        return "d%d" % self.ids

    def add(self, s):
        self.out.append(s)

    def save(self, name):
        path = os.path.join(HERE, name + ".svg")
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", newline="\n") as f:
            f.write('<svg xmlns="http://www.w3.org/2000/svg" width="%s" height="%s" viewBox="0 0 %s %s">\n'
                    % (self.w, self.h, self.w, self.h))
            if self.defs:
                f.write("<defs>\n%s\n</defs>\n" % "\n".join(self.defs))
            f.write("\n".join(self.out) + "\n</svg>\n")

    # --- paint servers
    def stops(self, stops):
        return "".join('<stop offset="%s" stop-color="%s"%s/>' % (
            n(s[0]), s[1], ' stop-opacity="%s"' % n(s[2]) if len(s) > 2 else "") for s in stops)

    def lin(self, stops, x1=0, y1=0, x2=0, y2=1, user=False):
        i = self.id()
        self.defs.append('<linearGradient id="%s" x1="%s" y1="%s" x2="%s" y2="%s"%s>%s</linearGradient>' % (
            i, n(x1), n(y1), n(x2), n(y2), ' gradientUnits="userSpaceOnUse"' if user else "", self.stops(stops)))
        return "url(#%s)" % i

    def rad(self, stops, cx=.5, cy=.5, r=.5, user=False):
        i = self.id()
        self.defs.append('<radialGradient id="%s" cx="%s" cy="%s" r="%s"%s>%s</radialGradient>' % (
            i, n(cx), n(cy), n(r), ' gradientUnits="userSpaceOnUse"' if user else "", self.stops(stops)))
        return "url(#%s)" % i

    def soft(self, color, op):
        """Radial falloff without a visible edge."""
        return self.rad([(t, color, op * (math.exp(-4.2 * t * t) - math.exp(-4.2)) / (1 - math.exp(-4.2)))
                         for t in (0, .12, .25, .38, .5, .62, .75, .88, 1)])

    def blur(self, s):
        i = self.id()
        self.defs.append('<filter id="%s" x="-60%%" y="-60%%" width="220%%" height="220%%">'
                         '<feGaussianBlur stdDeviation="%s"/></filter>' % (i, n(s)))
        return "url(#%s)" % i

    # --- shapes
    def rect(self, x, y, w, h, fill, extra=""):
        self.add('<rect x="%s" y="%s" width="%s" height="%s" fill="%s"%s/>' % (
            n(x), n(y), n(w), n(h), fill, " " + extra if extra else ""))

    def path(self, d, fill, extra=""):
        self.add('<path d="%s" fill="%s"%s/>' % (d, fill, " " + extra if extra else ""))

    def poly(self, pts, fill, extra=""):
        self.path("M" + "L".join("%s %s" % (n(x), n(y)) for x, y in pts) + "Z", fill, extra)

    def ell(self, cx, cy, rx, ry, fill, extra=""):
        self.add('<ellipse cx="%s" cy="%s" rx="%s" ry="%s" fill="%s"%s/>' % (
            n(cx), n(cy), n(rx), n(ry), fill, " " + extra if extra else ""))

    def sky(self, *stops):
        self.rect(0, 0, self.w, self.h, self.lin(stops))

    def glow(self, cx, cy, rx, ry, color, op):
        self.ell(cx, cy, rx, ry, self.soft(color, op))

    def is_quiet(self, x, y, margin):
        return any(a - margin < x < c + margin and b - margin < y < d + margin for a, b, c, d in self.quiet)

    def cloud(self, fx, fy, seed, color, gain, floor, mask, octaves=4):
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

    def stars(self, count, y1, op=.8, color="#dfe6ff", big=1.0):
        for _ in range(count):
            x, y = self.r.uniform(0, self.w), self.r.uniform(0, 1) ** 1.3 * y1
            o = op * self.r.uniform(.2, 1) * (1 - .8 * y / y1)
            rr = big * (.35 + .55 * self.r.random() ** 3)
            # Left out after all numbers are drawn, so that the rest of the scene stays where it is.
            if not self.is_quiet(x, y, 2):
                self.add('<circle cx="%s" cy="%s" r="%s" fill="%s" opacity="%s"/>' % (
                    n(x), n(y), n(rr), color, n(o)))

    def ridgeline(self, yl, yr, amp, steps=7, rough=.55, sharp=True):
        pts = [yl, yr]
        a = amp
        for _ in range(steps):
            new = []
            for p, q in zip(pts, pts[1:]):
                new += [p, (p + q) / 2 + self.r.uniform(-a, a)]
            pts = new + [pts[-1]]
            a *= rough
        c = len(pts) - 1
        return [(-8 + (self.w + 16) * i / c, y) for i, y in enumerate(pts)]

    def ridge(self, yl, yr, amp, top, bottom=None, depth=None, rim=None, steps=7, rough=.55, smooth=False):
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

    def fog(self, y, h, color, op):
        self.rect(0, y - h, self.w, 2 * h, self.lin(
            [(0, color, 0), (.25, color, op * .35), (.5, color, op), (.75, color, op * .35), (1, color, 0)]))

    def mist(self, count, x0, y0, x1, y1, rx, ry, color, op):
        f = self.soft(color, op)
        for _ in range(count):
            s = self.r.uniform(.6, 1.3)
            self.ell(self.r.uniform(x0, x1), self.r.uniform(y0, y1), rx * s, ry * self.r.uniform(.6, 1.3), f)

    def embers(self, count, x0, y0, x1, y1, rmin=.5, rmax=1.8, bias=1.6, op=.95, drift=0):
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

    def tower(self, x, base, w, h, fill, broken=True, slits=0, lit="#ffb866"):
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

    def figure(self, x, y, h, fill):
        """A cloaked person standing at (x, y)."""
        s = h / 100.0
        flip = self.r.choice((-1, 1))
        body = self.r.choice(PEOPLE)
        self.path(body, fill, 'transform="translate(%s %s) scale(%s %s)"' % (n(x), n(y), "%.4f" % (s * flip), "%.4f" % s))

    def pine(self, x, y, h, fill):
        w = h * .22
        pts = [(x, y - h)]
        left = []
        for i in range(1, 6):
            yy = y - h + h * .9 * i / 5
            ww = w * i / 5
            pts += [(x + ww * self.r.uniform(.9, 1.15), yy), (x + ww * .55, yy - h * .03)]
            left += [(x - ww * self.r.uniform(.9, 1.15), yy), (x - ww * .55, yy - h * .03)]
        self.poly(pts + [(x + h * .02, y - h * .1), (x + h * .02, y), (x - h * .02, y), (x - h * .02, y - h * .1)]
                  + left[::-1], fill)

    def vignette(self, op=.6, color="#05070d"):
        self.rect(0, 0, self.w, self.h, self.rad(
            [(0, color, 0), (.55, color, 0), (.8, color, op * .4), (1, color, op)], .5, .5, .75))

    def flame(self, cx, cy, size, fill, inner=None, wake=None, extra=""):
        s = size / 100.0
        self.add('<g transform="translate(%s %s) scale(%s)"%s>' % (
            n(cx - 50 * s), n(cy - 50 * s), "%.4f" % s, " " + extra if extra else ""))
        self.path(FLAME, fill)
        if inner:
            self.path(FLAME_IN, inner)
        if wake:
            self.path(WAKE, "none", 'stroke="%s" stroke-width="6" stroke-linecap="round"' % wake)
        self.add("</g>")

    def text(self, s, x, y, size, fill, style="Black", spacing=0.0, anchor="middle", extra=""):
        d, width = lettering(s, x, y, size, style, spacing, anchor)
        self.path(d, fill, extra)
        return width
