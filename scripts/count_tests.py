"""Counts the test functions that ran and prints "N passed, N failed": count_tests.py FOLDER

The folder holds CTest's own list (ctest.junit.xml) and, for each test of the toolkit, its log
(NAME.xml). A test without a log, such as a check of the sources, counts as one function.
Ends with 1 when one failed or none ran.
"""

import pathlib
import sys
import xml.etree.ElementTree as ElementTree

# The toolkit runs these around the test functions; they count only when they fail.
AROUND = {"initTestCase", "cleanupTestCase"}
FAILING = {"fail", "xpass"}


def functions(log):
    """Pairs of name and success of the functions in one log of the toolkit."""
    for function in ElementTree.parse(log).getroot().iter("TestFunction"):
        kinds = {incident.get("type") for incident in function.iter("Incident")}
        passed = not kinds & FAILING
        if function.get("name") not in AROUND or not passed:
            yield function.get("name"), passed


def outcome(case, folder):
    """Numbers of passed and failed functions of one CTest entry."""
    succeeded = case.get("status") == "run"
    log = folder / f"{case.get('name')}.xml"
    try:
        results = [passed for _, passed in functions(log)]
    except (FileNotFoundError, ElementTree.ParseError):
        # No log, or one cut short by a crash.
        return (1, 0) if succeeded else (0, 1)
    passed = sum(results)
    failed = len(results) - passed
    if not succeeded and failed == 0:
        failed = 1
    return passed, failed


def main(folder):
    folder = pathlib.Path(folder)
    passed = failed = 0
    for case in ElementTree.parse(folder / "ctest.junit.xml").getroot().iter("testcase"):
        good, bad = outcome(case, folder)
        passed += good
        failed += bad
    print(f"{passed} passed, {failed} failed")
    return 0 if passed and not failed else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
