#!/usr/bin/env bash
# Tests that a studio's own product is what file properties, packages and installer show, without an
# edited source: it packs with product settings, and installs under Wine.
#
#   packaging/windows/test-product.sh
#
# One line per check; the last line is "N passed, N failed", and the result says whether one failed.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
here=$root/packaging/windows
"$root/scripts/install-packages.sh" windows windows-test

# shellcheck source=wine.sh
. "$here/wine.sh"
start_wine

# Whatever has a meaning in one of the files that they go through.
name="Ñandú & Söhne's Launcher"
publisher='Студия "Ñandú" & Co <5> \ %PATH%; AG'
copyright='© 2026 Студия "Ñandú" \n'
url='https://games.example/?a=1&b=2'
# A picture of one dot: the header, one entry, and 48 bytes.
/usr/bin/python3 - "$work/own.ico" << 'PYTHON'
import struct
import sys
picture = struct.pack("<IiiHHIIiiII", 40, 1, 2, 1, 32, 0, 8, 0, 0, 0, 0) + b"\x12\x34\x56\xff" + b"\0" * 4
icon = struct.pack("<HHHBBBBHHII", 0, 1, 1, 1, 1, 0, 0, 1, 32, len(picture), 22) + picture
open(sys.argv[1], "wb").write(icon)
PYTHON

echo 'Packing with product settings ...'
pack() {
  "$here/package.sh" --output "$work/packages" --build "$root/build/windows-release" "$@" > "$work/package.log" 2>&1 ||
    { tail -n 5 "$work/package.log"; return 1; }
}
check 'it packs' pack "-DEMBERWAKE_PRODUCT_NAME=$name" "-DEMBERWAKE_PRODUCT_PUBLISHER=$publisher" \
  "-DEMBERWAKE_PRODUCT_COPYRIGHT=$copyright" "-DEMBERWAKE_PRODUCT_URL=$url" \
  -DEMBERWAKE_PRODUCT_VERSION=12.34.567 "-DEMBERWAKE_PRODUCT_ICON=$work/own.ico"
setup=$work/packages/emberwake-launcher-12.34.567-setup.exe
archive=$work/packages/emberwake-launcher-12.34.567-windows-x86_64.zip
check 'the names of the packages have the version' test -f "$setup" -a -f "$archive"
for each in "$work"/packages/*.zip; do
  unzip -q "$each" -d "$work/unpacked" || true
done
[ -f "$setup" ] || { print_checks; exit 1; }
check 'it installs' ends_with 0 "$setup" /S
folder="$user/AppData/Local/Programs/$name"
check 'in a folder of its own name' test -f "$folder/emberwake-launcher.exe"
check 'its entry in the start menu has the name' \
  test -f "$user/AppData/Roaming/Microsoft/Windows/Start Menu/Programs/$name.lnk"

says() {
  local text
  text=$("$here/program-text.py" "$1" "$2")
  [ "$text" = "$3" ] || { echo "$2 is \"$text\""; return 1; }
}
programs=("$setup" "$folder/uninstall.exe")
while read -r file; do
  programs+=("$file")
done < <(find "$work/unpacked" -name '*.exe' | sort)
check 'every program is there' test "${#programs[@]}" -ge 4
for program in "${programs[@]}"; do
  file=${program##*/}
  check "$file names the publisher" says "$program" CompanyName "$publisher"
  check "$file names the product" says "$program" ProductName "$name"
  check "$file has the version" says "$program" FileVersion 12.34.567
  check "$file has the product's version" says "$program" ProductVersion 12.34.567
  check "$file has the copyright" says "$program" LegalCopyright "$copyright"
  case $file in
    emberwake-launcher.exe | *setup.exe | uninstall.exe)
      check "$file has the icon" "$here/program-text.py" "$program" --icon "$work/own.ico" ;;
  esac
done

registry() {
  "${wine[@]}" reg export 'HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall' 'C:\export.reg' /y > /dev/null
  iconv -f utf-16 -t utf-8 "$c/export.reg" | tr -d '\r' > "$work/export"
  local value=${2//\\/\\\\}
  grep -qxF "\"$1\"=\"${value//\"/\\\"}\"" "$work/export" || { cat "$work/export"; return 1; }
}
check 'Windows knows the name' registry DisplayName "$name"
check 'Windows knows the version' registry DisplayVersion 12.34.567
check 'Windows knows the publisher' registry Publisher "$publisher"
check 'Windows knows the web address' registry URLInfoAbout "$url"
# It takes the rest of its command line as the folder: Wine must not put it into quotation marks.
read -r -a uninstall_in_folder <<< "_?=C:\\users\\$(id -un)\\AppData\\Local\\Programs\\$name"
check 'the uninstaller removes it' ends_with 0 "$folder/uninstall.exe" /S "${uninstall_in_folder[@]}"
check 'all of it' absent "$folder/emberwake-launcher.exe"

echo 'Settings that cannot be ...'
refused() {
  local setting=${1%%=*}
  if pack "-D$1"; then echo "$1 was accepted"; return 1; fi
  grep -q "$setting is" "$work/package.log"
}
# shellcheck disable=SC2016 # dollar signs are ones
for bad in 'EMBERWAKE_PRODUCT_NAME=' 'EMBERWAKE_PRODUCT_NAME=A/B' 'EMBERWAKE_PRODUCT_NAME=A\B' \
  'EMBERWAKE_PRODUCT_NAME=A:B' 'EMBERWAKE_PRODUCT_NAME=Launcher.' 'EMBERWAKE_PRODUCT_NAME= Launcher' \
  'EMBERWAKE_PRODUCT_VERSION=1.2' 'EMBERWAKE_PRODUCT_VERSION=1.2.70000' 'EMBERWAKE_PRODUCT_VERSION=v1.2.3' \
  'EMBERWAKE_PRODUCT_PUBLISHER=A`B' 'EMBERWAKE_PRODUCT_NAME=A$B' 'EMBERWAKE_PRODUCT_URL=https://a/${B}' 'EMBERWAKE_PRODUCT_URL=games.example' "EMBERWAKE_PRODUCT_ICON=$root/README.md" \
  'EMBERWAKE_PRODUCT_ICON=nowhere.ico'; do
  check "$bad is refused" refused "$bad"
done

print_checks
