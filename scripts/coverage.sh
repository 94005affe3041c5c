#!/usr/bin/env bash
# Prints how many of the product's lines the tests reach: a table per folder, with the lines that
# none of them reaches, and one figure for all. Judges nothing.
#
#   scripts/coverage.sh
#
# The checks of the sources and the tortures are left out: they reach nothing that the tests do not.
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C.UTF-8

scripts/install-packages.sh build test coverage

build=build/coverage
echo "== Building $build"
cmake --preset coverage
cmake --build --preset coverage --parallel "$(nproc)"
echo '== Testing'
find "$build" -name '*.gcda' -delete
ctest --preset coverage --parallel "$(nproc)" --timeout 900

echo '== Lines reached'
# Lines that only throw or clean up are lines as well; branches that the compiler adds are not asked.
gcovr --root . --json "$build/coverage.json" \
  --filter '(app|base|check|fetch|info|install|news|window)/' "$build" 2> "$build/gcovr.log" ||
  { cat "$build/gcovr.log"; exit 1; }
for folder in app base fetch info install news window check; do
  echo "-- $folder/"
  gcovr --root . --add-tracefile "$build/coverage.json" --filter "$folder/" |
    sed -n '/^File/,/^TOTAL/p' | grep -v '^--*$'
done
gcovr --root . --add-tracefile "$build/coverage.json" | grep '^TOTAL'
