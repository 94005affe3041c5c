#!/usr/bin/env bash
# Lays out the folder of the checker for operators on Windows; called by package.sh:
#
#   packaging/windows/package-checker.sh PROGRAM LAUNCHER FOLDER
#
# PROGRAM is the built one. LAUNCHER is the launcher's finished folder, from which its libraries and their
# terms come, but licenses/README.txt.
set -euo pipefail

if [ "$#" -ne 3 ]; then
  echo 'usage: package-checker.sh PROGRAM LAUNCHER FOLDER' >&2
  exit 64
fi
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
program=$1
launcher=$2
folder=$3

mkdir -p "$folder"/{imageformats,licenses}
cp "$program" "$folder/emberwake-check.exe"
x86_64-w64-mingw32-strip "$folder/emberwake-check.exe"
cp "$launcher"/Qt5{Core,Gui,Network}.dll "$launcher"/lib*.dll "$folder/"
# What the launcher decodes, no more and no less: the checker says which pictures it would not show.
cp "$launcher"/imageformats/*.dll "$folder/imageformats/"
cp "$launcher"/licenses/{qt,gcc,mingw-w64,libzip,libdeflate,zlib,GPL}-*.txt "$folder/licenses/"
sed 's/$/\r/' "$here/checker-README.txt" > "$folder/README.txt"
[ ! -f "$launcher/UNSIGNED.txt" ] || cp "$launcher/UNSIGNED.txt" "$folder/"
"$here/check-imports.py" --checker "$folder"
