"""What emberwake-check prints for programs and on terminals: check_output.py PROGRAM

Its JSON is what docs/emberwake-check.schema.json says, for a clean document, for one with many faults,
with and without --deep; and the schema refuses whatever was taken out or put in. Colours are for a
terminal that wants them.
"""

from __future__ import annotations

import copy
import json
import os
import pty
import subprocess
import sys
import tempfile
from pathlib import Path
from typing import Any

import jsonschema

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, os.fspath(ROOT / "demo"))

import make_world

FAULTY = """<launcher version="2">text
  <client server="S" name="Official" version="0" url="{base}missing.zip" enabled="false"/>
  <client server="S|T" name="Nightly" version="1.0" url="" auth="x"/>
  <homenews id="1" title="Caf\u00e9" description="" imageUrl="" clickUrl="mailto:a@b.example"/>
  <news id="1" title="{{{{title}}}}" description="d" imageUrl="{base}none.png" clickUrl="steam://run/1"/>
  <feed name="others"/><client version="1"/>
</launcher>
"""


def output(program: str, *arguments: str, text: str | None = None) -> Any:
    done = subprocess.run([program, "--json", *arguments], input=text, capture_output=True, text=True, check=False)
    if done.returncode not in (0, 1, 2):
        sys.exit(f"{arguments}: ended with {done.returncode}: {done.stderr}")
    printed = json.loads(done.stdout)
    if printed["exitCode"] != done.returncode:
        sys.exit(f"{arguments}: another exit code than the one in the output")
    return printed


def each_change(value: Any) -> list[Any]:
    """The value with each of its members missing, and with a stranger in each of its objects."""
    changed: list[Any] = []
    if isinstance(value, dict):
        changed.append({**value, "stranger": 1})
        for name in value:
            changed.append({key: member for key, member in value.items() if key != name})
            changed += [{**value, name: inner} for inner in each_change(value[name])]
    elif isinstance(value, list):
        for i, member in enumerate(value[:2]):
            changed += [[*value[:i], inner, *value[i + 1:]] for inner in each_change(member)]
    return changed


def check_schema(program: str, scratch: Path) -> None:
    schema = json.loads((ROOT / "docs" / "emberwake-check.schema.json").read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    port = subprocess.check_output([sys.executable, ROOT / "demo" / "free_port.py", "0"], text=True).strip()
    base = f"http://127.0.0.1:{port}/"
    world = scratch / "world"
    make_world.lay(world, base, data_bytes=1000)
    faulty = scratch / "faulty.xml"
    faulty.write_text(FAULTY.format(base=base), encoding="utf-8")
    server = subprocess.Popen(
        [sys.executable, ROOT / "demo" / "serve.py", world, "--port", port, "--log", scratch / "log"],
        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    assert server.stdin is not None and server.stdout is not None
    try:
        server.stdout.readline()
        outputs = [
            output(program, "--deep", f"{base}launcher.xml"),
            output(program, "--deep", "--code", make_world.BETA_CODE, f"{base}launcher.xml"),
            output(program, f"{base}nowhere.xml"),
            output(program, "--deep", "--base", base, "--previous", os.fspath(faulty), os.fspath(faulty)),
            output(program, "--ignore", "version-zero,http", "--fail-on", "error", os.fspath(faulty)),
            output(program, "-", text=""),
        ]
    finally:
        server.stdin.close()
        server.wait()
    for printed in outputs:
        for problem in validator.iter_errors(printed):
            sys.exit(f"{problem.json_path}: {problem.message}")
    severities = {finding["severity"] for printed in outputs for finding in printed["findings"]}
    if severities != {"error", "warning", "note"} or not any("files" in one for one in outputs[0]["fetched"]):
        sys.exit("the documents show less than they did")
    optional = {"starts", "fetched"}
    for changed in each_change(copy.deepcopy(outputs[0])):
        missing = set(outputs[0]) - set(changed) | set(outputs[0]["players"]) - set(changed.get("players", {}))
        if validator.is_valid(changed) and not missing & optional:
            sys.exit(f"the schema takes anything: {json.dumps(changed)[:400]}")


def on_terminal(program: str, document: str, **variables: str) -> str:
    """What it prints when a terminal is its standard output."""
    kept = {key: value for key, value in os.environ.items() if key not in ("NO_COLOR", "TERM")}
    ours, theirs = pty.openpty()
    try:
        with subprocess.Popen(
                [program, document], stdin=subprocess.DEVNULL, stdout=theirs, stderr=subprocess.DEVNULL,
                env={**kept, "TERM": "xterm", **variables}) as process:
            os.close(theirs)
            printed = b""
            try:
                while piece := os.read(ours, 4096):
                    printed += piece
            except OSError:
                pass  # the terminal's way of saying that nobody writes any more
        if process.returncode != 2:
            sys.exit(f"ended with {process.returncode}")
    finally:
        os.close(ours)
    return printed.decode()


def check_colours(program: str, scratch: Path) -> None:
    document = os.fspath(scratch / "faulty.xml")
    coloured = on_terminal(program, document)
    for severity in ("\033[1;31merror\033[0m: ", "\033[1;35mwarning\033[0m: ", "\033[1;36mnote\033[0m: "):
        if severity not in coloured:
            sys.exit(f"no {severity!r} on a terminal")
    if "\033" not in on_terminal(program, document, NO_COLOR=""):
        sys.exit("an empty NO_COLOR says nothing")
    for variable, value in (("NO_COLOR", "1"), ("TERM", "dumb")):
        if "\033" in on_terminal(program, document, **{variable: value}):
            sys.exit(f"colours in spite of {variable}={value}")
    piped = subprocess.run([program, document], capture_output=True, check=False).stdout
    if b"\033" in piped:
        sys.exit("colours in a file")


def main(program: str) -> None:
    with tempfile.TemporaryDirectory(prefix="emberwake-check-") as scratch:
        check_schema(program, Path(scratch))
        check_colours(program, Path(scratch))


if __name__ == "__main__":
    main(sys.argv[1])
