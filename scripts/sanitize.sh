#!/usr/bin/env bash
# Builds and runs the tests under the sanitizers: all of them under the address and
# undefined-behaviour sanitizers with leak checking, and those that touch the thread pool under the
# thread sanitizer. The last line is the summary "N passed, N failed".
#
#   scripts/sanitize.sh [PRESET...]      default: asan-ubsan tsan
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C.UTF-8

presets=("$@")
if [ "${#presets[@]}" -eq 0 ]; then
  presets=(asan-ubsan tsan)
fi
scripts/install-packages.sh build test demo

# Builds one preset and runs its tests; the last line is their count.
run_preset() {
  local build=build/$1 status=0
  echo "== $1"
  cmake --preset "$1"
  cmake --build --preset "$1" --parallel "$(nproc)"
  rm -rf "$build/tests/results"
  mkdir -p "$build/tests/results"
  ctest --preset "$1" --parallel "$(nproc)" --timeout 900 \
    --output-junit tests/results/ctest.junit.xml || status=1
  /usr/bin/python3 scripts/count_tests.py "$build/tests/results" || status=1
  return "$status"
}

. scripts/summary.sh
for preset in "${presets[@]}"; do
  run_counted run_preset "$preset"
done
print_summary
