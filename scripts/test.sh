#!/usr/bin/env bash
# Builds and runs every test. The last line is the summary "N passed, N failed".
#
#   scripts/test.sh [CTEST OPTION...]     for example: scripts/test.sh -R tst_form
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C.UTF-8

scripts/install-packages.sh build test

build=build/test
jobs=$(nproc)

# What differs from the last commit. Nothing where this is no checkout, or git is not allowed in.
tree_state() {
  git status --porcelain --untracked-files=all 2> /dev/null || true
  git diff 2> /dev/null || true
}

# A test that writes into the tree would be committed with the next change.
tree_is_unchanged() {
  local now
  now=$(tree_state)
  [ "$now" != "$tree_before" ] || return 0
  echo 'The tests left the tree other than they found it:'
  git status --short
  return 1
}

test_programs() {
  local status=0
  ctest --test-dir "$build" --parallel "$jobs" --output-on-failure --timeout 900 \
    --output-junit tests/results/ctest.junit.xml "$@" || status=$?
  # The distribution's interpreter: another one on the PATH may lack what the distribution installs.
  /usr/bin/python3 scripts/count_tests.py "$build/tests/results" || status=1
  return "$status"
}

tree_before=$(tree_state)
echo "== Configuring $build"
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=ON \
  -DEMBERWAKE_WARNINGS_AS_ERRORS=ON
echo "== Building"
cmake --build "$build" --parallel "$jobs"
echo "== Testing"
rm -rf "$build/tests/results"
mkdir -p "$build/tests/results"
. scripts/summary.sh
run_counted test_programs "$@"
run_as_one tree_is_unchanged
print_summary
