#!/usr/bin/env bash
# Tests the installer under Wine, on a virtual display and in a Wine folder of its own:
#
#   packaging/windows/test-installer.sh [FOLDER]     the packages' folder; default: build/packages
#
# One line per check; the last line is "N passed, N failed", and the result says whether one failed.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
packages=$(cd "${1:-$root/build/packages}" && pwd)
"$root/scripts/install-packages.sh" windows windows-test

shopt -s nullglob
setups=("$packages"/emberwake-launcher-*-setup.exe)
archives=("$packages"/emberwake-launcher-*-windows-x86_64.zip)
if [ "${#setups[@]}" -ne 1 ] || [ "${#archives[@]}" -ne 1 ]; then
  echo "test-installer.sh: $packages must hold one installer and one archive" >&2
  exit 1
fi
setup=${setups[0]}
archive=${archives[0]}
version=${setup##*/emberwake-launcher-}
version=${version%-setup.exe}

# shellcheck source=wine.sh
. "$root/packaging/windows/wine.sh"
start_wine

# registered NAME VALUE: what stands in the registry's export, where a backslash is written twice.
registered() {
  "${wine[@]}" reg export "$key" 'C:\export.reg' /y > /dev/null
  iconv -f utf-16 -t utf-8 "$c/export.reg" | tr -d '\r' > "$work/export"
  grep -F "\"$1\"=" "$work/export" | tee "$work/value"
  grep -qF "${2//\\/\\\\}" "$work/value"
}
key='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Emberwake Online Launcher'
own_key='HKCU\Software\Emberwake Online Launcher'
no_key() { ! "${wine[@]}" reg query "$1"; }
# The files of a package, in a folder: all there, and the same.
unzip -q "$archive" -d "$work/archive"
files=$work/archive/$(basename "$archive" .zip)
installed() {
  diff -r "$files" "$1" | grep -v '^Only in .*: \(uninstall.exe\|Realm\|settings.txt\|offline.txt\)$' > "$work/differences" || true
  [ ! -s "$work/differences" ] || { cat "$work/differences"; return 1; }
}
in_bill() { grep -F "\"$(sha256sum < "$1" | cut -d ' ' -f 1)\"" "${archive%.zip}.cdx.json"; }
# Nothing that the package brought is left in the folder.
program_gone() {
  local file
  while read -r file; do
    absent "$1/$file" || { echo "$file is left"; return 1; }
  done < <(cd "$files" && find . -mindepth 1 -printf '%P\n')
  absent "$1/uninstall.exe"
}
# The uninstaller goes on by a copy of itself when the program that was started has ended.
uninstall() {
  timeout 120 "${wine[@]}" "$1/uninstall.exe" /S "${@:2}"
  for _ in {1..300}; do
    if absent "$1/uninstall.exe" && absent "$shortcut"; then
      # A moment for what comes after these.
      sleep 2
      return 0
    fi
    sleep 0.1
  done
  echo 'the uninstaller did not finish'
  return 1
}
# The folder a shortcut starts its program in, and the program.
link_says() {
  /usr/bin/python3 - "$shortcut" "$1" <<'PYTHON'
import struct
import sys

data = open(sys.argv[1], "rb").read()
flags = struct.unpack_from("<I", data, 20)[0]
position = 76
if flags & 1:
    position += 2 + struct.unpack_from("<H", data, position)[0]
if flags & 2:
    position += struct.unpack_from("<I", data, position)[0]
texts = {}
for bit, name in ((4, "name"), (8, "relative"), (16, "folder"), (32, "arguments"), (64, "icon")):
    if flags & bit:
        size = struct.unpack_from("<H", data, position)[0]
        texts[name] = data[position + 2:position + 2 + 2 * size].decode("utf-16-le").rstrip("\0")
        position += 2 + 2 * size
print(texts)
sys.exit(texts.get("folder") != sys.argv[2])
PYTHON
}
# NAME: the window of the program is there, or comes within a minute.
window_appears() {
  for _ in {1..120}; do
    [ -z "$(xdotool search --onlyvisible --name "$1" 2> /dev/null)" ] || return 0
    sleep 0.5
  done
  return 1
}
games() {
  mkdir -p "$1/Realm/Игра/1.0"
  echo game > "$1/Realm/Игра/1.0/game.exe"
  echo settings > "$1/settings.txt"
  echo offline > "$1/offline.txt"
}
games_kept() {
  [ "$(cat "$1/Realm/Игра/1.0/game.exe" "$1/settings.txt" "$1/offline.txt" | tr '\n' ' ')" = 'game settings offline ' ]
}

# The blanks in the folder stand between arguments: the installer takes the rest of its command line,
# and Wine would put an argument with blanks into quotation marks.
folder=$c/Игры\ и\ Welt/Emberwake
install_in_folder=(/S '/D=C:\Игры' и 'Welt\Emberwake')
shortcut="$user/AppData/Roaming/Microsoft/Windows/Start Menu/Programs/Emberwake Online Launcher.lnk"

# Folders that are not the launcher's.
check 'a folder of Windows is refused' ends_with 3 "$setup" /S '/D=C:\windows\Emberwake'
check 'the folder of all programs is refused' ends_with 3 "$setup" /S '/D=C:\Program' 'Files'
check 'the way around by ".." is refused' ends_with 3 "$setup" /S '/D=C:\windows\..\Program' Files
mkdir -p "$c/Other"
echo mine > "$c/Other/my.txt"
check 'a folder with other files is refused' ends_with 3 "$setup" /S '/D=C:\Other'
check 'nothing was written there' absent "$c/Other/emberwake-launcher.exe"
check 'nothing was registered' no_key "$key"

# A first version, with a file that the next one no longer has.
cp -r "$files" "$work/old"
echo old > "$work/old/old-library.dll"
"$root/packaging/windows/list-files.sh" "$work/old" "$work/old-install.nsh" "$work/old.nsh"
cat > "$work/product.nsh" << NSIS
!define NAME "Emberwake Online Launcher"
!define NAME_IN_WINDOWS "Emberwake Online Launcher"
!define VERSION 0.9.0
!define PUBLISHER "Emberwake"
!define COPYRIGHT ""
!define URL "https://www.emberwake.example/"
!define ICON "$root/images/clienticon.ico"
NSIS
makensis -V1 -INPUTCHARSET UTF8 -X'SetCompress off' "-DPRODUCT=$work/product.nsh" -DINSTALL_FILES="$work/old-install.nsh" \
  "-DUNINSTALL_FILES=$work/old.nsh" -DSIZE=1 -DSIGN=true "-DUNINSTALLER=$work/old-uninstall.exe" \
  "-DOUTPUT=$work/old-setup.exe" "$root/packaging/windows/installer.nsi" > "$work/makensis.log" ||
  { cat "$work/makensis.log"; exit 1; }
check 'an older version installs silently, blanks and Cyrillic letters in the path' \
  ends_with 0 "$work/old-setup.exe" "${install_in_folder[@]}"
check 'its own file is there' test -f "$folder/old-library.dll"
games "$folder"

# The update.
check 'the update installs over it' ends_with 0 "$setup" "${install_in_folder[@]}"
check 'all files are there' installed "$folder"
check 'the uninstaller is the one in the bill of materials' in_bill "$folder/uninstall.exe"
check 'the file that is not needed any more is gone' absent "$folder/old-library.dll"
check 'the update left games and settings' games_kept "$folder"
check 'the start menu entry works in the folder' link_says 'C:\Игры и Welt\Emberwake'
check 'Windows knows the name' registered DisplayName 'Emberwake Online Launcher'
check 'Windows knows the version' registered DisplayVersion "\"$version\""
check 'Windows knows the publisher' registered Publisher Emberwake
check 'Windows knows the web address' registered URLInfoAbout https://www.emberwake.example/
check 'Windows knows the icon' registered DisplayIcon 'C:\Игры и Welt\Emberwake\emberwake-launcher.exe'
check 'Windows knows the uninstaller' registered UninstallString 'C:\Игры и Welt\Emberwake\uninstall.exe'
check 'Windows knows the size' registered EstimatedSize dword:0000

# It runs, and is noticed.
(cd "$folder" && exec "${wine[@]}" emberwake-launcher.exe) > /dev/null 2>&1 &
check 'the launcher opens its window' window_appears 'Emberwake Launcher'
check 'an update while it runs is refused' ends_with 2 "$setup" "${install_in_folder[@]}"
check 'so is the removal' ends_with 2 "$folder/uninstall.exe" /S '_?=C:\Игры' и 'Welt\Emberwake'
check 'and nothing is missing' installed "$folder"
"${wine[@]}" taskkill /F /IM emberwake-launcher.exe > /dev/null 2>&1 || true
sleep 2

# The removal, and back again.
check 'it uninstalls silently' uninstall "$folder"
check 'the program is gone' program_gone "$folder"
check 'games and settings are left' games_kept "$folder"
check 'Windows does not know it any more' no_key "$key"
check 'without a folder given it returns to the games' ends_with 0 "$setup" /S
check 'all files are there again' installed "$folder"
check 'with the games' games_kept "$folder"

# The removal of everything. Wine knows the attribute of a link to a folder, but removes its target
# when it is told to remove the link, as far as that is empty: the link itself can only stay here.
ln -s "$c/Other" "$folder/Realm/link"
check 'it uninstalls with the games when asked' uninstall "$folder" /REMOVEGAMES
check 'what a link in it pointed to is left' grep -qx mine "$c/Other/my.txt"
check 'nothing else of it is left' test "$(cd "$folder" && find . | tr '\n' ' ')" = '. ./Realm ./Realm/link '
rm -r "$folder"
check 'without a link: it installs once more' ends_with 0 "$setup" "${install_in_folder[@]}"
games "$folder"
check 'it uninstalls with the games when asked' uninstall "$folder" /REMOVEGAMES
check 'nothing of it is left' absent "$folder"
check 'its own registry key is gone' no_key "$own_key"

# Where it goes by itself.
default="$user/AppData/Local/Programs/Emberwake Online Launcher"
check 'it installs silently in its own folder' ends_with 0 "$setup" /S
check 'all files are there, in the player'"'"'s part' installed "$default"
cp "$default/uninstall.exe" "$c/Other/"
echo theirs > "$c/Other/Qt5Core.dll"
check 'an uninstaller that lies elsewhere refuses' ends_with 3 "$c/Other/uninstall.exe" /S '_?=C:\Other'
check 'and removes nothing' test -f "$c/Other/Qt5Core.dll"
check 'it uninstalls' uninstall "$default"
check 'the folder is gone' absent "$default"

# The installer's own part has an answer to a drive: the folder it would have used anyway.
check 'a drive as the folder does not end in an error' ends_with 0 "$setup" /S "/D=C:\\"
check 'nothing is written to the drive' absent "$c/emberwake-launcher.exe"
check 'but to its own folder' installed "$default"

print_checks
