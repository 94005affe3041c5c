"""Holds the floors: each folder uses only what stands below it: floors.py CMAKELISTS

base < fetch < info, install, news < window < app. The checker uses base, fetch, the extractor and the
sources of launcher_rules. The extractor uses nothing else. From below, only files that implement the
window's own operations know the window.
"""

from __future__ import annotations

import re
import sys
from pathlib import Path

from sources import PRODUCT, own_files

FLOORS = {"base": 1, "fetch": 2, "info": 3, "install": 3, "news": 3, "window": 4, "app": 5}
WINDOW = ("window/testform.h", "ui_testform.h")
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)
OPERATION = re.compile(r"^[\w:<>*& ]*\btestform::~?\w+\(", re.M)


def rules_of(cmake: str) -> set[str]:
    """The sources of launcher_rules, without their endings."""
    listed = re.search(r"add_library\(launcher_rules STATIC([^)]*)\)", cmake)
    if listed is None:
        raise SystemExit("launcher_rules is not to be found")
    return {str(Path(name).with_suffix("")) for name in listed.group(1).split() if "$" not in name}


def is_window_operation(path: Path, text: str) -> bool:
    """A file of the window's own operations: no class or rule of its own stands in it."""
    return path.suffix == ".cpp" and not path.with_suffix(".h").exists() and OPERATION.search(text) is not None


def problem_of(path: Path, text: str, used: str, rules: set[str]) -> str | None:
    folder, used_folder = path.parts[0], Path(used).parts[0]
    if used in WINDOW:
        below = FLOORS.get(folder, 0) < FLOORS["window"]
        return "knows the window" if below and not is_window_operation(path, text) else None
    if used_folder == folder:
        return None
    if folder == "check":
        below = used_folder in ("base", "fetch", "extract") or str(Path(used).with_suffix("")) in rules
        return None if below else "is neither base, fetch, extract nor a rule"
    if folder == "extract":
        return "belongs to the launcher"
    if used_folder not in FLOORS:
        return "stands outside the floors"
    return None if FLOORS[used_folder] < FLOORS[folder] else "does not stand below it"


def main() -> int:
    rules = rules_of(Path(sys.argv[1]).read_text(encoding="utf-8"))
    patterns = [f"{folder}/*{ending}" for folder in PRODUCT for ending in (".h", ".cpp", ".cpp.in")]
    files = [Path(name) for name in own_files(*patterns)]
    problems = []
    for path in files:
        text = path.read_text(encoding="utf-8")
        for used in INCLUDE.findall(text):
            problem = problem_of(path, text, used, rules)
            if problem:
                problems.append(f"{path} includes {used}: {problem}")
    if len(files) < 50:
        problems.append(f"only {len(files)} files found")
    print("\n".join(problems) or f"{len(files)} files, each uses what stands below it")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
