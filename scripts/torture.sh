#!/usr/bin/env bash
# Kills the real launcher at random moments, so many times, and looks what the next start makes of
# it; the last line is "N passed, N failed":
#
#   scripts/torture.sh [KILLS]      default: 200
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C.UTF-8

kills=${1:-200}
if ! [[ $kills =~ ^[0-9]+$ ]]; then
  echo 'usage: scripts/torture.sh [KILLS]' >&2
  exit 64
fi
scripts/install-packages.sh build test demo
build=build/test
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=ON
cmake --build "$build" --parallel "$(nproc)" --target launcher-of-the-demo-world
exec /usr/bin/python3 tests/torture/kills.py --kills "$kills" --base-url http://127.0.0.1:18474/ \
  --program "$build/tests/bin/launcher-of-the-demo-world" --scratch build/torture
