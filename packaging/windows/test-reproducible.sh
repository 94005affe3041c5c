#!/usr/bin/env bash
# Tests that the same sources give the same packages, byte for byte: builds those in build/packages
# once more, from a copy of the sources in a folder with another name, at another time, with other
# habits of the machine, and compares.
#
#   packaging/windows/test-reproducible.sh [FOLDER]  the packages' folder; default: build/packages
#
# The toolkit and the extractor's libraries are the same ones; prove-reproducible.sh tries two systems
# and builds all but the toolkit twice. One line per check; the last line is "N passed, N failed", and
# the result says whether one failed.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
packages=$(cd "${1:-$root/build/packages}" && pwd)
"$root/scripts/install-packages.sh" windows windows-test

work=$(mktemp -d "${TMPDIR:-/tmp}/test-reproducible.XXXXXX")
trap 'rm -rf "$work"' EXIT
copy="$work/another folder with a longer name/Источники"
mkdir -p "$copy/build"
(cd "$root" && git ls-files -z --cached --others --exclude-standard |
  while IFS= read -r -d '' file; do [ ! -e "$file" ] || printf '%s\0' "$file"; done |
  tar --null --files-from=- -cf -) | tar -xf - -C "$copy"
# Fetching their sources again would need the network, and has no part in what differs.
cp -a "$root/build/windows-libzip" "$copy/build/"

# The copy has no history to take the date from.
SOURCE_DATE_EPOCH=$(git -C "$root" log -1 --format=%ct)
# An answer out of a cache would prove nothing.
export SOURCE_DATE_EPOCH CCACHE_DISABLE=1
echo 'Building and packing a copy ...'
if ! (umask 077 && LC_ALL=C TZ=Pacific/Auckland "$copy/packaging/windows/package.sh" > "$work/log" 2>&1); then
  tail -n 20 "$work/log"
  echo '0 passed, 1 failed'
  exit 1
fi

passed=0
failed=0
# A package that only one of the two made differs, too.
mapfile -t names < <(find "$packages" "$copy/build/packages" -mindepth 1 -printf "%f\n" | sort -u)
for name in "${names[@]}"; do
  if cmp "$packages/$name" "$copy/build/packages/$name"; then
    passed=$((passed + 1))
    echo "ok    $name is the same"
  else
    failed=$((failed + 1))
    echo "FAIL  $name differs"
  fi
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -gt 2 ]
