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
echo "== Configuring $build"
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=ON
echo "== Building"
cmake --build "$build" --parallel "$jobs"
echo "== Testing"
rm -rf "$build/tests/results"
mkdir -p "$build/tests/results"
status=0
ctest --test-dir "$build" --parallel "$jobs" --output-on-failure --timeout 900 \
  --output-junit tests/results/ctest.junit.xml "$@" || status=$?
# The distribution's interpreter: another one on the PATH may lack what the distribution installs.
/usr/bin/python3 scripts/count_tests.py "$build/tests/results" || status=1
exit "$status"
