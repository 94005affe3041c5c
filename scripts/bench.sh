#!/usr/bin/env bash
# Measures what the launcher costs, each figure beside its yardstick in the same run, and prints two
# tables, of times and of instructions; build/bench/ holds them too, as results.md, instructions.md and
# the same as .json. It judges nothing by its exit code.
#
#   scripts/bench.sh [--quick] [--instructions | --only ROW...] [--write-page]
#
#   --quick         smaller sizes and fewer rounds, for whoever works on a row
#   --instructions  just the instructions of what one thread does alone; other work on the machine does
#                   not change them
#   --only ROW      just this row of the times: start, own-pictures, own-font, choice, document,
#                   versions, download, neighbour, slow-window, slow-disk, install, unpack,
#                   responsiveness, rescale, pictures, hover, growth, idle, size. May be given again
#   --write-page    puts the tables into docs/performance.md as well
#
# Takes 40 minutes and 8 GiB of disk; the instructions alone some minutes. Leave the
# machine alone while times are taken.
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C.UTF-8

options=()
while [[ $# -gt 0 ]]; do
  case $1 in
    --quick | --instructions) options+=("$1") ;;
    --only)
      [[ $# -gt 1 ]] || { echo 'bench.sh: --only wants a row' >&2; exit 64; }
      options+=(--only "$2")
      shift
      ;;
    --write-page) options+=(--write-page docs/performance.md) ;;
    *)
      echo 'usage: scripts/bench.sh [--quick] [--instructions | --only ROW...] [--write-page]' >&2
      exit 64
      ;;
  esac
  shift
done

scripts/install-packages.sh build bench

build=build/bench-release
echo "== Building $build"
cmake --preset release -B "$build" -DBUILD_TESTING=ON
cmake --build "$build" --parallel "$(nproc)" --target emberwake-launcher emberwake-unzip benchmarks
# The distribution's interpreter: another one on the PATH may lack what the distribution installs.
exec tests/support/with-display.sh /usr/bin/python3 -B tests/bench/bench.py \
  --programs "$build/tests/bin" --out build/bench "${options[@]}"
