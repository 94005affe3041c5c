#!/usr/bin/python3
"""Measures everything that docs/performance.md tells, each beside its yardstick: see scripts/bench.sh."""

from __future__ import annotations

import argparse
import os
import platform
import sys
import time
from pathlib import Path

import bench_world
import rows_download
import rows_growth
import rows_instructions
import rows_size
import rows_start
import rows_unpack
import table
from bench_tools import Setting, say
from web import Web

ROWS = {
    "start": rows_start.start,
    "own-pictures": rows_start.own_pictures,
    "own-font": rows_start.own_font,
    "choice": rows_start.choice,
    "document": rows_start.document,
    "versions": rows_start.versions,
    "download": rows_download.downloads,
    "neighbour": rows_download.beside_neighbour,
    "slow-window": rows_download.slow_window,
    "slow-disk": rows_download.slow_disk,
    "install": rows_download.install,
    "unpack": rows_unpack.unpacking,
    "responsiveness": rows_download.responsiveness,
    "rescale": rows_start.rescale,
    "pictures": rows_start.pictures,
    "hover": rows_start.hover,
    "growth": rows_growth.table_of_growth,
    "idle": rows_start.idle,
    "size": rows_size.size,
}


def machine() -> str:
    names = [line.partition(":")[2].strip() for line in Path("/proc/cpuinfo").read_text().splitlines()
             if line.startswith("model name")]
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    return (f"{time.strftime('%Y-%m-%d')}, {os.cpu_count()} cores of {names[0] if names else platform.machine()}, "
            f"{memory:.0f} GiB, Linux {platform.release()}.")


def tell(name: str, rows: list[table.Row], options: argparse.Namespace, out: Path) -> None:
    say("")
    say(table.as_text(rows))
    table.write_files(name, rows, machine(), out)
    if options.write_page:
        table.rewrite_page(name, rows, machine(), options.write_page)
    missed = [row.name for row in rows if row.met is False]
    say(f"\n{len([row for row in rows if row.met])} goals met, {len(missed)} missed. {out}/{name}.md, {name}.json")


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", type=Path, required=True, help="folder of the built benchmarks")
    parser.add_argument("--out", type=Path, required=True, help="folder of results and scratch files")
    which = parser.add_mutually_exclusive_group()
    which.add_argument("--only", action="append", choices=ROWS, help="just this row; may be given again")
    which.add_argument("--instructions", action="store_true", help="just what is counted, no times")
    parser.add_argument("--quick", action="store_true", help="smaller sizes, fewer rounds")
    parser.add_argument("--write-page", type=Path, help="puts the tables into this page, between their markers")
    options = parser.parse_args()
    if options.write_page and (options.quick or options.only):
        parser.error("the page takes whole tables, of full size")

    out = options.out.resolve()
    root = out / "world"
    root.mkdir(parents=True, exist_ok=True)
    setting = Setting(options.programs.resolve(), out, 3 if options.quick else 9, options.quick)
    rows: list[table.Row] = []
    counted: list[table.Row] = []
    # The launcher and curl fetch from the loopback, whatever this machine's way to the world is.
    for name in [name for name in os.environ if name.lower().endswith("_proxy")]:
        del os.environ[name]
    with Web(root, out) as web:
        bench_world.publish(root, web.url)
        for name in [] if options.instructions else options.only or ROWS:
            begin = time.monotonic()
            say(f"== {name}")
            rows += ROWS[name](setting, web)
            say(f"   {time.monotonic() - begin:.0f} s")
        if not options.only:
            say("== instructions")
            counted = rows_instructions.instructions(setting, web)
    if rows:
        tell(table.TIMES, rows, options, out)
    if counted:
        tell(table.INSTRUCTIONS, counted, options, out)
    return 0


if __name__ == "__main__":
    sys.exit(main())
