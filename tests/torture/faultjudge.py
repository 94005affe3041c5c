"""Starts the launcher into one launch's faults and compares what it does with what it is to do."""

from __future__ import annotations

import re
from collections.abc import Iterator
from contextlib import contextmanager
from functools import partial
from pathlib import Path

from PIL import Image, ImageChops

from certificates import GOOD, REFUSED_CERTIFICATES
from faultarchive import ArchiveJudge
from faultplan import (
    DOCUMENT,
    DOCUMENT_PATH,
    ELEMENTS,
    LOGO_ELEMENTS,
    LOGOS,
    ONE_LOGO,
    PICTURES,
    Element,
    Launch,
    Picture,
)
from faultserver import (
    DRIP,
    ELSEWHERE,
    ENDLESS,
    LENGTH_TOO_SMALL,
    NOT_FOUND,
    PAGE,
    REDIRECT,
    REFUSED,
    WHOLE,
    FaultServer,
    Told,
)
from road import (
    CLOSE_BUTTON_OF_PANEL,
    CONNECTING_TEXT,
    HOME_TAB,
    NEWS_TAB,
    ROOT,
    SERVER_LABEL,
    SERVERS,
    TILES,
    RoadError,
    client_button,
)
from screen import Rect
from testbed import ARCHIVE, BASE_URL, CHOICE, SERVER, SlowError, Testbed

NEXT_SLIDE = Rect(413, 243, 12, 34)
# An archive takes half a second when nothing is wrong with it.
ARCHIVE_BYTES_PER_SECOND = 12_000_000

PLACEHOLDERS = ("newsBig", "newsMedium1", "newsMedium2", "newsSmall1", "newsSmall2", "newsSmall3")


class Judge:
    def __init__(self, testbed: Testbed, server: FaultServer):
        self.testbed = testbed
        self.server = server
        self.contents = testbed.published()
        self.launch = Launch()
        self.told = Told()
        self.verdicts: dict[str, str] = {}
        self.slow = False
        self.extraction: tuple[float, float] | None = None

    # One launch

    def run(self, launch: Launch) -> dict[str, str]:
        """What is wrong with each cell; an empty text for nothing."""
        self.launch = launch
        self.verdicts = dict.fromkeys(launch.faults or {"": ""}, "")
        self.extraction = None
        self.slow = False
        self.prepare()
        self.server.begin(self.told)
        try:
            with self.all_cells():
                self.go()
        finally:
            self.testbed.end_launch()
            self.server.end()
        return self.verdicts

    def prepare(self) -> None:
        faults = self.launch.faults
        text = self.contents[DOCUMENT_PATH].decode("utf-8")
        if self.launch.secure:
            text = text.replace(BASE_URL, BASE_URL.replace("http:", "https:"))
        for element in ELEMENTS:
            if element not in LOGO_ELEMENTS:
                address = self.server.address(element.path, faults.get(element.name, ""))
                text = re.sub(rf'"https?://[^"]*{re.escape(element.path)}"', f'"{address}"', text)
        document = text.encode("utf-8")
        paths = {element.path: faults[element.name] for element in ELEMENTS if element.name in faults}
        self.told = Told(self.contents | {DOCUMENT_PATH: document}, paths)
        self.told.speeds[ARCHIVE] = ARCHIVE_BYTES_PER_SECOND
        fault = faults.get(DOCUMENT, "")
        self.told.faults[DOCUMENT_PATH] = fault
        # In the middle of the third tile.
        self.told.cuts[DOCUMENT_PATH] = document.index(b"FROM THE STUDIO")
        if self.launch.secure:
            self.told.base_certificates = [fault or GOOD]
        if ONE_LOGO in faults:
            self.told.base_certificates = [GOOD, GOOD, faults[ONE_LOGO], GOOD]
        if LOGOS in faults:
            self.told.refuse_after = DOCUMENT_PATH
        self.testbed.fresh()

    def go(self) -> None:
        fault = self.launch.faults.get(DOCUMENT, "")
        if fault == REFUSED:
            self.server.refuse_base()
        self.testbed.start_launcher()
        self.testbed.ping()
        if fault in ENDLESS:
            self.nothing_arrives(fault)
        elif fault in (REDIRECT, NOT_FOUND):
            self.page_arrives()
        elif fault in WHOLE + (LENGTH_TOO_SMALL,):
            self.document_arrives(fault)
        else:
            self.nothing_came()
        self.testbed.check_promptness(self.extraction)
        if fault in WHOLE + (LENGTH_TOO_SMALL,):
            self.testbed.leave()
            self.testbed.check("settings.txt has the choice", self.testbed.settings() == CHOICE)
        else:
            self.testbed.leave(CLOSE_BUTTON_OF_PANEL)
            self.testbed.check("settings.txt has no choice", self.testbed.settings() == "||true|")
        self.testbed.check("nobody went where a redirect leads", not self.asked(ELSEWHERE))

    @contextmanager
    def all_cells(self) -> Iterator[None]:
        """What goes wrong here spoils the whole launch."""
        try:
            yield
        except RoadError as error:
            self.slow = isinstance(error, SlowError)
            self.testbed.explain_failure()
            for cell in self.verdicts:
                self.verdicts[cell] = self.verdicts[cell] or str(error)

    @contextmanager
    def cell(self, name: str) -> Iterator[None]:
        """What goes wrong here is one cell's, or everybody's when that element has no fault."""
        try:
            yield
        except RoadError as error:
            if name not in self.verdicts:
                raise RoadError(f"{name}, which has no fault: {error}") from error
            self.verdicts[name] = self.verdicts[name] or str(error)

    def asked(self, begin: str) -> bool:
        return any(path.startswith(begin) for path in self.told.requests)

    # The document

    def connecting_text_is_shown(self) -> bool:
        return self.testbed.text_pixels(CONNECTING_TEXT) > 100

    def stays_connecting(self) -> None:
        self.testbed.check("no server has a column", not self.testbed.columns())
        self.testbed.check("the connecting text is shown", self.connecting_text_is_shown())
        self.testbed.check("nothing is on the console", self.testbed.console() == "" and self.testbed.errors() == "")
        self.testbed.check("no other address was asked", set(self.told.requests) <= {DOCUMENT_PATH})

    def nothing_came(self) -> None:
        """The fetch ended without a document."""
        copy = self.testbed.installation / "offline.txt"
        self.testbed.wait_for("the copy of the document", copy.exists)
        self.testbed.watch()
        self.stays_connecting()
        self.testbed.check("the copy is empty", copy.read_bytes() == b"")
        if self.launch.secure:
            self.testbed.check("the server was met", self.told.handshakes)
            self.testbed.check("nothing was asked for", not self.told.requests)

    def nothing_arrives(self, fault: str) -> None:
        """The fetch does not end."""
        self.testbed.wait_for("the request", lambda: self.asked(DOCUMENT_PATH))
        if fault == DRIP:
            self.testbed.wait_for("some bytes to be on their way", lambda: self.told.dripped >= 2)
        self.testbed.watch()
        self.stays_connecting()
        self.testbed.check("there is no copy of the document", not (self.testbed.installation / "offline.txt").exists())

    def page_arrives(self) -> None:
        """Not a document, but a text with elements."""
        said = "html\nhead\nbody\np\nloading news. with buffer:0\n"
        self.testbed.wait_for("the page's elements on the console", lambda: self.testbed.console() == said)
        self.testbed.wait_for("the connecting text to go", lambda: not self.connecting_text_is_shown())
        self.testbed.check("no server has a column", not self.testbed.columns())
        self.testbed.check("nothing on standard error", self.testbed.errors() == "")
        self.testbed.check("the copy has the page", (self.testbed.installation / "offline.txt").read_bytes() == PAGE)
        for element in PICTURES:
            self.wait_for_empty(element)
        self.testbed.watch()

    def document_arrives(self, fault: str) -> None:
        document = self.told.contents[DOCUMENT_PATH]
        unread: list[Picture] = []
        if fault == LENGTH_TOO_SMALL:
            document = document[: self.told.cuts[DOCUMENT_PATH]]
            # Each tile has its own place in the document, in order.
            read = [element for element in PICTURES if f'{element.path}"'.encode() in document]
            unread = [element for element in PICTURES if element not in read]
            self.testbed.check("two tiles were read", len(read) == 5)
        text = re.sub(r"<!--.*?-->", "", document.decode("utf-8"), flags=re.S)
        names = re.findall(r"<([a-z]+)[^<>]*>", text)
        said = "".join(f"{name}\n" for name in names) + "loading news. with buffer:0\n"
        self.testbed.wait_for("the document's elements on the console", lambda: self.testbed.console() == said)
        self.testbed.wait_for("the columns of all servers", lambda: self.testbed.columns() == list(SERVERS))
        self.testbed.check("the connecting text is gone", self.testbed.panel_is_bare_beside_the_columns())
        copy = (self.testbed.installation / "offline.txt").read_bytes()
        self.testbed.check("the copy has the document", copy == document)
        self.judge_logos()
        self.judge_choice()
        self.judge_pictures(unread)
        archive_fault = self.launch.faults.get("archive", "")
        archive = ArchiveJudge(self.testbed, self.told)
        with self.cell("archive"):
            archive.judge(archive_fault, self.server.address(ARCHIVE, archive_fault), said)
        self.extraction = archive.extraction

    # Pictures

    def wait_for_empty(self, element: Element) -> None:
        cache = self.testbed.installation / element.cache
        self.testbed.wait_for(f"an empty {element.cache}", lambda: cache.exists() and cache.read_bytes() == b"")

    def wait_for_cache(self, element: Element) -> None:
        self.testbed.wait_for(
            f"{element.cache} with the picture",
            lambda: same_picture(self.testbed.installation / element.cache, self.testbed.world.folder / element.path[1:]),
        )

    def judge_file(self, element: Element, fault: str) -> bool:
        """Looks at the file of a picture; returns whether the picture is to be shown."""
        if fault in WHOLE:
            self.wait_for_cache(element)
            return True
        if fault in ENDLESS:
            self.testbed.wait_for("the request", lambda: self.asked(element.path))
            self.testbed.check(f"there is no {element.cache}", not (self.testbed.installation / element.cache).exists())
            return False
        self.wait_for_empty(element)
        asked = self.asked(element.path)
        self.testbed.check(
            "it was asked for only where the server could answer",
            asked == (fault not in (REFUSED, *REFUSED_CERTIFICATES)),
        )
        return False

    def judge_logos(self) -> None:
        faults = dict(self.launch.faults)
        if LOGOS in faults:
            for element in LOGO_ELEMENTS:
                self.judge_logo(element, LOGOS, REFUSED)
            return
        if ONE_LOGO in faults:
            self.testbed.wait_for(
                "two logos to be asked for", lambda: sum(self.asked(logo.path) for logo in LOGO_ELEMENTS) == 2
            )
        for element in LOGO_ELEMENTS:
            if ONE_LOGO in faults and not self.asked(element.path):
                self.judge_logo(element, ONE_LOGO, faults[ONE_LOGO])
            else:
                self.judge_logo(element, element.name, faults.get(element.name, ""))

    def judge_logo(self, element: Element, cell: str, fault: str) -> None:
        server = element.path[1:-4]
        with self.cell(cell):
            if self.judge_file(element, fault):
                self.testbed.wait_for(f"the logo of {server}", lambda: self.testbed.shows_logo(server))
            else:
                self.testbed.check(f"the logo of {server} is not shown", not self.testbed.shows_logo(server))
                self.testbed.check(f"the clients of {server} are", self.testbed.offered(server, 0))

    def judge_choice(self) -> None:
        testbed = self.testbed
        testbed.check("nothing is written before a choice", not testbed.settings())
        testbed.click(client_button(SERVER, 0))
        testbed.wait_for("the choice in settings.txt", lambda: testbed.settings() == CHOICE)
        testbed.wait_for_version("red")
        testbed.wait_for_buttons("download")
        fault = self.launch.faults.get(f"logo of {SERVER}", "")
        shown = testbed.screen.shows(testbed.on_screen(SERVER_LABEL), testbed.world.folder / f"{SERVER}.png")
        if LOGOS in self.launch.faults:
            testbed.check("the title strip shows no logo", not shown)
        elif ONE_LOGO not in self.launch.faults:
            with self.cell(f"logo of {SERVER}"):
                testbed.check("the title strip shows what there is of the logo", shown == (fault in WHOLE))

    def judge_pictures(self, unread: list[Picture]) -> None:
        for element in PICTURES:
            with self.cell(element.name if element not in unread else DOCUMENT):
                if element.name == "tile 1":
                    self.testbed.click(NEWS_TAB)
                elif element.page == "home" and element.name != "slide 1":
                    self.testbed.click(NEXT_SLIDE)
                if element in unread:
                    self.wait_for_empty(element)
                    shown = False
                else:
                    shown = self.judge_file(element, self.launch.faults.get(element.name, ""))
                self.testbed.wait_for(
                    f"the picture of {element.name}" if shown else f"{element.name} without its picture",
                    partial(self.shows_as_it_should, element, shown),
                )
        self.testbed.click(HOME_TAB)

    def shows_as_it_should(self, element: Picture, shown: bool) -> bool:
        return self.is_shown(element) == shown and (shown or self.is_bare(element))

    def is_shown(self, element: Picture) -> bool:
        picture = self.testbed.world.folder / element.path[1:]
        return self.testbed.screen.shows(self.testbed.on_screen(element.place), picture, self.visible_part(element))

    @staticmethod
    def visible_part(element: Picture) -> Rect:
        height = dict(TILES).get(element.place, element.place.height)
        return Rect(0, 0, element.place.width, height).inner(3)

    def is_bare(self, element: Picture) -> bool:
        """Whether a place without a picture shows what the form has there; slides have nothing."""
        if element.page == "home":
            return True
        picture = ROOT / "images" / f"{PLACEHOLDERS[int(element.name[-1]) - 1]}.png"
        return self.testbed.screen.shows(self.testbed.on_screen(element.place), picture, self.visible_part(element))


def same_picture(path: Path, original: Path) -> bool:
    """Whether a file has the original's pixels by now."""
    try:
        with Image.open(path) as seen, Image.open(original) as wanted:
            if seen.format != "PNG" or seen.size != wanted.size:
                return False
            # With the colours as strong as they are seen: what is transparent has lost its own.
            gap = ImageChops.difference(*(picture.convert("RGBA").convert("RGBa") for picture in (seen, wanted)))
            extrema: tuple[tuple[int, int], ...] = gap.getextrema()
            return max(high for _, high in extrema) <= 2
    except (OSError, SyntaxError):
        return False  # not there yet, or half written
