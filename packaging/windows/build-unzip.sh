#!/usr/bin/env bash
# Builds the extractor unzip.exe for Windows (x86_64) from the distribution's source package of it,
# with the distribution's security patches and ours in packaging/windows/unzip:
#
#   packaging/windows/build-unzip.sh [OUTPUT FILE]    default: build/windows-unzip/unzip.exe
#
# Does nothing when it is there and newer than what it is made by. Beside it lie the licence
# (unzip-LICENSE.txt) and the name of the source package (unzip-SOURCE-PACKAGE). To build from a
# tree fetched before, name it in UNZIP_SOURCE; it is copied, not changed.
set -euo pipefail

here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
output=${1:-$here/../../build/windows-unzip/unzip.exe}
mkdir -p "$(dirname "$output")"
output=$(cd "$(dirname "$output")" && pwd)/$(basename "$output")
folder=$(dirname "$output")

newer=$(find "$here/unzip" "$here/build-unzip.sh" -type f -newer "$output" 2>/dev/null || echo none)
if [ -z "$newer" ] && [ -f "$folder/unzip-LICENSE.txt" ] && [ -f "$folder/unzip-SOURCE-PACKAGE" ]; then
  echo "The extractor for Windows is there: $output"
  exit 0
fi

"$here/../../scripts/install-packages.sh" windows source

work=$(mktemp -d "${TMPDIR:-/tmp}/build-unzip.XXXXXX")
trap 'rm -rf "$work"' EXIT
source=$work/source
if [ -n "${UNZIP_SOURCE:-}" ]; then
  cp -r "$UNZIP_SOURCE" "$source"
else
  "$here/fetch-source.sh" unzip "$source"
fi
for patch in "$here"/unzip/*.patch; do
  echo "Applying $(basename "$patch")"
  patch -s -p1 --fuzz=0 -d "$source" < "$patch"
done

cc=x86_64-w64-mingw32-gcc-posix
hardening=(-O2 -fstack-protector-strong -D_FORTIFY_SOURCE=2)
theirs=(
  -DWIN32 -DMAIN=unzip_main -include "$here/unzip/utf8-files.h" -I "$source"
  # Text is UTF-8 here; the code page's two-byte letters would be found in it by mistake, and so
  # would the bytes it does not print.
  -DNO_MBCS -DNO_WORKING_ISPRINT
  # Nobody restores access rights from an archive of a game.
  -DNO_NTSD_EAS
  # The same source gives the same program, on whatever day.
  -U__DATE__
  # Someone else's code, from before the warnings.
  -std=gnu89 -w
)
units=(
  unzip crc32 crypt envargs explode extract fileio globals inflate list match process ttyio ubz2err
  unreduce unshrink zipinfo win32/win32 win32/nt win32/win32i64
)
mkdir -p "$work/objects/win32"
objects=()
for unit in "${units[@]}"; do
  "$cc" "${hardening[@]}" "${theirs[@]}" -c "$source/$unit.c" -o "$work/objects/$unit.o"
  objects+=("$work/objects/$unit.o")
done
"$cc" "${hardening[@]}" -std=c11 -Wall -Wextra -Werror -c "$here/unzip/utf8-files.c" \
  -o "$work/objects/utf8-files.o"
x86_64-w64-mingw32-windres -I "$here/unzip" "$here/unzip/unzip.rc" "$work/objects/resources.o"
# Static, so that nothing but Windows itself is needed beside it.
"$cc" "${hardening[@]}" -municode -static -s -Wl,--dynamicbase,--high-entropy-va,--nxcompat \
  -Wl,--no-insert-timestamp -o "$work/unzip.exe" \
  "${objects[@]}" "$work/objects/utf8-files.o" "$work/objects/resources.o"

# The parts that games depend on are switched by macros deep in the source: a build without them
# would look just as good until the first archive that needs them.
for feature in LARGE_FILE_SUPPORT ZIP64_SUPPORT UNICODE_SUPPORT; do
  grep -aq "$feature" "$work/unzip.exe" || {
    echo "build-unzip.sh: the extractor was built without $feature" >&2
    exit 1
  }
done

install -m 644 "$source/LICENSE" "$folder/unzip-LICENSE.txt"
install -m 644 "$source/SOURCE-PACKAGE" "$folder/unzip-SOURCE-PACKAGE"
install -m 755 "$work/unzip.exe" "$output"
echo "The extractor for Windows is built: $output"
