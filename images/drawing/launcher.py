"""Pictures of the launcher itself."""
from __future__ import annotations

import math
from collections.abc import Sequence

from kit import Point, Scene, Stop, n

NIGHT: tuple[Stop, ...] = ((0, "#080b15"), (.4, "#0f1424"), (.7, "#1b2140"), (1, "#242040"))


# ------------------------------------------------------------ window scene

# Where the form writes on the picture, in its own pixels.
TEXTS: list[tuple[float, float, float, float]] = [(85, 52, 330, 94), (440, 10, 900, 56), (454, 97, 800, 330), (60, 484, 420, 512),
         (205, 418, 346, 458), (488, 418, 630, 458), (770, 418, 912, 458)]
PANEL_TEXTS: list[tuple[float, float, float, float]] = [(270, 250, 730, 300), (704, 526, 955, 556)]


def window_scene(name: str, dark: bool) -> None:
    s = Scene(974, 571, 12)
    s.quiet = PANEL_TEXTS if dark else TEXTS
    k = .6 if dark else 1
    s.sky((0, "#05070e"), (.16, "#090c17"), (.38, "#0e1323"), (.56, "#161c34"), (.66, "#1f2440"), (1, "#1f2440"))
    s.stars(230, 340, .85)
    if not dark:
        constellation(s, 229.5, 232, 1.55)
    # a veil of ash across the sky, then the smoke above the fire, lit from below
    s.cloud(.0022, .0075, 7, "#39446e", 1.7, .62, s.rad(
        [(0, "#ffffff", .5), (.5, "#ffffff", .3), (1, "#ffffff", 0)], 330, 150, 520, user=True), 5)
    s.glow(905, 400, 420, 210, "#ff7a2f", .26 * k)
    s.cloud(.0042, .0085, 23, "#0a0d18", 3.4, 1.35, s.rad(
        [(0, "#ffffff", .95), (.45, "#ffffff", .7), (1, "#ffffff", 0)], 900, 190, 330, user=True), 5)
    s.cloud(.0050, .0110, 31, "#c8602c", 2.6, 1.22, s.rad(
        [(0, "#ffffff", .55 * k), (.4, "#ffffff", .28 * k), (1, "#ffffff", 0)], 915, 360, 250, user=True), 5)
    s.glow(918, 420, 250, 210, "#ff7a2f", .40 * k)
    s.glow(918, 410, 130, 120, "#ff9a4d", .40 * k)
    # the ridges: the farther, the more of the night's haze lies before them
    def rock(y0: float, y1: float, op: float) -> str:
        return s.lin([(0, "#ffffff", 0), (y0, "#ffffff", 0), (y0 + .02, "#ffffff", op), (y1, "#ffffff", 0), (1, "#ffffff", 0)])

    s.ridge(362, 312, 66, "#1b2140", "#2a2c4c", 96, steps=10, rough=.58, rim=(930, 330, 330, "#ffb061", .4 * k))
    s.cloud(.0160, .0260, 17, "#0d1126", 3.6, 1.7, rock(.50, .72, .42), 5)
    s.fog(400, 40, "#4a5080", .15)
    s.ridge(404, 368, 48, "#12162c", "#1d2038", 70, steps=10, rough=.58, rim=(930, 390, 300, "#ff9a55", .55 * k))
    s.cloud(.0200, .0340, 19, "#090c1a", 3.6, 1.7, rock(.58, .76, .6), 5)
    s.fog(428, 26, "#363c62", .16)
    s.glow(930, 420, 190, 66, "#ff7a2f", .40 * k)
    citadel(s, k)
    s.ridge(418, 422, 14, "#0c1020", "#090c16", 40, steps=10, rough=.6, rim=(950, 424, 250, "#ff9a55", .65 * k))
    plain(s, k)
    wake(s, k)
    # sparks rise from the wake beside the text, never on it
    s.embers(74, 826, 110, 974, 470, .4, 1.7, 1.15, .95, 16)
    s.embers(60, 500, 455, 974, 566, .4, 1.6, 1.0, .95, 12)
    s.embers(26, 0, 512, 520, 568, .4, 1.3, 1.0, .8, 12)
    s.rect(0, 0, 974, 110, s.lin([(0, "#04060c", .75), (.6, "#04060c", .35), (1, "#04060c", 0)]))
    s.rect(0, 0, 974, 571, s.rad([(0, "#04060c", 0), (.62, "#04060c", 0), (1, "#04060c", .55)], .56, .56, .72))
    if dark:
        s.rect(0, 0, 974, 571, "#060810", 'opacity="0.34"')
        s.rect(0, 0, 974, 571, s.rad([(0, "#060810", .5), (.6, "#060810", .3), (1, "#060810", 0)], .46, .5, .62))
    s.save(name)


def constellation(s: Scene, cx: float, cy: float, k: float) -> None:
    """The sign of the game among the stars, where the slide's frame stands empty until news arrive."""
    outer = [(53, 2), (60, 24), (76, 40), (83, 61), (80, 76), (70, 84), (50, 80), (30, 84), (20, 74), (17, 58), (25, 38), (31, 24), (40, 46), (53, 2)]
    inner = [(52, 43), (58, 58), (67, 72), (65.5, 79), (50, 76), (34.5, 79), (33, 70), (43.5, 53), (49.5, 62), (52, 43)]

    def at(pts: Sequence[Point]) -> list[Point]:
        return [(cx + (x - 50) * k, cy + (y - 48) * k) for x, y in pts]

    for pts, op in ((at(outer), .26), (at(inner), .2)):
        s.path("M" + "L".join("%s %s" % (n(x), n(y)) for x, y in pts), "none",
               'stroke="#aab6e6" stroke-opacity="%s" stroke-width="0.8"' % n(op))
        for i, (x, y) in enumerate(pts[:-1]):
            s.glow(x, y, 6, 6, "#c9d4ff", .35)
            s.add('<circle cx="%s" cy="%s" r="%s" fill="#eef2ff" opacity="%s"/>' % (n(x), n(y), n(1.3 if i % 3 == 0 else .9), n(.5 + op)))


def spire(s: Scene, x: float, base: float, w: float, h: float, fill: str, top: Sequence[Point],
          rim: tuple[str, float] | None = None) -> None:
    """A ruined tower that narrows by setbacks; rim: the glow that climbs its edges."""
    l, r, t = x - w / 2, x + w / 2, base - h
    a, b = w * .10, w * .20
    left = [(l - w * .10, base), (l, base - h * .10), (l, base - h * .50), (l + a, base - h * .53), (l + a, t + h * .16)]
    right = [(r - a, t + h * .19), (r - a, base - h * .50), (r, base - h * .47), (r, base - h * .10), (r + w * .10, base)]
    crown = [(l + a + (r - l - 2 * a) * u, t + h * v) for u, v in top]
    s.poly(left + crown + right, fill)
    if rim:
        color, op = rim
        g = s.lin([(0, color, 0), (.45, color, 0), (1, color, op)], 0, t, 0, base, user=True)
        for pts in (left, right):
            s.path("M" + "L".join("%s %s" % (n(px), n(py)) for px, py in pts), "none",
                   'stroke="%s" stroke-width="1.1" stroke-linejoin="round"' % g)
    for u in (.5,):
        s.path("M%s %sV%s" % (n(l + b + (r - l - 2 * b) * u), n(t + h * .3), n(base)), "none",
               'stroke="#000000" stroke-opacity="0.22" stroke-width="%s"' % n(w * .16))


BROKEN: tuple[tuple[Point, ...], ...] = (
    ((0, .10), (.10, .06), (.18, .09), (.30, 0), (.40, .05), (.52, .03), (.62, .10), (.78, .08), (.88, .16), (1, .17)),
    ((0, .02), (.14, .05), (.22, 0), (.36, .08), (.50, .06), (.66, .12), (.80, .10), (1, .20)),
    ((0, .14), (.16, .12), (.30, .04), (.44, .07), (.56, 0), (.64, .06), (.80, .05), (.90, .12), (1, .14)),
)


def citadel(s: Scene, k: float) -> None:
    """What is left of the citadel, on its crag above the wake; lit from the ground up."""
    far = s.lin([(0, "#1a1f3a"), (.7, "#251f34"), (1, "#4a2c30")], 0, 220, 0, 440, user=True)
    mid = s.lin([(0, "#10142a"), (.6, "#15152a"), (1, "#33202a")], 0, 170, 0, 440, user=True)
    near = s.lin([(0, "#0a0d1a"), (.6, "#0c0e1a"), (1, "#1c1418")], 0, 150, 0, 440, user=True)
    for x, w, h, top in ((846, 15, 92, 1), (866, 12, 128, 0), (968, 16, 150, 2)):
        spire(s, x, 440, w, h, far, BROKEN[top])
    s.glow(918, 430, 90, 90, "#ff7a2f", .5 * k)
    for x, w, h, top in ((858, 20, 74, 2), (884, 19, 178, 1), (951, 22, 196, 0)):
        spire(s, x, 440, w, h, mid, BROKEN[top], ("#ff8a3c", .7 * k))
    # the keep with its great spire
    spire(s, 918, 440, 30, 268, near, BROKEN[2], ("#ff9a4d", .95 * k))
    s.path("M895 440V352L901 344L905 350L907 338H929L932 349L937 343L941 352V440Z", near)
    # a bridge that once joined the towers, and its fallen half
    s.path("M884 330H905V336Q897 335 893 344Q889 336 884 337ZM941 318H952V326Q947 326 944 332L941 330Z", near)
    # the crag
    s.path("M792 446L812 432L824 434L836 420L850 423L862 408L876 412L890 402H948L956 408L966 404L982 414V460H792Z", near)
    # the gate, burning behind its arch, and slits of the same fire
    fire = s.lin([(0, "#ff7a2f"), (1, "#ffe0ae")])
    arch = "M912 402.500V388Q912 377 918 371Q924 377 924 388V402.500Z"
    s.path(arch, fire, 'opacity="%s"' % n(.95 * k))
    s.glow(918, 392, 34, 40, "#ff8a3c", .75 * k)
    for x, y, h in ((918, 300, 8), (918, 324, 7), (915, 262, 6), (884, 316, 6), (951, 300, 7), (951, 338, 6), (886, 352, 5), (948, 276, 5), (858, 392, 4)):
        s.path("M%s %sq.800 -2.200 1.600 0v%sh-1.600Z" % (n(x - .8), n(y), n(h * .8)), fire, 'opacity="%s"' % n(.85 * k))
        s.glow(x, y + h / 2, 6, 9, "#ff7a2f", .45 * k)
    # light along the crag's upper edge
    s.path("M836 420L850 423L862 408L876 412L890 402H948L956 408L966 404L982 414", "none",
           'stroke="%s" stroke-width="1.2" stroke-linejoin="round"' % s.rad(
               [(0, "#ffd08a", .95 * k), (.6, "#ff8a3c", .5 * k), (1, "#ff7a2f", 0)], 920, 404, 86, user=True))


def plain(s: Scene, k: float) -> None:
    """The burnt plain before the ridges: near black where the progress stands."""
    s.rect(0, 450, 974, 121, s.lin([(0, "#0a0d18", 0), (.3, "#090b14"), (1, "#06070c")]))
    s.cloud(.0090, .0500, 5, "#1d2338", 2.0, .85, s.lin(
        [(0, "#ffffff", 0), (.80, "#ffffff", 0), (.88, "#ffffff", .5), (1, "#ffffff", .15)]), 4)


def wake(s: Scene, k: float) -> None:
    """The wake of embers: from the gate down to the left, past the button to the lower edge."""
    upper = [(914, 402), (926, 414), (948, 432), (948, 452), (926, 470), (880, 486), (800, 506), (700, 526), (590, 541), (470, 553), (330, 566)]
    lower = [(922, 402), (938, 414), (962, 433), (966, 454), (956, 474), (930, 496), (872, 524), (800, 552), (740, 575), (600, 585), (330, 585)]

    def smooth(pts: Sequence[Point]) -> str:
        d = "M%s %s" % (n(pts[0][0]), n(pts[0][1]))
        for (ax, ay), (bx, by) in zip(pts[1:], pts[2:]):
            d += "Q%s %s %s %s" % (n(ax), n(ay), n((ax + bx) / 2), n((ay + by) / 2))
        return d + "L%s %s" % (n(pts[-1][0]), n(pts[-1][1]))

    d = smooth(upper) + "L" + smooth(lower[::-1])[1:] + "Z"
    along = s.lin([(0, "#ff7a2f", 0), (.25, "#e0501c", .30 * k), (.6, "#ff7a2f", .55 * k), (.86, "#ff6a22", .75 * k), (1, "#ff7a2f", .9 * k)],
                  330, 570, 940, 430, user=True)
    s.path(d, along, 'filter="%s" opacity="0.85"' % s.blur(16))
    s.path(d, along, 'filter="%s" opacity="0.55"' % s.blur(5))
    # the hot core, then the crust that floats on it: the glow is seen in its cracks
    s.path(d, s.lin([(0, "#ffb061", 0), (.5, "#ff8a3c", .10 * k), (.8, "#ff7a2f", .6 * k), (1, "#ff9440", .95 * k)],
                    330, 570, 940, 430, user=True), 'filter="%s"' % s.blur(2.5))
    c = s.id()
    s.defs.append('<clipPath id="%s"><path d="%s"/></clipPath>' % (c, d))
    s.add('<g clip-path="url(#%s)">' % c)
    s.cloud(.0210, .1050, 11, "#0b0810", 9.0, 4.0, s.lin([(0, "#ffffff", .95), (.55, "#ffffff", .9), (.9, "#ffffff", .8), (1, "#ffffff", .4)],
                                                         330, 570, 940, 430, user=True), 3)
    s.cloud(.0600, .2600, 13, "#1a0c0a", 8.0, 3.9, s.lin([(0, "#ffffff", .9), (1, "#ffffff", .5)]), 2)
    s.add("</g>")
    s.glow(820, 560, 380, 60, "#ff7a2f", .34 * k)
    # shore: stones before the light
    rocks(s, 563, 9, "#05060b")


def rocks(s: Scene, y: float, amp: float, fill: str) -> None:
    """A broken foreground edge of slabs."""
    x: float = -10
    pts: list[Point] = [(-10, s.h + 5)]
    while x < s.w + 10:
        step = s.r.uniform(8, 34)
        top = y - amp * s.r.random() ** 2 + 3 * math.sin(x / 90.0)
        pts += [(x, top + s.r.uniform(0, 3)), (x + step * .7, top + s.r.uniform(-2, 2))]
        x += step
    s.poly(pts + [(s.w + 10, s.h + 5)], fill)


# ------------------------------------------------------------------ glyphs

def glyphs() -> None:
    s = Scene(25, 25)
    s.path("M3.500 3.500L21.500 21.500M21.500 3.500L3.500 21.500", "none",
           'stroke="#e9ecf5" stroke-width="3.4" stroke-linecap="round"')
    s.save("buttonClose")
    s = Scene(10, 8)
    s.path("M0 0H10V8H0ZM1.200 2.400V6.800H8.800V2.400Z", "#e9ecf5", 'fill-rule="evenodd"')
    s.save("buttonFullScreen")
    s = Scene(9, 3)
    s.rect(0, .5, 9, 2, "#e9ecf5", 'rx="0.6"')
    s.save("buttonMinimize")
    for name, d in (("leftArrow", "M9.200 5L3 17L9.200 29"), ("rightArrow", "M2.800 5L9 17L2.800 29")):
        s = Scene(12, 34)
        s.path(d, "none", 'stroke="#05070d" stroke-opacity="0.55" stroke-width="4.6" stroke-linecap="round" stroke-linejoin="round"')
        s.path(d, "none", 'stroke="#f3f5fb" stroke-width="2.4" stroke-linecap="round" stroke-linejoin="round"')
        s.save(name)
    for name, fill, ring in (("slideActive", "#0794d0", "#bfe9ff"), ("slidePassive", "#8b90a0", "#3a3f50")):
        s = Scene(9, 9)
        s.add('<circle cx="4.5" cy="4.5" r="3.7" fill="%s" stroke="%s" stroke-width="0.9"/>' % (fill, ring))
        s.save(name)

    heart = "M20 25.500C14 21.500 12.200 18.800 12.200 16.200C12.200 13.800 14 12.200 16 12.200C17.700 12.200 19.200 13.200 20 14.700C20.800 13.200 22.300 12.200 24 12.200C26 12.200 27.800 13.800 27.800 16.200C27.800 18.800 26 21.500 20 25.500Z"
    bubble = "M9.500 5.500H30.500Q35 5.500 35 10V26Q35 30.500 30.500 30.500H19.500L12 36.500V30.500H9.500Q5 30.500 5 26V10Q5 5.500 9.500 5.500Z"
    for name, hover in (("facebook", False), ("facebookHover", True)):
        s = Scene(40, 40)
        if hover:
            s.glow(20, 19, 20, 20, "#ff7a2f", .55)
            s.path(bubble, s.lin([(0, "#ffb866"), (1, "#f4692a")]))
            s.path(heart, "#2a0f08")
        else:
            s.path(bubble, "#141a2b", 'stroke="#c9cfdf" stroke-width="2.2" stroke-linejoin="round"')
            s.path(heart, "#c9cfdf")
        s.save(name)
    b1 = "M7.500 8H24.500Q28 8 28 11.500V21.500Q28 25 24.500 25H16L9.500 30.500V25H7.500Q4 25 4 21.500V11.500Q4 8 7.500 8Z"
    b2 = "M19.500 18.500H32.500Q36 18.500 36 22V31Q36 34.500 32.500 34.500H31.500V39.500L25.500 34.500H19.500Q16 34.500 16 31V22Q16 18.500 19.500 18.500Z"
    for name, hover in (("discord", False), ("discordHover", True)):
        s = Scene(40, 45)
        if hover:
            s.glow(20, 23, 20, 22, "#ff7a2f", .55)
            s.path(b1, s.lin([(0, "#a8481f"), (1, "#7a2e14")]), 'stroke="#ffb866" stroke-width="1.6" stroke-linejoin="round"')
            s.path(b2, s.lin([(0, "#ffc27a"), (1, "#f4692a")]), 'stroke="#2a0f08" stroke-width="1.6" stroke-linejoin="round"')
            dot = "#2a0f08"
        else:
            s.path(b1, "#141a2b", 'stroke="#c9cfdf" stroke-width="2.2" stroke-linejoin="round"')
            s.path(b2, "#c9cfdf", 'stroke="#0d1120" stroke-width="1.8" stroke-linejoin="round"')
            dot = "#141a2b"
        for x in (21.5, 26, 30.5):
            s.add('<circle cx="%s" cy="26.5" r="1.5" fill="%s"/>' % (n(x), dot))
        s.save(name)


# ----------------------------------------------------------------- buttons

def plate(x: float, y: float, w: float, h: float, c: float) -> str:
    return "M%s %sH%sL%s %sV%sL%s %sH%sL%s %sV%sZ" % tuple(n(v) for v in (
        x + c, y, x + w - c, x + w, y + c, y + h - c, x + w - c, y + h, x + c, x, y + h - c, y + c))


def button(name: str, label: str, state: str, solid: bool) -> None:
    """solid: the filled action button; otherwise the outlined one of the same family."""
    s = Scene(196, 81)
    x, y, w, h, c = 13, 11, 170, 59, 11
    p = plate(x, y, w, h, c)
    inner = plate(x + 4, y + 4, w - 8, h - 8, c - 2)
    if state == "-disabled":
        s.path(p, "#1b1f2c", 'stroke="#383e4f" stroke-width="1.5"')
        letters, mark, line = "#697085", "#454b5d", "#2a2f3f"
    else:
        hover = state == "-hover"
        glow = s.blur(4 if hover else 2.6)
        s.path(plate(x + 2, y + 2, w - 4, h - 4, c), "#ff7a2f", 'opacity="%s" filter="%s"' % ("0.95" if hover else "0.5", glow))
        if solid:
            fill = [(0, "#ffd79a"), (.5, "#ff9c48"), (1, "#ff7428")] if hover else [(0, "#f79a52"), (.5, "#e46a26"), (1, "#b83f14")]
            s.path(p, s.lin(fill), 'stroke="%s" stroke-width="1.5"' % ("#fff0d6" if hover else "#ffc58a"))
            letters, mark, line = "#260d05", "#5e1f0a", "#fff3df"
        else:
            fill = [(0, "#7a3418"), (1, "#a84a1c")] if hover else [(0, "#161a29"), (1, "#2a1a1e")]
            s.path(p, s.lin(fill), 'stroke="%s" stroke-width="2"' % ("#ffd79a" if hover else "#ff8a3f"))
            letters, mark, line = ("#fff6e8", "#ffd79a", "#ffb061") if hover else ("#ffd9ae", "#ff8a3f", "#6e3a22")
        # upper shine
        s.path("M%s %sH%sL%s %sV%sH%sV%sZ" % tuple(n(v) for v in (
            x + c, y + 1, x + w - c, x + w - 1, y + c, y + h * .46, x + 1, y + c)),
            s.lin([(0, "#ffffff", .26 if solid else .12), (1, "#ffffff", .02)]))
    s.path(inner, "none", 'stroke="%s" stroke-opacity="%s" stroke-width="1"' % (line, ".45" if state != "-disabled" else "1"))
    # one size for all: the largest at which the longest word and its marks stand within the frame
    size = 18
    d_w = s.text(label, 98, 40.5 + size * .36, size, letters, "Black", 1.5)
    for side in (-1, 1):
        mx = 98 + side * (d_w / 2 + 10.5)
        if state == "-hover":
            # told by shape as well: the marks open into arrowheads that point at the word
            s.poly([(mx - side * 5, 40.5), (mx + side * 3, 34), (mx + side * 1, 40.5), (mx + side * 3, 47)], mark)
        elif state == "-disabled":
            s.rect(mx - 2.6, 39.8, 5.2, 1.6, mark)
        else:
            s.poly([(mx - 3.4, 40.5), (mx, 36), (mx + 3.4, 40.5), (mx, 45)], mark)
    s.save("new_buttons/" + name + state)


# ------------------------------------------------------------ news pictures

def waiting(s: Scene, seed: int, cy: float, size: float) -> None:
    """A quiet night with the sign of the game: what a player sees until a picture has arrived."""
    w, h = s.w, s.h
    k = h / 319.0
    s.sky((0, "#080b15"), (.45, "#0f1425"), (.75, "#1b2140"), (1, "#1b2140"))
    s.stars(int(30 + 70 * k), h * .62, .75, big=max(.5, k))
    s.cloud(.0042 / k, .0105 / k, seed, "#3a456f", 1.9, .72, s.rad(
        [(0, "#ffffff", .55), (1, "#ffffff", 0)], w * .4, h * .35, w * .6, user=True), 5)
    s.glow(w / 2, h * .80, w * .42, h * .40, "#ff7a2f", .42)
    s.cloud(.0080 / k, .0150 / k, seed + 1, "#c8602c", 2.6, 1.22, s.rad(
        [(0, "#ffffff", .4), (1, "#ffffff", 0)], w * .5, h * .62, w * .36, user=True), 4)
    s.ridge(h * .70, h * .64, h * .13, "#171c36", "#1f2040", h * .24, rim=(w / 2, h * .7, w * .3, "#ffb061", .55), steps=8, rough=.58)
    s.ridge(h * .78, h * .80, h * .07, "#0c1020", "#090c16", h * .12, rim=(w / 2, h * .8, w * .3, "#ff9a55", .6), steps=8, rough=.58)
    s.rect(0, h * .86, w, h * .14, s.lin([(0, "#07080f", 0), (1, "#07080f")]))
    s.glow(w / 2, cy, size * .95, size * .95, "#ff8a3c", .42)
    s.flame(w / 2, cy, size, s.lin([(0, "#ffb866"), (1, "#f2591f")]), "#ffe6bd", "#ffb061")
    s.embers(int(16 + 34 * k), w * .24, h * .08, w * .76, h * .80, .5 * max(.6, k), 1.7 * max(.6, k), 1.2, .9, 12 * k)
    s.vignette(.5)


def news(name: str, w: int, h: int, seed: int) -> None:
    s = Scene(w, h, seed)
    waiting(s, seed, h * .40, h * .42)
    s.save(name)


# ---------------------------------------------------------------- the icon

def icon() -> None:
    for name, small in (("clienticon", False), ("clienticon_small", True)):
        s = Scene(64, 64)
        s.rect(1, 1, 62, 62, s.lin([(0, "#232b49"), (1, "#0c0f1b")]), 'rx="13"')
        if not small:
            s.rect(2, 2, 60, 60, "none", 'rx="12" stroke="#ff8a3f" stroke-opacity="0.55" stroke-width="1.6"')
            s.glow(32, 36, 30, 28, "#ff7a2f", .5)
            s.flame(32, 33, 50, s.lin([(0, "#ffc27a"), (.5, "#ff8a3f"), (1, "#f2591f")]), "#ffe9c6", "#ffb061")
        else:
            # no wake: at this size it is a smear, and the flame needs its room
            s.flame(32, 36, 70, s.lin([(0, "#ffb866"), (1, "#ff6a22")]), "#fff0d0")
        s.save(name)


# ------------------------------------------------------------ small pictures

def small() -> None:
    s = Scene(244, 143, 7)
    s.sky(*NIGHT)
    s.glow(190, 130, 120, 60, "#ff7a2f", .45)
    s.ridge(112, 104, 9, "#171c31", "#2b2133", 30)
    s.ridge(128, 126, 5, "#090b13")
    s.save("bg")
    s = Scene(120, 80)
    s.rect(.75, .75, 118.5, 78.5, "#141829", 'rx="4" stroke="#3a4264" stroke-width="1.5"')
    s.save("box")
    s = Scene(196, 81)
    s.path(plate(13, 11, 170, 59, 11), s.lin([(0, "#161a29"), (1, "#2a1a1e")]), 'stroke="#ff8a3f" stroke-width="2"')
    s.save("buttonEmpty")
    s = Scene(240, 160)
    s.rect(.5, .5, 239, 159, "#0f1322", 'fill-opacity="0.85" stroke="#2b3252"')
    s.rect(1, 1, 238, 2, s.lin([(0, "#ff7a2f", 0), (.5, "#ff7a2f", .8), (1, "#ff7a2f", 0)], 0, 0, 1, 0))
    s.save("panel_content")
    s = Scene(244, 143)
    s.rect(.5, .5, 243, 142, s.lin([(0, "#0f1322"), (1, "#1b2238")]), 'rx="3" stroke="#2b3252"')
    s.save("window_headless")
    s = Scene(72, 26)
    s.path(plate(1.5, 1.5, 69, 23, 6), "#2a1a1e", 'stroke="#ff8a3f" stroke-width="1.5"')
    s.text("BETA", 36, 18, 13.5, "#ffd9ae", "Black", 1.8)
    s.save("Beta")
    s = Scene(325, 325, 21)
    waiting(s, 21, 135, 130)
    s.save("newsHome")


def main() -> None:
    window_scene("bg_new", False)
    window_scene("servers_nobutton_dark", True)
    glyphs()
    for label, solid in (("download", True), ("play", True), ("update", True), ("official", False), ("beta", False)):
        for state in ("", "-hover", "-disabled"):
            button(label, label.upper(), state, solid)
    news("newsBig", 559, 319, 31)
    news("newsMedium1", 276, 157, 32)
    news("newsMedium2", 276, 157, 37)
    for i in range(3):
        news("newsSmall%d" % (i + 1), 138, 75, 41 + 5 * i)
    icon()
    small()


if __name__ == "__main__":
    main()
