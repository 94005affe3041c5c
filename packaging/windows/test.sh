#!/usr/bin/env bash
# Runs the tests of the packages in build/packages (or in the folder given) and of what they are made of:
# the check of imports, the bill of materials, the extractor, the installer and its updates, the checker, packages with
# another product and with signatures, and the same ones built once more:
#
#   packaging/windows/test.sh [FOLDER]
#
# The last line is "N passed, N failed" over all of them, and the result says whether one failed.
set -euo pipefail

here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
packages=${1:-$here/../../build/packages}
"$here/../../scripts/install-packages.sh" windows windows-test

# shellcheck source=../../scripts/summary.sh
. "$here/../../scripts/summary.sh"
run_counted "$here/test-check-imports.py"
run_counted "$here/test-bill.py" "$packages"
run_counted "$here/test-unzip.py"
run_counted "$here/test-installer.sh" "$packages"
run_counted "$here/test-update.sh" "$packages"
run_counted "$here/test-checker.sh" "$packages"
run_counted "$here/test-product.sh"
run_counted "$here/test-signing.sh" "$packages"
run_counted "$here/test-reproducible.sh" "$packages"
print_summary
