"""Reads the Designer file: form.py testform.ui images.qrc testform.h

Names are unique, every picture is in the resource list, every button that has a slot or hover
feedback is there, and the areas that must lie above others do.
"""

from __future__ import annotations

import re
import sys
import xml.etree.ElementTree as ElementTree

WATCHED = """btnFacebook btnDiscord btnPlay btnPlay_2 btnDownload btnUpdate btnNews btnHome btnNews_2
btnHome_2 btnNewsBig btnNewsMedium1 btnNewsMedium2 btnNewsSmall1 btnNewsSmall2 btnNewsSmall3
btnRight btnLeft btnClose btnFullscreen btnMinimize btnSelectServer""".split()

# (parent, lower, upper)
ABOVE = [
    ("mainwindow", "backgroundImage", "_menubar"),
    ("mainwindow", "_menubar", "contents"),
    ("mainwindow", "contents", "serverButtonsGroup"),
    ("contents", "contentHome", "contentNews"),
    ("_menubar", "btnClose_", "btnClose"),
    ("_menubar", "btnFullscreen_", "btnFullscreen"),
    ("_menubar", "btnMinimize_", "btnMinimize"),
    ("homeNewsImage", "homeNewsImageBackground2", "homeNewsImageBackground"),
    ("newsBig", "newsBigBackground", "downSection"),
    ("newsMedium2", "downSection_3", "titleNewsMedium2"),
    ("contentNews", "newsBig", "btnNewsBig"),
    ("contentHome", "homeNewsImage", "btnHomeNews"),
]


def stacking(widget: ElementTree.Element) -> list[str]:
    """Names of the children from the lowest to the topmost: creation order, then raises."""
    order = [child.get("name", "") for child in widget.findall("widget")]
    for raised in widget.findall("zorder"):
        name = raised.text or ""
        order.remove(name)
        order.append(name)
    return order


def main(form_file: str, resource_file: str, header_file: str) -> int:
    problems = []
    form = ElementTree.parse(form_file)
    widgets = list(form.iter("widget"))
    names = [widget.get("name", "") for widget in widgets]
    problems += [f"{name} is there twice" for name in sorted({n for n in names if names.count(n) > 1})]
    problems += [f"watched button {name} is missing" for name in WATCHED if name not in names]

    resources = set()
    for resource in ElementTree.parse(resource_file).iter("qresource"):
        prefix = resource.get("prefix", "").rstrip("/")
        for entry in resource.iter("file"):
            resources.add(f":{prefix}/{entry.get('alias') or entry.text}")
    sheets = "".join(form.getroot().itertext())
    pictures = set(re.findall(r'url\("?(:[^")]+)"?\)', sheets))
    if len(pictures) < 20:
        problems.append(f"only {len(pictures)} pictures found in the style sheets")
    problems += [f"{picture} is not in the resource list" for picture in sorted(pictures - resources)]

    with open(header_file, encoding="utf-8") as header:
        slots = re.findall(r"void on_(\w+)_clicked\(\)", header.read())
    if len(slots) != 23:
        problems.append(f"{len(slots)} slots connected by name instead of 23")
    problems += [f"slot for {name}, which is missing" for name in slots if name not in names]

    by_name = {widget.get("name", ""): widget for widget in widgets}
    for parent, lower, upper in ABOVE:
        order = stacking(by_name[parent])
        if order.index(lower) > order.index(upper):
            problems.append(f"{upper} must lie above {lower}")

    for problem in problems:
        print(f"{form_file}: {problem}")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
