#!/usr/bin/env bash
# Tests the installer under Wine, on a virtual display and in a Wine folder of its own:
#
#   packaging/windows/test-installer.sh [FOLDER]     the packages' folder; default: build/packages
#
# One line per check; the last line is "N passed, N failed", and the result says whether one failed.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
"$root/scripts/install-packages.sh" windows windows-test

# shellcheck source=wine.sh
. "$root/packaging/windows/wine.sh"
# Wine makes a player's folders links to these, when it finds them.
mkdir "$HOME"/{Downloads,Documents,Music,Pictures}
start_wine

# shellcheck source=installer-support.sh
. "$root/packaging/windows/installer-support.sh"
find_packages "${1:-$root/build/packages}"
version=${setup##*/emberwake-launcher-}
version=${version%-setup.exe}

# registered NAME VALUE: what stands in the registry's export, where a backslash is written twice.
registered() {
  "${wine[@]}" reg export "$key" 'C:\export.reg' /y > /dev/null
  iconv -f utf-16 -t utf-8 "$c/export.reg" | tr -d '\r' > "$work/export"
  grep -F "\"$1\"=" "$work/export" | tee "$work/value"
  grep -qF "${2//\\/\\\\}" "$work/value"
}
# The files of a package, in a folder: all there, and the same.
unzip -q "$archive" -d "$work/archive"
files=$work/archive/$(basename "$archive" .zip)
saved=(Игра Realm settings.txt offline.txt Café.png Realm.png newsBigBackground.png homeNewsImageBackground3.png
  cafe.zip Mine)
installed() { has_files "$files" "$1" "${saved[@]}"; }
in_bill() { grep -F "\"$(sha256sum < "$1" | cut -d ' ' -f 1)\"" "${archive%.zip}.cdx.json"; }
# Nothing that the package brought is left in the folder.
program_gone() {
  local file
  while read -r file; do
    absent "$1/$file" || { echo "$file is left"; return 1; }
  done < <(cd "$files" && find . -mindepth 1 -printf '%P\n')
  absent "$1/uninstall.exe"
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
folder=$c/Игры\ и\ Welt/Emberwake
programs="$user/AppData/Roaming/Microsoft/Windows/Start Menu/Programs"
shortcut="$programs/Emberwake Online Launcher.lnk"

echo 'Folders that are not the launcher'"'"'s ...'
mkdir "$work/small"
test_program "$work/small/emberwake-launcher.exe" "$version"
# As long as the longest name in the packages.
mkdir "$work/small/licenses"
echo small > "$work/small/licenses/mingw-w64-copyright.txt"
installer "$work/small" "$version" "$work/small.exe"
small=$work/small.exe
check 'a folder of Windows is refused' install 3 "$small" "$c/windows/Emberwake"
check 'the folder of all programs is refused' install 3 "$small" "$c/Program Files"
check 'the way around by ".." is refused' install 3 "$small" "$c/windows/../Program Files"
# Empty ones, of which nothing else would be said.
for name in Downloads Documents Music Pictures 'Saved Games'; do
  mkdir -p "$user/$name"
  check "it is empty: $name" test -z "$(ls -A "$user/$name/")"
  check "a player's folder is refused: $name" install 3 "$small" "$user/$name"
done
ln -s "$user/Downloads" "$c/Link"
check 'by another name as well' install 3 "$small" "$c/Link"
OneDrive='C:\Sky\Cloud' check "a cloud's folder is refused" install 3 "$small" "$c/Sky/Cloud"
OneDrive='C:\Sky\Cloud' check 'and the documents in it' install 3 "$small" "$c/Sky/Cloud/Documents"
OneDrive='C:\Sky\Cloud' check 'and the folder around it' install 3 "$small" "$c/Sky"
OneDrive='C:\Sky\Cloud' check 'but not one of a game in it' install 0 "$small" "$c/Sky/Cloud/Emberwake"
check 'which goes again' uninstall 0 "$c/Sky/Cloud/Emberwake"
mkdir -p "$c/Other"
echo mine > "$c/Other/my.txt"
check 'a folder with other files is refused' install 3 "$small" "$c/Other"
check 'nothing was written there' absent "$c/Other/emberwake-launcher.exe"
long=$c/$(printf 'Long%.0s' {1..20})/$(printf 'Path%.0s' {1..20})
check 'a path in which files would have too long ones is refused' install 3 "$small" "$long/$(printf 'Game%.0s' {1..13})"
# Nobody, not even root, makes a file there.
ln -s /proc/sys "$c/ReadOnly"
check 'a folder that cannot be written is told' install 5 "$small" "$c/ReadOnly/Emberwake"
check 'nothing was registered' no_key "$key"

echo 'Installed ...'
check 'it installs silently, blanks and Cyrillic letters in the path' install 0 "$setup" "$folder"
check 'all files are there' installed "$folder"
check 'the uninstaller is the one in the bill of materials' in_bill "$folder/uninstall.exe"
check 'the start menu entry works in the folder' link_says 'C:\Игры и Welt\Emberwake'
check 'Windows knows the name' registered DisplayName 'Emberwake Online Launcher'
check 'Windows knows the version' registered DisplayVersion "\"$version\""
check 'Windows knows the publisher' registered Publisher Emberwake
check 'Windows knows the web address' registered URLInfoAbout https://www.emberwake.example/
check 'Windows knows the icon' registered DisplayIcon 'C:\Игры и Welt\Emberwake\emberwake-launcher.exe'
check 'Windows knows the uninstaller' registered UninstallString 'C:\Игры и Welt\Emberwake\uninstall.exe'
check 'Windows knows the size' registered EstimatedSize dword:0000
games "$folder"

# It runs, and is noticed.
(cd "$folder" && exec "${wine[@]}" emberwake-launcher.exe) > /dev/null 2>&1 &
launcher=$!
check 'the launcher opens its window' window_appears 'Emberwake Launcher'
check 'an update while it runs is refused' install 2 "$setup" "$folder"
check 'so is the removal' uninstall 2 "$folder"
check 'and nothing is missing' installed "$folder"
kill "$launcher"
wait "$launcher" || true
# It writes what it was given as it likes.
games "$folder"

echo 'Removed, and back again ...'
# Started in its folder the uninstaller goes on by a copy of itself.
by_itself() {
  timeout 120 "${wine[@]}" "$1/uninstall.exe" /S
  timeout 300 /usr/lib/wine/wineserver64 --wait
}
check 'it uninstalls silently' by_itself "$folder"
check 'the program is gone' program_gone "$folder"
check 'games and settings are left' games_kept "$folder"
check 'Windows does not know it any more' no_key "$key"
check 'its entry in the start menu is gone' absent "$shortcut"
check 'without a folder given it returns to the games' ends_with 0 "$setup" /S
check 'all files are there again' installed "$folder"
check 'with the games' games_kept "$folder"

echo 'With the games ...'
check 'a small one installs over it' install 0 "$small" "$folder"
check 'and has only its own files there' has_files "$work/small" "$folder" "${saved[@]}"
# Deeper than Windows' usual 260 letters.
deep=$folder/Игра/Official/1.0/data/$(printf 'Long%.0s' {1..40})/$(printf 'Path%.0s' {1..40})
mkdir -p "$deep"
echo deep > "$deep/file"
test_program "$folder/Игра/Official/1.0/game.exe" 1.0.0
remember "$folder"
check 'a game runs' start_program "$folder/Игра/Official/1.0/game.exe"
check 'nothing is removed while it does' uninstall 2 "$folder" /REMOVEGAMES
check 'everything is as it was' unchanged "$folder"
check 'the game ends by itself' end_program
# What the player has put there, some of it in places like the launcher's own.
mkdir -p "$folder/Mine/Official/Notes" "$folder/Mine/2026" "$folder/Игра/Screenshots"
echo mine | tee "$folder/Mine/Official/Notes/a.txt" "$folder/Mine/2026/b.txt" "$folder/Игра/Screenshots/c.png" \
  "$folder/photo.png" "$folder/backup.zip" > "$folder/notes.txt"
ln -s "$c/Other" "$folder/Игра/Official/2.0"
ln -s "$c/Other" "$folder/Moved"
mkdir -p "$c/Other/Official/1.0"
echo mine > "$c/Other/Official/1.0/game.exe"
check 'it uninstalls with the games when asked' uninstall 0 "$folder" /REMOVEGAMES
left() { (cd "$folder" && find . ! -type d | LC_ALL=C sort | tr '\n' ' '); }
check "only the player's own is left" \
  test "$(left)" = './Mine/2026/b.txt ./Mine/Official/Notes/a.txt ./Moved ./backup.zip ./notes.txt ./photo.png ./Игра/Official/2.0 ./Игра/Screenshots/c.png '
check 'and what links lead to' test "$(cat "$c/Other/my.txt" "$c/Other/Official/1.0/game.exe" | tr '\n' ' ')" = 'mine mine '
rm -rf "$folder"
check 'without anything of the player'"'"'s: it installs once more' install 0 "$small" "$folder"
games "$folder"
check 'it uninstalls with the games when asked' uninstall 0 "$folder" /REMOVEGAMES
check 'nothing of it is left' absent "$folder"
check 'its own registry key is gone' no_key "$own_key"

echo 'Two players ...'
default="$user/AppData/Local/Programs/Emberwake Online Launcher"
check 'it installs silently in its own folder' ends_with 0 "$small" /S
check 'all files are there, in the player'"'"'s part' has_files "$work/small" "$default"
mkdir -p "$c/Unknown"
cp "$default/uninstall.exe" "$c/Unknown/"
echo theirs > "$c/Unknown/Qt5Core.dll"
check 'an uninstaller that lies elsewhere refuses' uninstall 3 "$c/Unknown"
check 'and removes nothing' test -f "$c/Unknown/Qt5Core.dll"
# Another player has other folders, and a registry that knows nothing of the first one's.
remember "$default"
second="$c/users/Jörg Игрок"
shell_folders='HKCU\Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders'
become() {
  "${wine[@]}" reg add "$shell_folders" /v 'Local AppData' /d "C:\\users\\$1\\AppData\\Local" /f
  "${wine[@]}" reg add "$shell_folders" /v Programs /d "C:\\users\\$1\\Programs" /f
  "${wine[@]}" reg delete "$key" /f
  "${wine[@]}" reg delete "$own_key" /f
}
mkdir -p "$second/Programs" "$second/AppData/Local"
check 'there is a second player' become 'Jörg Игрок'
check 'it installs for the second one' ends_with 0 "$small" /S
check 'all files are there, in this one'"'"'s part' has_files "$work/small" "$second/AppData/Local/Programs/Emberwake Online Launcher"
check 'and the entry in the start menu' test -f "$second/Programs/Emberwake Online Launcher.lnk"
check 'it uninstalls' uninstall 0 "$second/AppData/Local/Programs/Emberwake Online Launcher" /REMOVEGAMES
check 'the folder is gone' absent "$second/AppData/Local/Programs/Emberwake Online Launcher"
check 'the first one'"'"'s is as it was' unchanged "$default"
check 'so is the entry' test -f "$shortcut"

echo 'Launchers and games that Windows does not know ...'
name='Emberwake Online Launcher'
unpacked=$c/Games/Unpacked
mkdir -p "$unpacked"
cp -r "$work/small/." "$unpacked/"
games "$unpacked"
there() { has_files "$work/small" "$1" "${saved[@]}" && absent "$1/$name"; }
# The page appends the name to the folder that a player browses to.
check 'the folder of an unpacked launcher, with the name appended' install 0 "$small" "$unpacked/$name"
check 'it is there, and not in a folder in it' there "$unpacked"
check 'with the games' games_kept "$unpacked"
check 'Windows knows that folder' registered InstallLocation '"C:\Games\Unpacked"'
check 'so is that of an installed one' install 0 "$small" "$unpacked/$name"
check 'it is there' there "$unpacked"
check 'it uninstalls' uninstall 0 "$unpacked"
check 'and the folder where one was' install 0 "$small" "$unpacked/$name"
check 'it is there' there "$unpacked"
check 'it uninstalls' uninstall 0 "$unpacked"
# As in a Windows that was installed anew.
forget() { "${wine[@]}" reg delete "$own_key" /f; }
check 'Windows forgets the folder' forget
check 'games alone make it the launcher'"'"'s' install 0 "$small" "$unpacked"
check 'it is there' there "$unpacked"
check 'with the games' games_kept "$unpacked"
check 'it uninstalls' uninstall 0 "$unpacked"
check 'Windows forgets the folder' forget
check 'so do they with the name appended' install 0 "$small" "$unpacked/$name"
check 'it is there' there "$unpacked"
check 'it uninstalls' uninstall 0 "$unpacked"
check 'Windows forgets the folder' forget
rm -rf "$unpacked/Игра"
check 'settings alone do not' install 3 "$small" "$unpacked"
mkdir -p "$c/Looks/Mod/Official/1.0"
check 'nor do folders with the names of games' install 3 "$small" "$c/Looks"
# What is the launcher's already, and what must not be.
cp -r "$unpacked/." "$work/small/." "$c/Looks/"
mkdir "$c/Looks/$name"
cp -r "$work/small/." "$c/Looks/$name/"
check 'a launcher in the folder of another gets the new one' install 0 "$small" "$c/Looks/$name"
check 'which is there' has_files "$work/small" "$c/Looks/$name"
check 'and not around it' absent "$c/Looks/uninstall.exe"
cp "$work/small/emberwake-launcher.exe" "$user/Downloads/"
cp "$work/small/emberwake-launcher.exe" "$c/"
for around in "$user/Downloads" "$c"; do
  check 'beside a launcher in a folder that it may not have' install 0 "$small" "$around/$name"
  check 'it has a folder for itself' has_files "$work/small" "$around/$name"
done
rm "$c/emberwake-launcher.exe"
check 'Windows forgets the folder' forget
mkdir "$c/Others"
test_program "$c/Others/emberwake-launcher.exe" "$version" 'Another Launcher'
check "so does it beside another product's, which has the same file name" install 0 "$small" "$c/Others/$name"
check 'it has a folder for itself' has_files "$work/small" "$c/Others/$name"
rm -rf "$c/Others/$name"
check 'Windows forgets the folder' forget
test_program "$c/Others/emberwake-launcher.exe" "$version" "$name"
check 'one of the same product gets the new one' install 0 "$small" "$c/Others/$name"
check 'it is there' there "$c/Others"
rm "$c/Others/uninstall.exe"
# What would end an installation there is no reason to end one that somebody wants elsewhere.
for theirs in uninstall.exe launcher-setup.tmp/notes.txt; do
  check 'Windows forgets the folder' forget
  mkdir -p "$(dirname "$c/Others/$theirs")"
  echo theirs > "$c/Others/$theirs"
  check "beside a launcher with somebody else's $theirs" install 0 "$small" "$c/Others/$name"
  check 'it has a folder for itself' has_files "$work/small" "$c/Others/$name"
  check 'theirs stays' grep -qx theirs "$c/Others/$theirs"
  rm -rf "$c/Others/$name" "${c:?}/Others/$theirs"
done
# That folder was removed by hand, and Windows still knows it.
check 'what Windows knows, and is gone, is no reason for a folder in a folder' install 0 "$small" "$c/Others/$name"
check 'it is there' there "$c/Others"
echo mine > "$c/Others/notes.txt"
check 'it uninstalls' uninstall 0 "$c/Others"
check 'nor is a folder where nothing of it is left a reason to go there' install 0 "$small" "$c/Others/$name"
check 'it has a folder for itself' has_files "$work/small" "$c/Others/$name"
check 'and is not beside what lies around it' absent "$c/Others/emberwake-launcher.exe"

# The installer's own part has an answer to a drive: the folder it would have used anyway.
check 'a drive as the folder does not end in an error' ends_with 0 "$small" /S "/D=C:\\"
check 'nothing is written to the drive' absent "$c/emberwake-launcher.exe"

print_checks
