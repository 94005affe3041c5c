"""Which element meets which fault in which launch.

A cell is one element with one fault. Elements are fetched independently of each
other, so one launch takes several cells, about half of the elements being whole:
a fault that spoils another element shows there. Every cell is judged on its own.

Some cells cannot be had one by one. The logos come from the address that is
built in, so what happens before a path is asked for cannot be aimed at one of
them: refused connections meet all three, and a wrong certificate meets the one
that happens to ask second. These are one cell each, instead of three.
"""

from __future__ import annotations

from dataclasses import dataclass, field

from certificates import GOOD, REFUSED_CERTIFICATES
from faultserver import ANSWER_FAULTS, FAULTS, REFUSED
from road import SERVERS, SLIDE_PICTURE, TILES
from screen import Rect
from testbed import ARCHIVE

DOCUMENT = "document"
LOGOS = "logos"
ONE_LOGO = "one of the logos"
DOCUMENT_PATH = "/launcher.xml"


@dataclass(frozen=True)
class Element:
    name: str
    path: str
    # The launcher's own file; empty for the archive.
    cache: str


@dataclass(frozen=True)
class Picture(Element):
    """One that has a place on one of the launcher's pages."""

    place: Rect
    page: str


def elements() -> list[Element]:
    slide_caches = ("homeNewsImageBackground", "homeNewsImageBackground2", "homeNewsImageBackground3")
    tile_names = ("Big", "Medium1", "Medium2", "Small1", "Small2", "Small3")
    found: list[Element] = [
        Picture(f"slide {number}", f"/news/slide{number}.png", f"{cache}.png", SLIDE_PICTURE, "home")
        for number, cache in enumerate(slide_caches, start=1)
    ]
    found += [
        Picture(f"tile {number}", f"/news/tile{number}.png", f"news{name}Background.png", TILES[number - 1][0], "news")
        for number, name in enumerate(tile_names, start=1)
    ]
    found += [Element(f"logo of {server}", f"/{server}.png", f"{server}.png") for server in SERVERS]
    found.append(Element("archive", ARCHIVE, ""))
    return found


ELEMENTS = elements()
PICTURES = [element for element in ELEMENTS if isinstance(element, Picture)]
LOGO_ELEMENTS = [element for element in ELEMENTS if element.name.startswith("logo")]


@dataclass
class Launch:
    """One start of the launcher; `faults` are its cells."""

    faults: dict[str, str] = field(default_factory=dict)
    secure: bool = False

    @property
    def needs_trust(self) -> bool:
        """Without a trusted authority every certificate is refused, and for the same reason."""
        return self.secure or any(fault in REFUSED_CERTIFICATES for fault in self.faults.values())


def cell_name(element: str, fault: str) -> str:
    return f"{element}: {fault}" if fault else "nothing wrong"


def launches() -> list[Launch]:
    plan = [Launch(), Launch({DOCUMENT: GOOD}, secure=True)]
    for fault in FAULTS:
        plan.append(Launch({DOCUMENT: fault}, secure=fault in REFUSED_CERTIFICATES))
    for number in range(2 * len(FAULTS)):
        faults: dict[str, str] = {}
        for place, element in enumerate(ELEMENTS):
            # Odd elements in odd launches; neighbours have different faults.
            fault = FAULTS[(number // 2 + place) % len(FAULTS)]
            if (number + place) % 2 == 0 and (element not in LOGO_ELEMENTS or fault in ANSWER_FAULTS):
                faults[element.name] = fault
        plan.append(Launch(faults))
    plan.append(Launch({LOGOS: REFUSED}))
    plan += [Launch({ONE_LOGO: fault}, secure=True) for fault in REFUSED_CERTIFICATES]
    return plan
