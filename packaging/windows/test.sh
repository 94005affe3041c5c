#!/usr/bin/env bash
# Runs the tests of what the packages are made of: the check of imports, the extractor, and the
# installer in build/packages (or in the folder given):
#
#   packaging/windows/test.sh [FOLDER]
#
# The last line is "N passed, N failed" over all of them, and the result says whether one failed.
set -euo pipefail

here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
packages=${1:-$here/../../build/packages}
"$here/../../scripts/install-packages.sh" windows windows-test

passed=0
failed=0
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# run COMMAND...: one of the tests. Without its closing line it counts as failed.
run() {
  echo "--- $(basename "$1")"
  "$@" 2>&1 | tee "$log" || true
  if [[ $(tail -n 1 "$log") =~ ^([0-9]+)\ passed,\ ([0-9]+)\ failed$ ]]; then
    passed=$((passed + BASH_REMATCH[1]))
    failed=$((failed + BASH_REMATCH[2]))
  else
    failed=$((failed + 1))
  fi
}
run "$here/test-check-imports.py"
run "$here/test-unzip.py"
run "$here/test-installer.sh" "$packages"

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
