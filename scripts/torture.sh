#!/usr/bin/env bash
# Makes life hard for the real launcher, and looks what it makes of that:
#
#   scripts/torture.sh [KILLS]      default: 200
#
# First everything that it fetches fails in every way, then the disk, the extractor and the archive
# are not as they should be, then it is killed so many times at random moments. A line per case; the
# last one is "N passed, N failed", and ", N skipped" where something is not permitted here.
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
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=ON \
  -DEMBERWAKE_WARNINGS_AS_ERRORS=ON
cmake --build "$build" --parallel "$(nproc)" --target launcher-of-the-demo-world \
  --target launcher-of-the-secure-demo-world --target emberwake-unzip

. scripts/summary.sh
programs=(--program "$build/tests/bin/launcher-of-the-demo-world" --extractor "$build/unzip.exe")
mkdir -p build/torture
echo '== What is fetched'
run_counted /usr/bin/python3 tests/torture/faults.py "${programs[@]}" \
  --secure-program "$build/tests/bin/launcher-of-the-secure-demo-world" --scratch build/torture/faults
echo '== The disk, the extractor and the archive'
run_counted /usr/bin/python3 tests/torture/disk.py "${programs[@]}" --scratch build/torture/disk --long
echo '== Kills'
run_counted /usr/bin/python3 tests/torture/kills.py --kills "$kills" --base-url http://127.0.0.1:18474/ \
  "${programs[@]}" --scratch build/torture/kills
print_summary
