#!/usr/bin/env bash
# Measures what the launcher costs, each figure beside its yardstick in the same run, and prints one
# table; build/bench/results.md and results.json hold it too. It judges nothing by its exit code.
#
#   scripts/bench.sh [--quick] [--only ROW]... [--write-page]
#
#   --quick       smaller sizes and fewer rounds, for whoever works on a row
#   --only ROW    just this row: start, own-pictures, choice, document, versions, download, slow-disk,
#                 install, unpack, responsiveness, rescale, pictures, hover, idle, size
#   --write-page  puts the table into docs/performance.md as well
#
# Takes a quarter of an hour and 8 GiB of disk. Leave the machine alone meanwhile.
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C.UTF-8

options=()
while [[ $# -gt 0 ]]; do
  case $1 in
    --quick) options+=(--quick) ;;
    --only)
      [[ $# -gt 1 ]] || { echo 'bench.sh: --only wants a row' >&2; exit 64; }
      options+=(--only "$2")
      shift
      ;;
    --write-page) options+=(--write-page docs/performance.md) ;;
    *)
      echo 'usage: scripts/bench.sh [--quick] [--only ROW]... [--write-page]' >&2
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
