#!/usr/bin/env bash
# Tests the checker for operators on Windows: the package in build/packages, unpacked under Wine, over the
# demo world on the loopback.
#
#   packaging/windows/test-checker.sh [FOLDER]       the packages' folder; default: build/packages
#
# One line per check; the last line is "N passed, N failed", and the result says whether one failed.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
packages=$(cd "${1:-$root/build/packages}" && pwd)
"$root/scripts/install-packages.sh" windows windows-test
shopt -s nullglob
archives=("$packages"/emberwake-check-*-windows-x86_64.zip)
if [ "${#archives[@]}" -ne 1 ]; then
  echo "test-checker.sh: $packages must hold one archive of the checker" >&2
  exit 1
fi

# shellcheck source=wine.sh
. "$root/packaging/windows/wine.sh"
start_wine

# A folder that no code page can spell.
folder="$c/Проверка ελέγχου 検査"
mkdir "$folder"
unzip -q "${archives[0]}" -d "$folder"
folder=$folder/$(basename "${archives[0]}" .zip)
cd "$folder"

check 'there is something to read' test -f README.txt -a -f licenses/README.txt
named() {
  local file missing=0
  while read -r file; do
    grep -qF "${file//\//\\}" licenses/README.txt || { echo "$file is under no terms"; missing=1; }
  done < <(find . -name '*.dll' -printf '%P\n' -o -name '*.exe' -printf '%P\n')
  return "$missing"
}
check 'its terms name every file' named
terms() {
  local file
  while read -r file; do
    test -f "licenses/$file" || { echo "licenses/$file is missing"; return 1; }
  done < <(grep -oE '[A-Za-z0-9-]+\.txt' licenses/README.txt | sort -u)
}
check 'and all terms are there' terms

run() { timeout 120 "${wine[@]}" "$folder/emberwake-check.exe" "$@" < /dev/null; }
helps() { run --help | grep -F -- --deep; }
check 'it tells its options' helps
check 'it ends with 64 when it is used wrongly' ends_with 64 emberwake-check.exe
printf '<launcher/>' > "$folder/документ.xml"
reads() { run 'документ.xml' | grep -F '0 errors, 0 warnings'; }
check 'it reads a file with foreign letters' reads

# As the test on Linux starts it. By http alone: Wine's encryption knows the authorities of the system, and
# none that a program brings.
printf '#!/bin/sh\nexec %s "%s" "$@"\n' "${wine[*]}" "$folder/emberwake-check.exe" > "$work/emberwake-check"
chmod +x "$work/emberwake-check"
cd "$root"
check 'it finds nothing in the demo world, and what was spoiled in it' \
  timeout 600 /usr/bin/python3 tests/check/check_demo_world.py "$work/emberwake-check" http

print_checks
