#!/usr/bin/env bash
# Builds zip.exe, which the tests pack archives with on Windows, from the distribution's source
# package; it is not shipped. Does nothing when it is there.
#
#   build-windows-zip.sh FILE
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
output=$(realpath -m "$1")
[ ! -f "$output" ] || exit 0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$here/../../packaging/windows/fetch-source.sh" zip "$work/zip"
cd "$work/zip"
units=(
  zip crypt ttyio zipfile zipup fileio util crc32 globals deflate trees
  win32/win32 win32/win32zip win32/win32i64 win32/nt
)
# Someone else's code, from before the warnings.
x86_64-w64-mingw32-gcc-posix -O2 -w -fcommon -include windows.h -I. -Iwin32 \
  -DWIN32 -DFORCE_WIN32_OVER_UNIX -DNO_ASM -static -s -o zip.exe "${units[@]/%/.c}"
mkdir -p "$(dirname "$output")"
install -m 755 zip.exe "$output"
