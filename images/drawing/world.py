"""Pictures of the demo world: server logos, slides and news tiles."""
from __future__ import annotations

import math

from kit import Point, Scene, Stop, n


def ramp(lo: float, hi: float, k: int = 8) -> list[Stop]:
    """Stops of a soft fade from nothing at lo to white at hi."""
    return [(lo + (hi - lo) * i / k, "#ffffff", (i / k) ** 2 * (3 - 2 * i / k)) for i in range(k + 1)]


def framed(s: Scene, scale: float, mid: float, cy: float, side: float = .3) -> None:
    """Put the scene so far into a soft frame.

    The scene is scaled, its line y = mid comes to cy.  It fades out on all
    sides; the lowest fifth of the picture stays empty.
    """
    masks = []
    for stops, x2, y2 in ((ramp(.05, side) + ramp(.95, 1 - side)[::-1], 1, 0), (ramp(0, .2) + ramp(.785, .6)[::-1], 0, 1)):
        g = s.lin(stops, 0, 0, s.w * x2, s.h * y2, user=True)
        m = s.id()
        s.defs.append('<mask id="%s" maskUnits="userSpaceOnUse" x="0" y="0" width="%s" height="%s">'
                      '<rect width="%s" height="%s" fill="%s"/></mask>' % (m, s.w, s.h, s.w, s.h, g))
        masks.append('<g mask="url(#%s)">' % m)
    s.out = masks + ['<g transform="translate(%s %s) scale(%s)">' % (
        n(s.w / 2 * (1 - scale)), n(cy - mid * scale), n(scale))] + s.out + ["</g></g></g>"]


def title(s: Scene, text: str, cy: float, size: float, fill: str, glow: str, line: str = "#ffb061") -> None:
    """A server name with a fine line below."""
    base = cy + size * .36
    b = s.blur(size * .12)
    s.text(text, s.w / 2, base, size, glow, "Black", size * .07, extra='filter="%s" opacity="0.65"' % b)
    w = s.text(text, s.w / 2, base, size, fill, "Black", size * .07,
               extra='stroke="#120a0c" stroke-width="%s" stroke-opacity="0.8" paint-order="stroke"' % n(size * .07))
    y = base + size * .3
    g = s.lin([(0, line, 0), (.5, line, .8), (1, line, 0)], s.w / 2 - w / 2, 0, s.w / 2 + w / 2, 0, user=True)
    # With four servers a logo is shown at a quarter, by leaving pixels out: a finer line would be gone.
    s.rect(s.w / 2 - w / 2, y - 2, w, 4, g)
    s.poly([(s.w / 2 - 11, y), (s.w / 2, y - 8), (s.w / 2 + 11, y), (s.w / 2, y + 8)], line)


def caption_ground(s: Scene, strip: float, lift: float) -> None:
    """Room for a caption: the scene moves up, the ground below turns near black.

    strip is the share of the height that the caption takes.
    """
    dark = "#06060b"
    s.out = ['<g transform="translate(0 %s)">' % n(-lift)] + s.out + ["</g>"]
    s.rect(0, s.h - lift - 4, s.w, lift + 4, dark)
    top = 1 - strip
    s.rect(0, 0, s.w, s.h, s.lin([(top - .12, dark, 0), (top - .08, dark, .18), (top - .04, dark, .5), (top, dark, .8),
                                  (top + .04, dark, .92), (top + .1, dark, .96), (1, dark, 1)]))


def dark_edge(s: Scene) -> None:
    """The lowest tenth of a slide sinks into the night of the window around it."""
    s.rect(0, s.h * .88, s.w, s.h * .12, s.lin([(0, "#06060b", 0), (.55, "#06060b", .75), (1, "#06060b", .95)]))


# ------------------------------------------------------------------- logos

def cinderfall() -> None:
    s = Scene(640, 300, 101)
    s.sky((0, "#0b0f1a"), (.6, "#241d30"), (1, "#4d2a2e"))
    s.stars(50, 120, .7)
    s.glow(320, 150, 260, 230, "#ff7a2f", .55)
    # the fall of embers
    s.path("M296 34L346 30L366 300H272Z", s.lin([(0, "#ffb35c", 0), (.22, "#ff9a45", .75), (1, "#ffd79a")]))
    for _ in range(70):
        t = s.r.random()
        x = 292 + 60 * t
        y = s.r.uniform(40, 230)
        ln = s.r.uniform(18, 70)
        x2 = 320 + (x - 320) * (1 + ln / 420)
        s.path("M%s %sL%s %s" % (n(x), n(y), n(x2), n(y + ln)), "none",
               'stroke="%s" stroke-opacity="%s" stroke-width="%s" stroke-linecap="round"' % (
                   s.r.choice(["#fff0d0", "#ffd08a", "#c8431a", "#7a2414"]), n(s.r.uniform(.3, .9)), n(s.r.uniform(.8, 2.4))))
    # cliffs
    for sign in (-1, 1):
        for j, (inner, col, col2) in enumerate(((48, "#33222e", "#7a3c2c"), (92, "#191724", "#3a2026"), (150, "#0d0f1a", "#150f16"))):
            pts: list[Point] = []
            top: float = 34 - 14 * j
            x = inner + 8
            y = top
            while y < 300:
                pts.append((320 + sign * x, y))
                y += s.r.uniform(12, 30)
                pts.append((320 + sign * (x + s.r.uniform(-3, 4)), y))
                x += s.r.uniform(-10, 12)
                x = max(inner - 16, min(inner + 22, x))
            outer: list[Point] = [(320 + sign * 340, 300), (320 + sign * 340, -10)]
            for i in range(9):
                ox = 334 - (334 - inner - 16) * i / 9
                outer.append((320 + sign * ox, top - 6 - ox * .12 * (3 - j) / 2 + s.r.uniform(-9, 9)))
            a, b = (320 + sign * inner, 320 + sign * (inner + 90))
            s.poly(pts + outer, s.lin([(0, col2), (1, col)], a, 0, b, 0, user=True))
    s.glow(320, 300, 210, 70, "#ffb868", .75)
    s.mist(6, 230, 280, 410, 300, 80, 18, "#ffd9a8", .25)
    s.embers(90, 190, 30, 450, 290, .7, 2.4, 1.2)
    s.ell(320, 165, 330, 96, s.soft("#05070d", .72))
    framed(s, .84, 165, 122)
    title(s, "CINDERFALL", 122, 74, s.lin([(0, "#fff6e6"), (.55, "#ffd79a"), (1, "#ff9a4d")]), "#ff6a22")
    s.save("demo/Cinderfall")


def ashenmoor() -> None:
    s = Scene(640, 300, 117)
    s.sky((0, "#10151f"), (.55, "#2a3240"), (.8, "#59606a"), (1, "#3a4048"))
    s.ell(560, 52, 27, 27, "#dfe3e6", 'opacity="0.85"')
    s.glow(560, 52, 110, 110, "#cfd8e0", .45)
    s.mist(8, 380, 40, 640, 80, 110, 8, "#10151f", .5)
    s.ridge(168, 150, 22, "#3b4450", "#6a7078", 80)
    s.ridge(198, 205, 12, "#2c343f", "#565d66", 70)
    s.fog(206, 26, "#aab3ba", .35)
    # standing stones
    for x, w, height, lean in ((70, 30, 118, -3), (128, 26, 88, 4), (184, 22, 70, -2), (470, 24, 80, 3), (522, 30, 112, -4), (584, 34, 138, 5)):
        y, h = 258, height * .82
        s.poly([(x - w / 2, y), (x - w * .46 + lean, y - h * .6), (x - w * .34 + lean * 2, y - h), (x + w * .2 + lean * 2, y - h * 1.04),
                (x + w * .44 + lean, y - h * .7), (x + w / 2, y)], s.lin([(0, "#232a35"), (1, "#141920")]))
        s.poly([(x + w * .2 + lean * 2, y - h * 1.04), (x + w * .44 + lean, y - h * .7), (x + w / 2, y), (x + w * .26, y), (x + w * .18 + lean, y - h * .7)],
               "#3f4956", 'opacity="0.6"')
        s.poly([(x - 4 + lean, y - h * .52), (x + lean, y - h * .62), (x + 4 + lean, y - h * .52), (x + lean, y - h * .42)], "#ff9a4d")
        s.glow(x + lean, y - h * .52, 26, 26, "#ff7a2f", .5)
    s.fog(250, 22, "#8d979f", .30)
    s.ridge(256, 252, 7, "#171c23", "#0b0e13", 40)
    for _ in range(150):
        left = s.r.uniform(0, 640)
        h = s.r.uniform(14, 46)
        y = 304
        b = s.r.uniform(-10, 14)
        s.path("M%s %sQ%s %s %s %s" % (n(left), n(y), n(left), n(y - h * .6), n(left + b), n(y - h)), "none",
               'stroke="#0a0d11" stroke-width="%s" stroke-linecap="round"' % n(s.r.uniform(.8, 2)))
    s.embers(26, 0, 110, 640, 290, .7, 1.9, 1, .9)
    s.ell(320, 100, 330, 90, s.soft("#05070d", .7))
    framed(s, .84, 108, 92, .37)
    title(s, "ASHENMOOR", 92, 71, s.lin([(0, "#ffffff"), (.6, "#d9dee3"), (1, "#9aa5b0")]), "#0a0d12", "#ffa45a")
    s.save("demo/Ashenmoor")


def emberreach() -> None:
    s = Scene(640, 300, 131)
    s.sky((0, "#0e1226"), (.42, "#222648"), (.64, "#5a3440"), (.76, "#ff8a3c"), (1, "#8a3a26"))
    s.stars(50, 110, .7)
    s.glow(320, 208, 250, 120, "#ffd08a", .75)
    s.ridge(196, 190, 20, "#2a2844", "#7a4038", 50)
    # water
    s.rect(0, 214, 640, 90, s.lin([(0, "#d96a30"), (.3, "#4a2a38"), (1, "#12142a")]))
    for _ in range(80):
        u = s.r.random()
        y = 217 + 80 * u * u
        w = s.r.uniform(8, 50) * (0.4 + u)
        x = 320 + s.r.gauss(0, 40 + 170 * u)
        s.rect(x - w / 2, y, w, .8 + 1.2 * u, "#ffd79a", 'rx="1" opacity="%s"' % n(s.r.uniform(.15, .7) * (1 - .5 * u)))
    # citadel at the far end of the reach
    dark = "#1c1226"
    for x, w, h in ((262, 14, 46), (284, 18, 68), (304, 16, 54), (340, 18, 60), (362, 16, 76), (384, 13, 42)):
        s.tower(x, 216, w, h, dark, broken=False)
    s.poly([(306, 216), (310, 152), (316, 146), (320, 122), (324, 146), (330, 152), (334, 216)], dark)
    s.rect(240, 190, 160, 26, dark)
    s.poly([(226, 218), (236, 198), (404, 198), (416, 218)], dark)
    for x, y in ((284, 164), (320, 160), (320, 176), (362, 156), (340, 178), (304, 178), (262, 186), (384, 188)):
        s.rect(x - 1.6, y, 3.2, 6, "#ffd08a", 'rx="1.4"')
        s.glow(x, y + 3, 9, 9, "#ffb061", .6)
    # causeway with piers, leading out of the picture
    s.poly([(300, 216), (340, 216), (420, 304), (220, 304)], "#1a1222")
    s.poly([(300, 216), (304, 216), (234, 304), (220, 304)], "#ff9a55", 'opacity="0.55"')
    s.poly([(336, 216), (340, 216), (420, 304), (406, 304)], "#ff9a55", 'opacity="0.55"')
    # headlands
    for sign in (-1, 1):
        pts: list[Point] = [(320 + sign * 330, 304), (320 + sign * 330, 60)]
        for x, y in ((306, 58), (296, 74), (270, 80), (258, 112), (236, 124), (228, 168), (208, 186), (196, 224), (170, 240), (150, 304)):
            pts.append((320 + sign * (x + s.r.uniform(-8, 8)), y + s.r.uniform(-5, 5)))
        s.poly(pts, s.lin([(0, "#150f20"), (1, "#0a0a14")]))
    s.embers(60, 60, 20, 580, 290, .7, 2.1, 1, .9)
    s.ell(320, 84, 330, 86, s.soft("#05070d", .75))
    framed(s, .84, 84, 70)
    title(s, "EMBERREACH", 70, 74, s.lin([(0, "#fffaf0"), (.55, "#ffe2b0"), (1, "#ffb061")]), "#e2501a", "#ffd08a")
    s.save("demo/Emberreach")


# ------------------------------------------------------------------ slides

def slide_gate() -> None:
    s = Scene(650, 650, 201)
    s.sky((0, "#0b0c1a"), (.5, "#1d1a33"), (1, "#4a2836"))
    s.stars(110, 330, .8)
    s.ridge(400, 380, 70, "#1f1d38", "#4a2a3a", 240)
    s.glow(325, 350, 330, 330, "#ff7a2f", .75)
    # light in the gate
    s.path("M212 560V300C212 220 262 168 325 140C388 168 438 220 438 300V560Z",
           s.rad([(0, "#fff3d8"), (.3, "#ffd08a"), (.65, "#ff8a3c"), (1, "#a8321a")], 325, 420, 300, user=True))
    for i in range(26):
        a = math.radians(-90 + s.r.uniform(-34, 34))
        r1, r2 = s.r.uniform(60, 120), s.r.uniform(150, 250)
        s.path("M%s %sL%s %s" % (n(325 + r1 * math.cos(a)), n(430 + r1 * math.sin(a)), n(325 + r2 * math.cos(a)), n(430 + r2 * math.sin(a))),
               "none", 'stroke="#fff0cf" stroke-opacity="%s" stroke-width="%s" stroke-linecap="round"' % (n(s.r.uniform(.1, .4)), n(s.r.uniform(1, 3))))
    # masonry
    stone = s.lin([(0, "#191a2b"), (.6, "#15131f"), (1, "#0d0c15")])
    s.path("M96 590V210L112 190V120L128 96L144 118V84L170 92L182 66L214 84L236 70L262 92L300 74L325 88L352 72L388 92L414 70L440 86L466 64"
           "L482 92L508 84V118L522 94L538 122V190L554 210V590H452V300C452 216 396 158 325 124C254 158 198 216 198 300V590Z", stone)
    s.path("M198 590V300C198 216 254 158 325 124C396 158 452 216 452 300V590H438V300C438 224 386 172 325 142C264 172 212 224 212 300V590Z",
           s.lin([(0, "#ffb868"), (1, "#c8501f")]), 'opacity="0.85"')
    for i in range(9):
        y = 240 + 38 * i
        for x0, x1 in ((100, 194), (456, 550)):
            s.path("M%s %sH%s" % (x0, y, x1), "none", 'stroke="#05060c" stroke-opacity="0.7" stroke-width="2"')
            for j in range(2):
                x = x0 + 28 + 38 * j + (14 if i % 2 else 0)
                s.path("M%s %sV%s" % (x, y, y + 38), "none", 'stroke="#05060c" stroke-opacity="0.7" stroke-width="2"')
    # keystone signs
    for a in range(-40, 41, 20):
        cx, cy = 325 + 2.15 * a * .82, 106 + abs(a) ** 1.75 * .075
        s.poly([(cx - 5, cy), (cx, cy - 8), (cx + 5, cy), (cx, cy + 8)], "#ffb061")
        s.glow(cx, cy, 18, 18, "#ff7a2f", .6)
    # braziers on the piers
    for x in (146, 504):
        s.path("M%s 250h36l-8 20h-20Z" % (x - 18), "#07080f", 'stroke="#ff9a55" stroke-opacity="0.6"')
        s.flame(x, 230, 42, "#ff8a3c", "#ffe6bd")
        s.glow(x, 230, 70, 70, "#ff8a3c", .6)
    # steps
    for i in range(6):
        y = 556 + 16 * i
        w = 130 + 34 * i
        s.rect(325 - w, y, 2 * w, 17, s.lin([(0, "#2e1c22"), (1, "#120d15")]))
        g = s.lin([(0, "#ffc27a", 0), (.5, "#ffc27a", .95 - .12 * i), (1, "#ffc27a", 0)], 0, 0, 1, 0)
        s.rect(325 - w, y, 2 * w, 2.4, g)
    s.path("M285 556H365L470 650H180Z", s.lin([(0, "#ffb868", .55), (1, "#ff7a2f", 0)]))
    for x, y, h in ((325, 600, 118), (270, 618, 100), (382, 622, 104)):
        s.ell(x, y, h * .34, 5, "#05060c", 'opacity="0.7"')
        s.figure(x, y, h, "#0b0a12")
    s.ridge(640, 640, 8, "#06070d")
    s.embers(130, 120, 20, 540, 600, .9, 3.2, 1.1)
    s.vignette(.6)
    dark_edge(s)
    s.save("demo/news/slide1")


def slide_dragon() -> None:
    s = Scene(650, 650, 202)
    s.sky((0, "#0a1020"), (.45, "#17274a"), (.75, "#3a3f6a"), (1, "#34305a"))
    s.stars(160, 420, .9)
    s.glow(390, 240, 300, 300, "#cfd6ea", .40)
    s.add('<circle cx="390" cy="240" r="112" fill="%s"/>' % s.rad([(0, "#f2f4fa"), (.7, "#cdd3e4"), (1, "#9aa3c0")], .42, .4, .62))
    for x, y, r in ((360, 210, 20), (424, 262, 26), (388, 300, 13), (430, 200, 11), (346, 262, 9)):
        s.ell(x, y, r, r * .9, "#7f88a6", 'opacity="0.35"')
    s.ridge(430, 470, 60, "#2c3560", "#3a3c68", 160, steps=8)
    s.fog(500, 50, "#8a90b4", .20)
    # the flier in front of the moon
    s.add('<g transform="translate(386 236) rotate(-8) scale(1.35)">')
    s.path("M-78 34C-60 30 -46 22 -34 10C-26 4 -14 1 -6 2"
           "C-16 -22 -38 -46 -74 -58C-66 -44 -64 -34 -66 -22C-56 -28 -48 -26 -42 -14C-36 -16 -30 -12 -26 -2"
           "C-34 6 -52 22 -78 34Z", "#0b0f20")
    s.path("M-30 8C-16 -4 4 -8 20 -6C30 -6 38 -14 44 -24C46 -30 52 -34 58 -33L62 -38L64 -32L76 -27C74 -23 68 -22 62 -23"
           "C58 -14 50 4 34 10C18 16 -8 16 -26 10C-44 14 -60 26 -72 44L-84 50L-78 36C-62 22 -46 12 -30 8Z", "#0b0f20")
    s.path("M2 0C2 -28 14 -62 46 -88C44 -72 48 -60 58 -50C46 -48 40 -42 40 -30C30 -30 24 -22 24 -6Z", "#10152b")
    s.path("M4 10L-4 24L-10 22M20 10L14 26L8 25", "none", 'stroke="#0b0f20" stroke-width="4" stroke-linecap="round" stroke-linejoin="round"')
    s.add('<circle cx="63" cy="-28.5" r="1.4" fill="#ffb061"/></g>')
    # the ridge: a back full of spines
    spine = [(-10 + 670 * i / 46.0, 520 - 120 * math.sin(math.pi * (i / 46.0) ** .85) + 26 * math.sin(i / 3.4)) for i in range(47)]
    pts: list[Point] = []
    for i, (px, py) in enumerate(spine[:-1]):
        hgt = (16 + 44 * math.sin(math.pi * i / 46.0)) * s.r.uniform(.75, 1.15)
        pts += [(px, py), (px + 9, py - hgt * .55), (px + 21, py - hgt), (px + 15, py - hgt * .45)] if i % 2 == 0 else [(px + 3, py)]
    body = s.lin([(0, "#141a33"), (1, "#0b0d18")], 0, 380, 0, 600, user=True)
    s.poly(pts + [(660, 520), (660, 660), (-10, 660)], body)
    for i in range(0, 46, 2):
        px, py = spine[i]
        s.path("M%s %sq14 22 30 20" % (n(px), n(py + 12)), "none", 'stroke="#3a4470" stroke-opacity="0.55" stroke-width="2"')
        s.path("M%s %sq14 22 30 20" % (n(px + 6), n(py + 40)), "none", 'stroke="#3a4470" stroke-opacity="0.32" stroke-width="2"')
    s.fog(560, 60, "#ff7a2f", .22)
    s.glow(120, 610, 240, 80, "#ff7a2f", .45)
    s.ridge(580, 560, 26, "#0a0c17", "#06070d", 80, rim=(120, 590, 260, "#ffb061", .7))
    for i in range(11):
        s.pine(330 + 34 * i + s.r.uniform(-8, 8), 620, s.r.uniform(50, 110), "#06070d")
    # watch fire
    s.glow(120, 574, 90, 90, "#ff8a3c", .75)
    s.flame(120, 566, 46, "#ff8a3c", "#ffe6bd")
    s.path("M98 588L142 582M98 582L142 588", "none", 'stroke="#05060c" stroke-width="6" stroke-linecap="round"')
    s.figure(72, 594, 62, "#05060c")
    s.figure(168, 594, 56, "#05060c")
    s.embers(60, 60, 240, 260, 580, .8, 2.6, 1.0, .95, 60)
    s.vignette(.5)
    dark_edge(s)
    s.save("demo/news/slide2")


def slide_lighthouse() -> None:
    s = Scene(650, 650, 203)
    s.sky((0, "#070a15"), (.4, "#10162c"), (.62, "#232c52"), (.68, "#3a4068"), (1, "#0c1020"))
    s.stars(120, 300, .8)
    lx, ly = 446, 186
    # beams
    for d, o in (("M446 186L-20 40V210Z", .75), ("M446 186L670 120V236Z", .55)):
        s.path(d, s.rad([(0, "#ffd79a", o), (.3, "#ffa45a", o * .5), (1, "#ff7a2f", 0)], lx, ly, 470, user=True))
    s.mist(10, 0, 250, 650, 380, 190, 18, "#0c1020", .45)
    # sea
    s.rect(0, 420, 650, 240, s.lin([(0, "#323a62"), (.2, "#1a2142"), (1, "#06080f")]))
    s.ridge(418, 424, 10, "#141a34", "#141a34", 10)
    s.rect(0, 426, 650, 240, s.lin([(0, "#2a3258"), (.25, "#171e3c"), (1, "#06080f")]))
    for _ in range(150):
        u = s.r.random()
        y = 430 + 220 * u ** 1.3
        w = s.r.uniform(14, 70) * (.4 + u)
        warm = s.r.random() < .55
        x = (lx - 60 + s.r.gauss(0, 26 + 60 * u)) if warm else s.r.uniform(0, 650)
        s.rect(x - w / 2, y, w, 1.2 + 2 * u, "#ffb868" if warm else "#7f8bb8", 'rx="1.5" opacity="%s"' % n(s.r.uniform(.15, .75 if warm else .4)))
    # rock
    s.poly([(290, 520), (312, 488), (340, 480), (352, 448), (380, 436), (396, 412), (430, 402), (476, 404), (504, 424), (540, 430),
            (560, 462), (600, 474), (618, 500), (664, 512), (664, 566), (612, 560), (560, 568), (500, 558), (430, 566), (372, 556), (330, 560), (296, 540)], s.lin([(0, "#171b2c"), (1, "#07080f")]))
    s.poly([(396, 412), (430, 402), (424, 440), (398, 470), (384, 520), (352, 524), (366, 470)], "#30364e", 'opacity="0.6"')
    s.ell(480, 566, 210, 16, s.soft("#04090e", .9))
    for x, y, w in ((286, 546, 60), (322, 564, 84), (404, 570, 110), (520, 568, 96), (604, 564, 70), (350, 580, 70), (470, 584, 120)):
        s.rect(x, y, w, 2.4, "#aab2d0", 'rx="1.2" opacity="0.55"')
    # house and tower
    s.poly([(486, 420), (486, 384), (512, 364), (540, 384), (540, 436)], "#0e161d")
    s.rect(505, 394, 12, 14, "#ffc27a")
    s.glow(511, 401, 30, 30, "#ff9a4d", .7)
    s.poly([(412, 412), (426, 226), (466, 226), (480, 412)], s.lin([(0, "#8a8fa0"), (.45, "#4a5068"), (1, "#171b2c")], 0, 0, 1, 0))
    for i in range(3):
        t0, t1 = .12 + .3 * i, .27 + .3 * i
        (y0, w0), (y1, w1) = ((226 + 186 * t, 20 + 14 * t) for t in (t0, t1))
        s.poly([(446 - w0, y0), (446 + w0, y0), (446 + w1, y1), (446 - w1, y1)],
               s.lin([(0, "#c8562a"), (.5, "#8a3218"), (1, "#34140f")], 0, 0, 1, 0))
    for yy in (290, 346):
        s.path("M442 %sq4 -9 8 0v14h-8Z" % yy, "#ffd08a")
    s.poly([(416, 228), (420, 216), (472, 216), (476, 228)], "#0b1218")
    s.rect(428, 166, 36, 50, "#ffe6bd")
    s.flame(446, 190, 50, "#ff8a3c", "#fff6e0")
    s.path("M428 166V216M440 166V216M452 166V216M464 166V216", "none", 'stroke="#0b1218" stroke-width="2.4"')
    s.poly([(420, 168), (430, 150), (446, 134), (462, 150), (472, 168)], "#0b1218")
    s.path("M446 136V118", "none", 'stroke="#0b1218" stroke-width="3"')
    s.glow(lx, ly, 150, 150, "#ffb061", .85)
    s.glow(lx, ly, 60, 60, "#fff0d0", .7)
    # boat
    s.path("M110 500C130 512 190 512 214 498L202 522C180 530 140 530 124 522Z", "#080d12")
    s.path("M160 502V420M164 424C196 444 200 470 196 494L164 490ZM156 434C138 456 132 474 130 492L156 490Z", "#0d161d", 'stroke="#080d12" stroke-width="3"')
    s.glow(206, 492, 30, 30, "#ff9a4d", .9)
    s.add('<circle cx="206" cy="492" r="3.500" fill="#ffe6bd"/>')
    s.poly([(-10, 660), (-10, 590), (40, 584), (70, 606), (120, 602), (150, 630), (230, 640), (300, 660)], "#05090e")
    s.embers(110, 180, 40, 560, 460, .8, 2.8, .9, .95, -160)
    s.vignette(.55, "#03070b")
    dark_edge(s)
    s.save("demo/news/slide3")


# ------------------------------------------------------------------- tiles

def tile_market() -> None:
    s = Scene(1118, 638, 301)
    s.sky((0, "#0c0f22"), (.5, "#1f1e3e"), (.8, "#33284a"), (1, "#4a3040"))
    s.stars(130, 260, .8)
    s.glow(559, 430, 620, 250, "#ff8a3c", .5)

    def house(x: float, w: float, h: float, wall: str, roof: str, base: float = 470) -> None:
        t = base - h
        s.rect(x, t, w, h + 40, wall)
        s.poly([(x - w * .1, t + 3), (x + w * .5, t - w * s.r.uniform(.5, .8)), (x + w * 1.1, t + 3)], roof)
        s.rect(x + w * .68, t - w * .45, w * .12, w * .4, roof)
        for r in range(int(h // 54)):
            for c in range(max(1, int(w // 46))):
                if s.r.random() < .6:
                    wx = x + w * (c + .5) / max(1, int(w // 46)) - 8
                    wy = t + 24 + 54 * r
                    s.rect(wx, wy, 16, 22, s.r.choice(["#ffc27a", "#ff9a4d", "#ffd79a"]), 'rx="2" opacity="0.92"')
                    s.path("M%s %sh16M%s %sv22" % (n(wx), n(wy + 10), n(wx + 8), n(wy)), "none", 'stroke="%s" stroke-width="2"' % wall)
                    s.glow(wx + 8, wy + 11, 34, 34, "#ff8a3c", .4)

    x: float = -30
    while x < 1130:
        w = s.r.uniform(70, 110)
        house(x, w, s.r.uniform(150, 270), "#251f3c", "#1b1830", 470)
        x += w * .92
    s.tower(330, 470, 54, 380, "#1d1932", broken=False, slits=3)
    s.fog(430, 70, "#ff8a45", .18)
    for x, w, h in ((-40, 150, 250), (110, 130, 190), (860, 140, 200), (1000, 160, 270)):
        house(x, w, h, "#15132a", "#0e0d1e", 490)
    # square
    s.rect(0, 482, 1118, 160, s.lin([(0, "#4a2a30"), (.3, "#2a1a26"), (1, "#0a0912")]))
    s.glow(559, 520, 480, 90, "#ffa45a", .45)
    for i in range(120):
        u = s.r.random()
        y = 490 + 145 * u
        s.ell(s.r.uniform(0, 1118), y, 8 + 14 * u, 2 + 3 * u, s.r.choice(["#0d0a14", "#ffb061"]), 'opacity="%s"' % n(s.r.uniform(.06, .22)))
    # far crowd
    for i in range(16):
        s.figure(230 + 44 * i + s.r.uniform(-14, 14), 506 + s.r.uniform(-6, 8), s.r.uniform(56, 74), s.r.choice(["#1c1426", "#241828", "#150f1e"]))

    def stall(x: float, y: float, w: float, c1: str, c2: str, kind: int) -> None:
        h = w * .78
        s.glow(x + w / 2, y - h * .38, w * .75, h * .6, "#ffb061", .6)
        s.rect(x + w * .08, y - h * .68, w * .84, h * .42, "#3a2024")
        for px in (.06, .9):
            s.rect(x + w * px, y - h * .78, w * .04, h * .78, "#120c14")
        # goods
        for j in range(9):
            gx = x + w * (.14 + .09 * j)
            gy = y - h * .31
            if kind == 0:
                s.add('<circle cx="%s" cy="%s" r="%s" fill="%s"/>' % (n(gx), n(gy), n(w * .038), s.r.choice(["#ff8a3c", "#c8431a", "#ffc27a"])))
            elif kind == 1:
                hh = h * s.r.uniform(.1, .2)
                s.rect(gx - w * .02, gy - hh + w * .03, w * .042, hh, s.r.choice(["#4f8a8a", "#7a5aa0", "#c8562a"]), 'rx="3"')
            else:
                s.poly([(gx - w * .03, gy + 6), (gx, gy - h * .14), (gx + w * .03, gy + 6)], s.r.choice(["#7fb0c8", "#b08ad0", "#ffd08a"]))
        s.figure(x + w * .5, y - h * .2, h * .58, "#1a1018")
        s.rect(x, y - h * .28, w, h * .28, s.lin([(0, "#5a2e22"), (1, "#1c1018")]), 'rx="3"')
        for j in range(1, 6):
            s.path("M%s %sV%s" % (n(x + w * j / 6), n(y - h * .26), n(y)), "none", 'stroke="#120c14" stroke-width="2.5" opacity="0.7"')
        s.rect(x - 3, y - h * .3, w + 6, h * .05, "#8a4a2c", 'rx="2"')
        k = 8
        for j in range(k):
            a0, a1 = x - w * .06 + w * 1.12 * j / k, x - w * .06 + w * 1.12 * (j + 1) / k
            b0, b1 = x + w * .1 + w * .8 * j / k, x + w * .1 + w * .8 * (j + 1) / k
            c = c1 if j % 2 else c2
            yt, yb = y - h * 1.02, y - h * .72
            s.path("M%s %sH%sL%s %sQ%s %s %s %sZ" % (n(b0), n(yt), n(b1), n(a1), n(yb), n((a0 + a1) / 2), n(yb + h * .12), n(a0), n(yb)), c)
        s.poly([(x + w * .1, y - h * 1.02), (x + w * .9, y - h * 1.02), (x + w * 1.06, y - h * .72), (x - w * .06, y - h * .72)],
               s.lin([(0, "#05060c", .45), (1, "#05060c", 0)]))

    stall(250, 545, 180, "#a83a24", "#e8b070", 0)
    stall(690, 545, 180, "#39435c", "#d9c9a0", 1)
    stall(20, 606, 236, "#34406a", "#e0a860", 2)
    stall(866, 606, 236, "#b8521f", "#f0cf98", 0)
    # buyers
    for x, y, h in ((470, 566, 112), (516, 572, 104), (628, 570, 116), (590, 560, 80), (330, 606, 140), (398, 612, 128), (752, 612, 142), (812, 600, 120)):
        s.ell(x, y, h * .32, 5, "#05060c", 'opacity="0.6"')
        s.figure(x, y, h, "#0c0912")
    # the post in the middle of the square, with the strings of lanterns
    s.rect(555, 186, 9, 330, "#0c0912", 'rx="2"')
    s.poly([(564, 206), (628, 214), (612, 232), (628, 250), (564, 244)], "#8a2f1c")
    s.flame(585, 227, 24, "#ffb868")
    s.flame(559.5, 176, 34, "#ff8a3c", "#ffe6bd")
    s.glow(559.5, 178, 60, 60, "#ff8a3c", .6)
    for x0, y0, x1, y1, sag, k in ((-10, 130, 560, 200, 90, 9), (560, 200, 1130, 110, 90, 9), (100, 250, 1010, 250, 110, 13)):
        mx, my = (x0 + x1) / 2, (y0 + y1) / 2 + 2 * sag
        s.path("M%s %sQ%s %s %s %s" % (x0, y0, n(mx), n(my), x1, y1), "none", 'stroke="#0a0810" stroke-width="2.2"')
        for i in range(1, k):
            t = i / k
            x = (1 - t) ** 2 * x0 + 2 * t * (1 - t) * mx + t * t * x1
            y = (1 - t) ** 2 * y0 + 2 * t * (1 - t) * my + t * t * y1
            c = s.r.choice(["#ffb35c", "#ff8a3c", "#ffd79a", "#f2643a"])
            s.glow(x, y + 17, 52, 52, "#ff9a4d", .6)
            s.path("M%s %sv6" % (n(x), n(y)), "none", 'stroke="#0a0810" stroke-width="2"')
            s.ell(x, y + 18, 10, 12.5, c)
            s.ell(x, y + 19, 5, 8, "#fff3d8", 'opacity="0.85"')
            s.rect(x - 5, y + 4.5, 10, 3, "#1a1018")
            s.rect(x - 5, y + 29, 10, 3, "#1a1018")
    s.embers(60, 100, 60, 1020, 560, .8, 2.4, 1, .8)
    s.vignette(.55)
    caption_ground(s, .22, 60)
    s.save("demo/news/tile1")


def tile_forge() -> None:
    s = Scene(552, 314, 302)
    s.rect(0, 0, 552, 314, s.lin([(0, "#171219"), (1, "#2a181a")]))
    for r in range(13):
        for c in range(13):
            x, y = c * 46 - (23 if r % 2 else 0), r * 24
            s.rect(x + 1.5, y + 1.5, 43, 21, s.r.choice(["#2b1e22", "#251b20", "#302124", "#221a20"]), 'rx="2"')
    s.glow(190, 190, 330, 260, "#ff7a2f", .75)
    # hearth
    s.path("M84 270V150C84 92 132 60 190 60C248 60 296 92 296 150V270Z", "#120c10")
    for i in range(13):
        a = math.radians(180 + 180 * (i + .5) / 13)
        cx, cy = 190 + 106 * math.cos(a), 156 + 96 * math.sin(a)
        s.rect(cx - 12, cy - 14, 24, 28, "#4a3330" if i % 2 else "#3d2a2a",
               'rx="2" transform="rotate(%s %s %s)"' % (n(math.degrees(a) + 90), n(cx), n(cy)))
    s.path("M108 262V158C108 116 146 90 190 90C234 90 272 116 272 158V262Z",
           s.rad([(0, "#fff3d8"), (.35, "#ffc27a"), (.7, "#f2591f"), (1, "#5a1a10")], 190, 240, 160, user=True))
    for x, sz in ((150, 90), (232, 84), (192, 128)):
        s.flame(x, 256 - sz * .4, sz, "#ff8a3c", "#fff0cf", extra='opacity="0.9"')
    for i in range(22):
        s.ell(112 + 7.4 * i, 258 + s.r.uniform(-5, 5), s.r.uniform(6, 11), s.r.uniform(5, 8), s.r.choice(["#2a1210", "#c8431a", "#ff8a3c", "#4a1a12"]))
    s.rect(70, 262, 240, 26, "#33262a", 'rx="3"')
    s.rect(70, 262, 240, 3, "#ffb061", 'opacity="0.7"')
    # tools on the wall
    s.rect(356, 60, 170, 7, "#120d11")
    for i, x in enumerate((372, 404, 436, 468, 500)):
        s.path("M%s 64V%s" % (x, 118 + 6 * (i % 2)), "none", 'stroke="#120d11" stroke-width="4.5"')
        if i % 2 == 0:
            s.rect(x - 13, 116, 26, 13, "#120d11", 'rx="2"')
        else:
            s.path("M%s 122q-11 8 -7 22M%s 122q11 8 7 22" % (x, x), "none", 'stroke="#120d11" stroke-width="4.5" stroke-linecap="round"')
    # smith
    s.path("M470 300C464 262 468 226 470 204C474 182 492 172 508 174C502 160 508 142 524 142C540 142 546 160 538 174C552 182 560 206 560 240V314H470Z", "#0d090d")
    s.path("M484 190C462 178 446 158 440 132L452 124C462 146 478 160 500 168Z", "#0d090d")
    s.path("M436 136L470 96", "none", 'stroke="#0d090d" stroke-width="6" stroke-linecap="round"')
    s.poly([(452, 92), (470, 76), (488, 96), (470, 112)], "#0d090d")
    s.path("M482 216C462 224 444 222 424 216L428 206C446 210 462 206 480 196Z", "#0d090d")
    s.path("M486 190C462 178 447 158 441 133M473 206C468 240 468 270 474 300", "none", 'stroke="#ff9a55" stroke-opacity="0.7" stroke-width="2.2"')
    # anvil
    s.path("M322 214H442V226C428 240 408 244 402 252V270H424V284H340V270H362V252C352 238 322 240 296 218C306 214 314 214 322 214Z", "#0d0a0e")
    s.path("M298 217C306 214 314 214 322 214H442", "none", 'stroke="#ff9a55" stroke-width="2.2" stroke-opacity="0.9"')
    s.rect(348, 284, 68, 32, "#1c1214")
    s.rect(350, 207, 78, 7, s.lin([(0, "#fff6e0"), (.6, "#ffb868"), (1, "#a8321a")], 0, 0, 1, 0), 'rx="2"')
    s.glow(378, 208, 80, 60, "#ffb868", .85)
    for _ in range(46):
        a = math.radians(s.r.uniform(-175, -5))
        r1 = s.r.uniform(8, 60)
        r2 = r1 + s.r.uniform(6, 26)
        s.path("M%s %sL%s %s" % (n(378 + r1 * math.cos(a)), n(206 + r1 * math.sin(a)), n(378 + r2 * math.cos(a)), n(206 + r2 * math.sin(a) + 3)),
               "none", 'stroke="%s" stroke-width="%s" stroke-linecap="round"' % (s.r.choice(["#fff0cf", "#ffc27a", "#ff8a3c"]), n(s.r.uniform(.8, 2))))
    s.rect(0, 296, 552, 20, "#0b080b")
    s.embers(40, 60, 20, 420, 260, .7, 2.2, 1)
    s.vignette(.6)
    caption_ground(s, .29, 46)
    s.save("demo/news/tile2")


def tile_ashstorm() -> None:
    s = Scene(552, 314, 303)
    s.sky((0, "#14161f"), (.5, "#2a2c3c"), (.8, "#5a4a50"), (1, "#2a2630"))
    s.glow(430, 150, 190, 150, "#b9c0d6", .45)
    s.add('<circle cx="430" cy="138" r="30" fill="#dfe3ee" opacity="0.7"/>')
    s.add('<g transform="rotate(-9 276 157)">')
    s.mist(16, -40, -10, 600, 130, 190, 26, "#0d0f18", .55, turned=True)
    s.mist(9, -40, 120, 600, 230, 220, 15, "#8a8690", .24, turned=True)
    s.add("</g>")
    s.ridge(210, 196, 16, "#33364a", "#4a4552", 60)
    s.fog(226, 30, "#9a8f98", .28)
    s.ridge(244, 236, 12, "#1d2030", "#2a2834", 50)

    def tree(x: float, y: float, h: float, col: str) -> None:
        def branch(x: float, y: float, a: float, ln: float, w: float) -> None:
            x2, y2 = x + ln * math.cos(a), y + ln * math.sin(a)
            s.path("M%s %sQ%s %s %s %s" % (n(x), n(y), n((x + x2) / 2 - 3), n((y + y2) / 2), n(x2), n(y2)), "none",
                   'stroke="%s" stroke-width="%s" stroke-linecap="round"' % (col, n(w)))
            if w > 1.1:
                branch(x2, y2, a - s.r.uniform(.1, .5), ln * s.r.uniform(.62, .8), w * .62)
                branch(x2, y2, a + s.r.uniform(.3, .8), ln * s.r.uniform(.55, .78), w * .58)
        branch(x, y, math.radians(-72), h * .36, h * .07)

    tree(150, 252, 120, "#191b28")
    tree(482, 250, 110, "#191b28")
    s.fog(258, 22, "#8a808a", .24)
    s.ridge(270, 264, 8, "#0d0f18", "#08090f", 40)
    tree(60, 282, 210, "#090a12")
    # traveller leaning into the wind
    s.add('<g transform="translate(300 276) skewX(12)">')
    s.figure(0, 0, 104, "#07070c")
    s.add("</g>")
    s.path("M284 204C316 190 348 208 392 190C372 216 338 220 298 242Z", "#07070c")
    s.path("M286 222L262 218V226", "none", 'stroke="#07070c" stroke-width="5" stroke-linecap="round"')
    s.glow(262, 238, 90, 70, "#ffb061", .85)
    s.rect(255, 228, 14, 18, "#ffe6bd", 'rx="3"')
    s.path("M254 228h16M254 246h16M262 228v18", "none", 'stroke="#07070c" stroke-width="2.4"')
    for _ in range(170):
        x, y, ln = s.r.uniform(-40, 560), s.r.uniform(0, 310), s.r.uniform(10, 60)
        s.path("M%s %sl%s %s" % (n(x), n(y), n(ln), n(-ln * .16)), "none", 'stroke="%s" stroke-opacity="%s" stroke-width="%s" stroke-linecap="round"' % (
            s.r.choice(["#d9dce6", "#9a9eae", "#14161f", "#ffb868"]), n(s.r.uniform(.1, .55)), n(s.r.uniform(.6, 1.8))))
    s.embers(46, 0, 20, 552, 300, .8, 2.2, 1, .9)
    s.vignette(.5, "#06070c")
    caption_ground(s, .29, 56)
    s.save("demo/news/tile3")


def tile_bridge() -> None:
    s = Scene(276, 150, 304)
    s.sky((0, "#0a0e1c"), (.6, "#1f284c"), (1, "#4a5380"))
    s.stars(40, 70, .9, big=.8)
    s.add('<circle cx="66" cy="36" r="14" fill="#e6eaf6"/>')
    s.glow(66, 36, 60, 60, "#c9d2ee", .5)
    s.ridge(84, 70, 18, "#171e3e", "#2f3862", 60)
    s.ridge(112, 120, 14, "#121830", "#202848", 40)
    s.path("M128 150C134 132 150 126 146 112L152 110C158 126 146 134 150 150Z", "#b6c0e0", 'opacity="0.7"')
    s.fog(140, 26, "#b6c0e0", .35)
    s.path("M0 62H276V74H0Z", "#0a0e1c")
    s.path("M-4 150V74H280V150H266V104C266 82 226 82 226 104V150H206V104C206 82 166 82 166 104V150H146V104C146 82 106 82 106 104V150H86V104C86 82 46 82 46 104V150H26V104C26 82 -4 84 -4 104Z", "#0a0e1c")
    for i in range(5):
        x = 16 + 60 * i
        s.path("M%s 104C%s 82 %s 82 %s 104" % (x - 30, x - 30, x + 10, x + 10), "none",
               'stroke="#262e52" stroke-width="5" stroke-dasharray="5 1.2"')
    s.path("M0 70H276", "none", 'stroke="#262e52" stroke-width="1.4"')
    for i in range(28):
        s.rect(i * 10 + 1, 58, 6, 5, "#0a0e1c")
    s.path("M0 62H276", "none", 'stroke="#8f9ac4" stroke-opacity="0.5" stroke-width="0.8"')
    for x in (36, 96, 156, 216):
        s.rect(x - 1, 44, 2, 18, "#0a0e1c")
        s.glow(x, 43, 18, 18, "#ff9a4d", .9)
        s.add('<circle cx="%d" cy="43" r="2.6" fill="#ffe0b0"/>' % x)
    for x in (120, 131, 186):
        s.figure(x, 63, 17, "#05070e")
    s.fog(146, 26, "#b6c0e0", .45)
    s.vignette(.4, "#04090f")
    s.save("demo/news/tile4")


def tile_volcano() -> None:
    s = Scene(276, 150, 305)
    s.sky((0, "#090b16"), (.5, "#1d1a30"), (1, "#5a2c2a"))
    s.glow(138, 46, 120, 80, "#ff8a3c", .8)
    for x, y, r in ((138, 26, 22), (120, 14, 20), (158, 12, 22), (104, 4, 20), (178, 0, 22), (138, 2, 26)):
        s.add('<circle cx="%d" cy="%d" r="%d" fill="%s"/>' % (x, y, r, s.rad([(0, "#4a2c30"), (.7, "#1d1826"), (1, "#12111c")], .5, .8, .75)))
    for i in range(15):
        a = math.radians(-90 + s.r.uniform(-46, 46))
        ln = s.r.uniform(24, 60)
        s.path("M138 54Q%s %s %s %s" % (n(138 + ln * .7 * math.cos(a)), n(54 + ln * 1.1 * math.sin(a)), n(138 + ln * 1.5 * math.cos(a)), n(54 + ln * .6 * math.sin(a))),
               "none", 'stroke="%s" stroke-width="%s" stroke-linecap="round" stroke-opacity="0.9"' % (s.r.choice(["#ffd08a", "#ff8a3c", "#fff0cf"]), n(s.r.uniform(.8, 1.9))))
    s.poly([(-6, 150), (30, 128), (62, 104), (92, 76), (118, 52), (126, 56), (138, 52), (150, 56), (160, 51), (186, 80), (216, 106), (248, 126), (282, 150)],
           s.lin([(0, "#1c1826"), (1, "#0a0912")]))
    s.path("M124 56C130 66 122 80 128 92C134 106 116 120 118 150H136C134 128 144 112 140 96C138 84 146 72 152 56C142 60 132 60 124 56Z",
           s.lin([(0, "#fff0cf"), (.4, "#ffb061"), (1, "#f2591f")]))
    s.path("M154 57C164 78 176 86 178 104C180 120 200 132 206 150", "none", 'stroke="#ff8a3c" stroke-width="4"')
    s.path("M122 58C108 78 100 88 92 102C86 118 66 132 58 150", "none", 'stroke="#ff7a2f" stroke-width="3"')
    s.glow(138, 58, 40, 24, "#ffd79a", .9)
    s.ridge(140, 138, 7, "#07070d", steps=6)
    s.embers(40, 30, 2, 250, 130, .6, 1.6, 1)
    s.vignette(.45, "#0a0307")
    s.save("demo/news/tile5")


def tile_camp() -> None:
    s = Scene(276, 150, 306)
    s.sky((0, "#0a0d1c"), (.55, "#1c2246"), (1, "#3a3058"))
    s.stars(90, 110, 1, big=.9)
    s.ridge(92, 84, 16, "#222850", "#383460", 40)
    for i in range(19):
        x = i * 15.5 + s.r.uniform(-4, 4)
        if 78 < x < 200:
            h = s.r.uniform(22, 34)
        else:
            h = s.r.uniform(44, 78)
        s.pine(x, 124, h, s.r.choice(["#14122c", "#1a1736"]))
    s.glow(138, 118, 130, 60, "#ff8a3c", .7)
    s.ridge(122, 121, 3, "#1c1428", "#0a0812", 26)
    for x, w, h, c in ((62, 62, 42, 0), (212, 70, 48, 1)):
        s.poly([(x - w / 2, 130), (x, 130 - h), (x + w / 2, 130)], s.lin([(0, "#7a3a2a"), (1, "#3a1c24")] if c == 0 else [(0, "#3a2a4a"), (1, "#8a4630")], 0, 0, 1, 0))
        s.poly([(x - w * .12, 130), (x, 130 - h * .8), (x + w * .12, 130)], "#ffc27a" if c else "#1a0d12")
        s.path("M%s %sl-3 -5M%s %sl3 -5" % (n(x), n(130 - h), n(x), n(130 - h)), "none", 'stroke="#0a0812" stroke-width="1.6"')
    s.flame(138, 112, 36, "#ff8a3c", "#fff0cf")
    s.path("M122 130L154 125M122 125L154 130", "none", 'stroke="#0a0610" stroke-width="4.5" stroke-linecap="round"')
    s.figure(106, 132, 30, "#0a0610")
    s.figure(168, 132, 28, "#0a0610")
    s.embers(30, 100, 20, 180, 110, .5, 1.4, 1, .95, 8)
    s.vignette(.45)
    s.save("demo/news/tile6")


def main() -> None:
    for f in (cinderfall, ashenmoor, emberreach, slide_gate, slide_dragon, slide_lighthouse,
              tile_market, tile_forge, tile_ashstorm, tile_bridge, tile_volcano, tile_camp):
        f()


if __name__ == "__main__":
    main()
