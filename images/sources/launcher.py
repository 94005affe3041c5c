"""Pictures of the launcher itself."""
import math
from kit import Scene, n

NIGHT = ((0, "#0a0d18"), (.4, "#0f1424"), (.68, "#1a2038"), (.84, "#33263a"), (1, "#4a2a34"))


# ------------------------------------------------------------ window scene

def window_scene(name, dark):
    s = Scene(974, 571, 12)
    k = .55 if dark else 1
    s.sky(*NIGHT)
    s.stars(190, 360, .8)
    s.glow(870, 440, 460, 250, "#ff7a2f", .55 * k)
    s.glow(880, 455, 230, 130, "#ffb868", .55 * k)
    s.glow(120, 470, 400, 120, "#ff7a2f", .30 * k)
    # mountains: the farther, the more they drown in the light behind them
    s.ridge(386, 318, 44, "#242a48", "#6a3d3c", 150, rim=(880, 400, 300, "#ffb061", .5), steps=8, rough=.52)
    s.ridge(450, 424, 40, "#1a1f38", "#4a2c34", 120, rim=(880, 420, 330, "#ff9a55", .6), steps=8, rough=.54)
    s.fog(476, 40, "#ff7a2f", .16 * k)
    ruin(s, k)
    s.ridge(462, 474, 15, "#0e1220", "#0a0c15", 70, rim=(870, 470, 330, "#ff9a55", .7), steps=8, rough=.56)
    # embers glow in the hollow in front, below the progress bar
    s.fog(548, 44, "#ff6a22", .30 * k)
    s.glow(700, 560, 420, 46, "#ff9a45", .34 * k)
    s.glow(180, 562, 260, 36, "#ff8a3c", .26 * k)
    rocks(s, 546, 16, "#07080f")
    # sparks rise beside the text, not behind it
    s.embers(56, 806, 120, 974, 560, .5, 1.9, 1.1, .95, 10)
    s.embers(22, 560, 392, 806, 560, .5, 1.7, 1.0, .9, 10)
    s.embers(44, 0, 430, 974, 560, .5, 1.6, 1.0, .85, 20)
    s.rect(0, 0, 974, 80, s.lin([(0, "#06080f", .7), (1, "#06080f", 0)]))
    if dark:
        s.rect(0, 0, 974, 571, "#070911", 'opacity="0.55"')
    s.save(name)


def rocks(s, y, amp, fill):
    """A broken foreground edge of slabs."""
    x, pts = -10, [(-10, s.h + 5)]
    while x < s.w + 10:
        step = s.r.uniform(10, 46)
        top = y - amp * s.r.random() ** 2 + 6 * math.sin(x / 90.0)
        pts += [(x, top + s.r.uniform(0, 4)), (x + step * .7, top + s.r.uniform(-3, 3))]
        x += step
    s.poly(pts + [(s.w + 10, s.h + 5)], fill)


def ruin(s, k):
    """A burnt-out keep on its hill, lit from inside and below."""
    stone = s.lin([(0, "#0c0f1b"), (.55, "#12131f"), (1, "#2b1a20")], 0, 200, 0, 490, user=True)
    far = s.lin([(0, "#1c2036"), (1, "#5a3338")], 0, 270, 0, 470, user=True)
    lit = s.lin([(0, "#ff9a55", .05), (.5, "#ff8a45", .28), (1, "#ff8a3c", .5)], 0, 230, 0, 480, user=True)
    fire = s.lin([(0, "#ff7a2f"), (1, "#ffd08a")])
    # far part
    s.poly([(806, 470), (806, 392), (812, 384), (817, 391), (823, 372), (828, 380), (828, 470)], far)
    s.poly([(938, 470), (938, 352), (930, 352), (930, 338), (936, 338), (936, 344), (943, 344), (943, 334),
            (950, 338), (955, 330), (960, 340), (966, 346), (966, 470)], far)
    # hill
    s.path("M690 500C740 484 780 462 812 456C850 449 880 446 915 446C940 446 960 450 980 454V500Z", stone)
    # great hall: gable with a burst window
    s.path("M862 456V356L870 342L876 346L893 312L899 318L904 310L922 344L930 341L938 362V456Z"
           "M884 398C884 376 890 366 900 358C910 366 916 376 916 398L908 402V396H892V403Z"
           "M891 456V430C891 420 895 415 900 412C905 415 909 420 909 430V456Z", stone, 'fill-rule="evenodd"')
    s.path("M884 398C884 376 890 366 900 358C910 366 916 376 916 398L908 402V396H892V403Z", fire, 'opacity="%s"' % n(.85 * k))
    s.path("M891 456V430C891 420 895 415 900 412C905 415 909 420 909 430V456Z", fire, 'opacity="%s"' % n(.95 * k))
    s.path("M899 358H901V399H899ZM886 380H914V382H886Z", stone)
    s.glow(900, 386, 52, 56, "#ff8a3c", .45 * k)
    s.glow(900, 440, 44, 40, "#ff9a45", .55 * k)
    # tall broken tower
    s.path("M828 462L832 440V262L836 262V244L843 250L847 232L853 246L858 252L862 268L868 275V440L872 462Z", stone)
    s.path("M862 268L868 275V440L872 462H864L861 440Z", lit)
    s.path("M846 300q3 -8 6 0v16h-6ZM846 360q3 -8 6 0v16h-6Z", fire, 'opacity="%s"' % n(.9 * k))
    s.glow(849, 308, 16, 20, "#ff7a2f", .5 * k)
    s.glow(849, 368, 16, 20, "#ff7a2f", .5 * k)
    # stump on the right and fallen wall
    s.path("M934 462L937 446V378L942 372L948 380L955 368L962 376L974 372V462Z", stone)
    s.path("M934 462L937 446V378L942 372L943 446L942 462Z", lit)
    s.path("M952 404q4 -10 8 0v18h-8Z", fire, 'opacity="%s"' % n(.9 * k))
    s.glow(956, 412, 18, 22, "#ff7a2f", .5 * k)
    s.path("M772 474L776 452L784 446L792 450L798 440L810 444L818 436L830 440V474Z", stone)


# ------------------------------------------------------------------ glyphs

def glyphs():
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

def plate(x, y, w, h, c):
    return "M%s %sH%sL%s %sV%sL%s %sH%sL%s %sV%sZ" % tuple(n(v) for v in (
        x + c, y, x + w - c, x + w, y + c, y + h - c, x + w - c, y + h, x + c, x, y + h - c, y + c))


def button(name, label, state, solid):
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
            fill = [(0, "#ffd79a"), (.5, "#ff9c48"), (1, "#ff7428")] if hover else [(0, "#ffa85c"), (.5, "#f17a30"), (1, "#cc4b18")]
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
    size = 21 if len(label) < 8 else 18.5
    d_w = s.text(label, 98, 40.5 + size * .36, size, letters, "Black", 2.6 if len(label) < 8 else 2)
    for side in (-1, 1):
        mx = 98 + side * (d_w / 2 + 11)
        if abs(mx - 98) < w / 2 - 14:
            s.poly([(mx - 3.4, 40.5), (mx, 36), (mx + 3.4, 40.5), (mx, 45)], mark)
    s.save("new_buttons/" + name + state)


# ------------------------------------------------------------ news pictures

def pines(s, x0, x1, h, count):
    for i in range(count):
        x = x0 + (x1 - x0) * (i + s.r.uniform(-.3, .3)) / (count - 1)
        s.pine(x, h * .92, h * s.r.uniform(.2, .44), "#0d101b" if i % 2 else "#131728")


def news(name, w, h, seed, kind):
    s = Scene(w, h, seed)
    k = h / 319.0
    cx = w * (.5, .30, .70, .5, .32, .68)[kind]
    base = h * .74
    s.sky((0, "#0a0d18"), (.5, "#151a30"), (.8, "#33263a"), (1, "#54302f"))
    s.stars(int(40 + 60 * k), h * .6, .7, big=max(.5, k))
    s.glow(cx, base + 10 * k, w * .5, h * .45, "#ff7a2f", .6)
    s.ridge(h * .66, h * .6, h * .15, "#232944", "#553238", h * .3, rim=(cx, base, w * .34, "#ffb061", .45))
    s.ridge(h * .76, h * .78, h * .08, "#141829", "#2c1c28", h * .25, rim=(cx, base, w * .3, "#ff9a55", .5))
    if kind == 0:
        for dx, hh, bw in ((-205, 120, 34), (190, 150, 40), (232, 90, 26)):
            s.tower(cx + dx * k, h * .88, bw * k, hh * k, "#0e111d", slits=1)
    elif kind == 1:
        pines(s, w * .5, w, h, 15)
    elif kind == 2:
        s.tower(w * .2, h * .92, w * .1, h * .52, "#0e111d", broken=False, slits=1)
        s.tower(w * .34, h * .92, w * .07, h * .3, "#0e111d")
    elif kind == 4:
        pines(s, w * .55, w, h, 9)
    elif kind == 5:
        s.tower(w * .24, h * .92, w * .13, h * .56, "#0e111d", slits=1)
    s.ridge(h * .88, h * .87, h * .035, "#090b13", "#06070d", h * .2)
    # the brazier with the sign of the game
    f = h * (.34 if kind < 3 else .46)
    fy = h * .60
    s.glow(cx, fy, f * 1.15, f * 1.15, "#ff8a3c", .65)
    s.flame(cx, fy, f, s.lin([(0, "#ffb866"), (1, "#f2591f")]), "#ffe6bd")
    bw = f * .46
    by = fy + f * .40
    s.poly([(cx - bw, by - f * .06), (cx + bw, by - f * .06), (cx + bw * .55, by + f * .2), (cx - bw * .55, by + f * .2)], "#0b0d16",
           'stroke="#ff9a55" stroke-opacity="0.5" stroke-width="%s"' % n(max(.6, k)))
    s.poly([(cx - bw * .14, by + f * .2), (cx + bw * .14, by + f * .2), (cx + bw * .2, h), (cx - bw * .2, h)], "#0b0d16")
    s.embers(int(24 + 40 * k), cx - w * .3, h * .05, cx + w * .3, h * .7, .5 * max(.7, k), 2.0 * max(.7, k), 1.0, .95, 12 * k)
    s.vignette(.5)
    s.save(name)


# ---------------------------------------------------------------- the icon

def icon():
    for name, small in (("clienticon", False), ("clienticon_small", True)):
        s = Scene(64, 64)
        s.rect(1, 1, 62, 62, s.lin([(0, "#232b49"), (1, "#0c0f1b")]), 'rx="13"')
        if not small:
            s.rect(2, 2, 60, 60, "none", 'rx="12" stroke="#ff8a3f" stroke-opacity="0.55" stroke-width="1.6"')
            s.glow(32, 36, 30, 28, "#ff7a2f", .5)
            s.flame(32, 33, 50, s.lin([(0, "#ffc27a"), (.5, "#ff8a3f"), (1, "#f2591f")]), "#ffe9c6", "#ffb061")
        else:
            s.flame(32, 32, 62, s.lin([(0, "#ffb866"), (1, "#ff6a22")]), "#fff0d0", "#ffb061")
        s.save(name)


# ------------------------------------------------------------ small pictures

def small():
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
    s.sky((0, "#0a0d18"), (.5, "#151a30"), (.78, "#33263a"), (1, "#54302f"))
    s.stars(80, 200, .7)
    s.glow(162, 250, 190, 130, "#ff7a2f", .6)
    s.ridge(225, 215, 26, "#232944", "#442d3b", 80, rim=(162, 230, 190, "#ffb061", .7))
    s.ridge(258, 262, 14, "#141829", "#22192a", 70)
    s.ridge(292, 290, 9, "#090b13")
    s.glow(162, 165, 110, 110, "#ff8a3c", .6)
    s.flame(162, 165, 110, s.lin([(0, "#ffb866"), (1, "#f2591f")]), "#ffe6bd", "#ffb061")
    s.embers(50, 40, 20, 285, 300, .6, 2, 1, .9)
    s.vignette(.5)
    s.save("newsHome")


def main():
    window_scene("bg_new", False)
    window_scene("servers_nobutton_dark", True)
    glyphs()
    for label, solid in (("download", 1), ("play", 1), ("update", 1), ("official", 0), ("beta", 0)):
        for state in ("", "-hover", "-disabled"):
            button(label, label.upper(), state, solid)
    news("newsBig", 559, 319, 31, 0)
    news("newsMedium1", 276, 157, 32, 1)
    news("newsMedium2", 276, 157, 33, 2)
    for i in range(3):
        news("newsSmall%d" % (i + 1), 138, 75, 41 + i, 3 + i)
    icon()
    small()


if __name__ == "__main__":
    main()
