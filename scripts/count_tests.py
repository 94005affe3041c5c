"""Counts the test functions that ran and prints "N passed, N failed": count_tests.py FOLDER

The folder holds CTest's own list (ctest.junit.xml) and, for each test of the toolkit, its log
(NAME.xml). A test without a log, such as a check of the sources, counts as one function. Where
functions were skipped, ", N skipped" follows, and a line before says why, where a check told it; one
that was skipped for some of its data only has passed. Each failure has a line before, since the end of
a long log is all that is often seen. Ends with 1 when one failed or none ran.
"""

from __future__ import annotations

import pathlib
import sys
import xml.etree.ElementTree as ElementTree
from collections import Counter
from collections.abc import Iterator

# The toolkit runs these around the test functions; they count only when they fail.
AROUND = {"initTestCase", "cleanupTestCase"}
FAILING = {"fail", "xpass"}


def outcome_of(function: ElementTree.Element) -> str:
    kinds = {incident.get("type") for incident in function.iter("Incident")}
    if kinds & FAILING:
        return "failed"
    skips = any(message.get("type") == "skip" for message in function.iter("Message"))
    return "skipped" if skips and not kinds else "passed"


def functions(log: pathlib.Path) -> Iterator[str]:
    """The outcome of each function in one log of the toolkit."""
    for function in ElementTree.parse(log).getroot().iter("TestFunction"):
        outcome = outcome_of(function)
        if function.get("name") not in AROUND or outcome == "failed":
            yield outcome


def outcomes(case: ElementTree.Element, folder: pathlib.Path) -> Counter[str]:
    """How often each outcome came in one CTest entry."""
    succeeded = case.get("status") == "run"
    log = folder / f"{case.get('name')}.xml"
    try:
        found = Counter(functions(log))
    except ElementTree.ParseError:
        print(f"{case.get('name')}: its log is cut short")
        return Counter(failed=1)
    except FileNotFoundError:
        if case.get("status") in ("notrun", "disabled"):
            return Counter(skipped=1)
        return Counter(passed=1) if succeeded else Counter(failed=1)
    if not succeeded and not found["failed"]:
        found["failed"] = 1
    return found


def failures(case: ElementTree.Element, folder: pathlib.Path) -> list[str]:
    """The functions of one CTest entry that failed, as far as its log tells."""
    try:
        root = ElementTree.parse(folder / f"{case.get('name')}.xml").getroot()
    except (FileNotFoundError, ElementTree.ParseError):
        return []
    return [
        str(each.get("name")) for each in root.iter("TestFunction") if outcome_of(each) == "failed"
    ]


def reasons(case: ElementTree.Element) -> Iterator[str]:
    """Why it was skipped, in the test's own words, which CTest keeps to itself."""
    for line in (case.findtext("system-out") or "").splitlines():
        if case.get("status") == "notrun" and line.startswith("Skipped: "):
            yield f"{case.get('name')} is skipped: {line.removeprefix('Skipped: ')}"


def main(folder: pathlib.Path) -> int:
    total: Counter[str] = Counter()
    for case in ElementTree.parse(folder / "ctest.junit.xml").getroot().iter("testcase"):
        found = outcomes(case, folder)
        if found["failed"]:
            print(f"{case.get('name')} failed: {', '.join(failures(case, folder)) or 'as a whole'}")
        total += found
        for reason in reasons(case):
            print(reason)
    line = f"{total['passed']} passed, {total['failed']} failed"
    print(f"{line}, {total['skipped']} skipped" if total["skipped"] else line)
    return 0 if total["passed"] and not total["failed"] else 1


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
