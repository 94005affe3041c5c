#!/usr/bin/env bash
# Tests under Wine what happens when the installer meets an older launcher, a newer one, one that runs, and
# another installer: the files are replaced all or none, and nothing of the player's is touched.
#
#   packaging/windows/test-update.sh [FOLDER]     the packages' folder; default: build/packages
#
# The older launcher has the files of the package, installed in the way of the first packages
# (older-installer.nsi). Where something goes wrong halfway the packages are small ones made here.
# One line per check; the last line is "N passed, N failed", and the result says whether one failed.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
here=$root/packaging/windows
"$root/scripts/install-packages.sh" windows windows-test

# shellcheck source=wine.sh
. "$here/wine.sh"
# For root nothing is read-only, and nothing unreadable; for this Wine something is, where root may drop
# rights.
as_others=()
if [ "$(id -u)" -eq 0 ] && setpriv '--bounding-set=-dac_override,-dac_read_search' true 2> /dev/null; then
  as_others=(setpriv '--bounding-set=-dac_override,-dac_read_search')
  wine=("${as_others[@]}" "${wine[@]}")
fi
start_wine
# minds_rights: what tries them is left out where they are nothing to root.
touch "$work/unwritable"
chmod a-w "$work/unwritable"
minds_rights() {
  ! "${as_others[@]}" tee -a "$work/unwritable" < /dev/null > /dev/null 2>&1 ||
    { echo 'skip  what the rights of files decide'; return 1; }
}
# shellcheck source=installer-support.sh
. "$here/installer-support.sh"
find_packages "${1:-$root/build/packages}"

# older FOLDER OUTPUT: an installer as the first ones were.
older() {
  # shellcheck disable=SC2016 # $INSTDIR is a variable of the installer
  (
    cd "$1"
    find . -type f -printf 'SetOutPath "$INSTDIR/%P"\nFile "'"$1"'/%P"\n' | sed '/^SetOutPath/{ s|/[^/]*"$|"|; y|/|\\| }' > "$work/older-install.nsh"
    find . -type f -printf 'Delete "$INSTDIR/%P"\n' | tr / '\134' > "$work/older-uninstall.nsh"
  )
  makensis -V1 "-DINSTALL_FILES=$work/older-install.nsh" "-DUNINSTALL_FILES=$work/older-uninstall.nsh" \
    "-DOUTPUT=$2" "$here/older-installer.nsi" > "$work/makensis.log" || { cat "$work/makensis.log"; return 1; }
}
# Like a player's: with games and settings, and something of their own.
folder=$c/Игры\ и\ Welt/Emberwake
own_files_kept() {
  games_kept "$folder" && [ "$(cat "$folder/notes.txt" "$folder/platforms/mine.txt" | tr '\n' ' ')" = 'mine mine ' ]
}

echo 'Over the launcher of the first packages ...'
unzip -q "$archive" -d "$work/archive"
files=$work/archive/$(basename "$archive" .zip)
cp -r "$files" "$work/first"
rm -f "$work/first/package-files.txt"
older "$work/first" "$work/first-installer.exe"
check 'it installs' install 0 "$work/first-installer.exe" "$folder"
games "$folder"
echo mine | tee "$folder/notes.txt" > "$folder/platforms/mine.txt"
check 'the new one installs over it' install 0 "$setup" "$folder"
saved=(notes.txt mine.txt Игра Realm settings.txt offline.txt Café.png Realm.png newsBigBackground.png
  homeNewsImageBackground3.png cafe.zip)
check 'all files are there, and nothing else' has_files "$files" "$folder" "${saved[@]}"
check 'games, settings and files of the player are left' own_files_kept
check 'nothing that lay in the folder was run' absent "$c/ran.txt"

echo 'From version to version ...'
# version NUMBER: a small package.
version() {
  mkdir -p "$work/$1/platforms" "$work/$1/licenses"
  test_program "$work/$1/emberwake-launcher.exe" "$1"
  echo "$1" | tee "$work/$1/Qt5Core.dll" "$work/$1/platforms/qwindows.dll" "$work/$1/licenses/zlib-copyright.txt" > "$work/$1/unzip.exe"
}
version 0.9.0
echo old > "$work/0.9.0/UNSIGNED.txt"
older "$work/0.9.0" "$work/0.9.0.exe"
version 1.0.0
mkdir "$work/1.0.0/styles"
echo 1.0.0 > "$work/1.0.0/styles/gone.dll"
installer "$work/1.0.0" 1.0.0 "$work/1.0.0.exe"
version 1.1.0
mkdir "$work/1.1.0/fonts"
echo 1.1.0 > "$work/1.1.0/added.txt"
# Nothing packs it smaller.
head -c 3000000 /dev/urandom > "$work/1.1.0/fonts/new.ttf"
installer "$work/1.1.0" 1.1.0 "$work/1.1.0.exe"
folder=$c/Emberwake
check 'one as the first was installs' install 0 "$work/0.9.0.exe" "$folder"
games "$folder"
echo mine | tee "$folder/notes.txt" > "$folder/platforms/mine.txt"
check 'one with a list installs over it' install 0 "$work/1.0.0.exe" "$folder"
check 'a file that the first had and this one has not is gone' has_files "$work/1.0.0" "$folder" "${saved[@]}"
check 'the next one installs over that' install 0 "$work/1.1.0.exe" "$folder"
check 'so is a file of the list, with its folder' has_files "$work/1.1.0" "$folder" "${saved[@]}"
check 'games, settings and files of the player are left' own_files_kept

echo 'Written before the renames ...'
"${wine[@]}" reg add 'HKCU\Software\Wine\Debug' /v RelayInclude /d 'kernel32.FlushFileBuffers;kernel32.MoveFileW' /f > /dev/null
# With the uninstaller and both lists.
flushed_first() {
  WINEDEBUG=+relay install 0 "$work/1.1.0.exe" "$folder" > "$work/calls" 2>&1 || return 1
  [ "$(sed '/Call KERNEL32.MoveFileW/,$d' "$work/calls" | grep -c 'Call KERNEL32.FlushFileBuffers')" -eq \
    "$(($(find "$work/1.1.0" -type f | wc -l) + 3))" ]
}
check 'every file was flushed to the disk' flushed_first
check 'then it was renamed' grep -q 'Call KERNEL32.MoveFileW.*launcher-setup.tmp' "$work/calls"

echo 'An older one over a newer ...'
remember "$folder"
check 'is refused where nobody can be asked' install 6 "$work/1.0.0.exe" "$folder"
check 'and changes nothing' unchanged "$folder"
check 'it installs when that is wanted' install 0 "$work/1.0.0.exe" "$folder" /DOWNGRADE
check 'all of it' has_files "$work/1.0.0" "$folder" "${saved[@]}"
check 'with the games' own_files_kept
remember "$folder"

echo 'All files or none ...'
check 'the launcher runs' start_program "$folder/emberwake-launcher.exe"
check 'nothing is replaced then' install 2 "$work/1.1.0.exe" "$folder"
check 'the removal is refused as well' uninstall 2 "$folder"
check 'the launcher ends by itself' end_program
rights() { stat -c %A "$folder/emberwake-launcher.exe"; }
with_rights() { [ "$(rights)" = "$1" ] || { rights; return 1; }; }
before=$(rights)
chmod a-w "$folder/emberwake-launcher.exe"
check 'it runs, marked as read-only' start_program "$folder/emberwake-launcher.exe"
check 'nothing is replaced then' install 2 "$work/1.1.0.exe" "$folder"
check 'nor removed' uninstall 2 "$folder"
check 'it ends by itself' end_program
check 'and is marked as before' with_rights "${before//w/-}"
chmod u+w "$folder/emberwake-launcher.exe"
check 'a library is held by a program' start_program "$work/1.0.0/emberwake-launcher.exe" 'C:\Emberwake\platforms\qwindows.dll'
check 'nothing is replaced then' install 2 "$work/1.1.0.exe" "$folder"
check 'that ends' end_program
check 'everything is as it was' unchanged "$folder"
full_disk() (
  # A file of more than a megabyte cannot be written, and nobody is ended for trying.
  trap '' XFSZ
  ulimit -f 1024
  install 5 "$work/1.1.0.exe" "$folder"
)
check 'without room it ends' full_disk
check 'everything is as it was' unchanged "$folder"
# The renames have begun when this is noticed.
rm -rf "$folder/fonts"
echo mine | tee "$folder/added.txt" > "$folder/fonts"
remember "$folder"
check 'what cannot be put in its place ends it' install 5 "$work/1.1.0.exe" "$folder"
check 'everything is as it was' unchanged "$folder"
rm -rf "$folder/fonts" "$folder/added.txt"

echo 'Files of the player with names that are new ...'
kept() { [ "$(cd "$1" && grep -r . | LC_ALL=C sort | tr '\n' ' ')" = "added.txt:$2 fonts/new.ttf:$2 " ]; }
for kept_files in 'Kept files' 'Kept files 2'; do
  mkdir "$folder/fonts"
  echo "mine, $kept_files" | tee "$folder/added.txt" > "$folder/fonts/new.ttf"
  check 'the version that has them installs' install 0 "$work/1.1.0.exe" "$folder"
  check 'all of it' has_files "$work/1.1.0" "$folder" "${saved[@]}" 'Kept files*'
  check 'and the player'"'"'s are kept' kept "$folder/$kept_files" "mine, $kept_files"
  check 'the version before installs again' install 0 "$work/1.0.0.exe" "$folder" /DOWNGRADE
done
check 'nothing else was taken for the player'"'"'s' test "$(find "$folder/Kept files"* -type f | wc -l)" -eq 4
rm -rf "$folder/Kept files"*

echo 'One that was killed among the renames ...'
echo mine > "$folder/added.txt"
remember "$folder"
mkdir -p "$folder/launcher-setup.tmp/new/fonts" "$folder/launcher-setup.tmp/new/licenses" "$folder/launcher-setup.tmp/new/platforms" \
  "$folder/launcher-setup.tmp/old/styles" "$folder/launcher-setup.tmp/old/platforms" \
  "$folder/launcher-setup.tmp/none/fonts/new.ttf" "$folder/launcher-setup.tmp/own"
cp "$work/1.0.0/package-files.txt" "$folder/launcher-setup.tmp/old-files.txt"
cp "$work/1.1.0/package-files.txt" "$folder/launcher-setup.tmp/new-files.txt"
cp "$work/1.1.0/emberwake-launcher.exe" "$work/1.1.0/unzip.exe" "$folder/launcher-setup.tmp/new/"
cp "$work/1.1.0/licenses/zlib-copyright.txt" "$folder/launcher-setup.tmp/new/licenses/"
cp "$work/1.1.0/platforms/qwindows.dll" "$folder/launcher-setup.tmp/new/platforms/"
cp "$folder/uninstall.exe" "$folder/launcher-setup.tmp/new/"
mv "$folder"/{emberwake-launcher.exe,Qt5Core.dll,package-files.txt} "$folder/launcher-setup.tmp/old/"
mv "$folder/platforms/qwindows.dll" "$folder/launcher-setup.tmp/old/platforms/"
mv "$folder/styles/gone.dll" "$folder/launcher-setup.tmp/old/styles/"
mv "$folder/added.txt" "$folder/launcher-setup.tmp/own/"
mkdir "$folder/fonts"
cp "$work/1.1.0"/{Qt5Core.dll,added.txt,package-files.txt} "$folder/"
cp "$work/1.1.0/fonts/new.ttf" "$folder/fonts/"
# One that must not install shows what came back.
version 0.1.0
installer "$work/0.1.0" 0.1.0 "$work/0.1.0.exe"
check 'the next installer goes on from before' install 6 "$work/0.1.0.exe" "$folder"
check 'everything is as it was' unchanged "$folder"
# And one that was killed while it took back: all is in its place again, and must stay there.
killed_while_taking_back() {
  mkdir -p "$folder/launcher-setup.tmp/old" "$folder/launcher-setup.tmp/none/fonts/new.ttf"
  cp "$work/1.0.0/package-files.txt" "$folder/launcher-setup.tmp/old-files.txt"
  cp "$work/1.1.0/package-files.txt" "$folder/launcher-setup.tmp/new-files.txt"
}
killed_while_taking_back
check 'the next installer takes nothing back twice' install 6 "$work/0.1.0.exe" "$folder"
check 'everything is as it was' unchanged "$folder"
killed_while_taking_back
mv "$folder/emberwake-launcher.exe" "$folder/launcher-setup.tmp/old/"
check 'nor when the program alone is not back' install 6 "$work/0.1.0.exe" "$folder"
check 'everything is as it was' unchanged "$folder"
killed_while_taking_back
mv "$folder"/{emberwake-launcher.exe,Qt5Core.dll} "$folder/launcher-setup.tmp/old/"
check 'what must go back is held' start_program "$work/1.0.0/emberwake-launcher.exe" 'C:\Emberwake\launcher-setup.tmp\old\Qt5Core.dll'
check 'what is not finished has a result of its own' install 7 "$work/0.1.0.exe" "$folder"
check 'nobody starts a half' absent "$folder/emberwake-launcher.exe"
check 'that ends' end_program
check 'the next installer finishes it' install 6 "$work/0.1.0.exe" "$folder"
check 'everything is as it was' unchanged "$folder"
killed_while_taking_back
mv "$folder/emberwake-launcher.exe" "$folder/launcher-setup.tmp/old/"
mkdir "$folder/fonts"
cp "$work/1.1.0/fonts/new.ttf" "$folder/fonts/"
check 'what must go is held, in a place where nothing was' start_program "$work/1.0.0/emberwake-launcher.exe" 'C:\Emberwake\fonts\new.ttf'
check 'that is not finished either' install 7 "$work/0.1.0.exe" "$folder"
check 'nobody starts a half' absent "$folder/emberwake-launcher.exe"
check 'that ends' end_program
check 'the next installer finishes it' install 6 "$work/0.1.0.exe" "$folder"
check 'everything is as it was' unchanged "$folder"
# A player who did not wait for it unpacked the archive over it.
killed_while_taking_back
cp "$folder/emberwake-launcher.exe" "$folder/launcher-setup.tmp/old/"
echo older > "$folder/launcher-setup.tmp/old/Qt5Core.dll"
check 'what was repaired by hand stays' install 6 "$work/0.1.0.exe" "$folder"
check 'everything is as it was' unchanged "$folder"

# One that was killed behind the renames.
killed_while_taking_back
mkdir "$folder/launcher-setup.tmp/own"
echo waits > "$folder/launcher-setup.tmp/own/own.txt"
check 'the next installer keeps what waits there' install 6 "$work/0.1.0.exe" "$folder"
check 'it is not lost' grep -qx waits "$folder/Kept files/own.txt"
rm -rf "$folder/Kept files"
check 'everything else is as it was' unchanged "$folder"

# One that was killed later, and somebody holds what it could not remove any more.
mkdir -p "$folder/launcher-setup.tmp/old"
cp "$work/1.0.0/package-files.txt" "$folder/launcher-setup.tmp/new-files.txt"
echo old | tee "$folder/launcher-setup.tmp/old/Qt5Core.dll" > "$folder/launcher-setup.tmp/old/a.dll"
check 'what it left is held' start_program "$work/1.0.0/emberwake-launcher.exe" 'C:\Emberwake\launcher-setup.tmp\old\Qt5Core.dll'
check 'the next installer says so' install 2 "$work/1.0.0.exe" "$folder"
check 'that ends' end_program
check 'the one after it goes on' install 0 "$work/1.0.0.exe" "$folder"
check 'everything is as it was' unchanged "$folder"
# Somebody else's.
mkdir -p "$folder/launcher-setup.tmp/new"
echo mine > "$folder/launcher-setup.tmp/new/notes.txt"
check 'a folder that only has the name of the installer'"'"'s ends it' install 3 "$work/1.1.0.exe" "$folder"
check 'and stays' grep -qx mine "$folder/launcher-setup.tmp/new/notes.txt"
rm -rf "$folder/launcher-setup.tmp"

# The player saved it there, or started it from there.
in_its_folder() (cd "$folder" && install 0 "$work/1.0.0.exe" "$folder")
check 'it installs when it is started in the folder itself' in_its_folder
check 'everything is as it was' unchanged "$folder"

echo 'Two at once ...'
"${wine[@]}" "$work/1.1.0.exe" > /dev/null 2>&1 &
first=$!
check 'an installer waits for its player' window_appears 'Setup'
check 'a second one ends' install 2 "$work/1.1.0.exe" "$folder"
check 'so does an uninstaller' uninstall 2 "$folder"
kill "$first"
wait "$first" || true
check 'everything is as it was' unchanged "$folder"

echo 'What is not the launcher'"'"'s ...'
mkdir "$c/Other"
echo theirs > "$c/Other/qwindows.dll"
rm -rf "$folder/platforms"
ln -s "$c/Other" "$folder/platforms"
check 'a folder of the package that is a link is not followed' install 3 "$work/1.1.0.exe" "$folder"
check 'nor by the removal' uninstall 0 "$folder"
check 'what lies behind it is theirs' grep -qx theirs "$c/Other/qwindows.dll"
check 'the rest is gone' absent "$folder/emberwake-launcher.exe"
rm -rf "$folder/platforms"
check 'it installs again' install 0 "$work/1.0.0.exe" "$folder"
if minds_rights; then
  # Another list would leave files of the version before.
  remember "$folder"
  chmod a-r "$folder/package-files.txt"
  begins_nothing() {
    WINEDEBUG=+relay install 2 "$work/1.1.0.exe" "$folder" > "$work/calls" 2>&1 && fails grep 'Call KERNEL32.MoveFileW' "$work/calls"
  }
  check 'nothing is begun when the list of its files cannot be read' begins_nothing
  chmod u+r "$folder/package-files.txt"
  check 'everything is as it was' unchanged "$folder"
fi
# Another program's uninstaller, beside a launcher that was unpacked from the archive.
cat > "$work/other.nsi" << 'NSIS'
Target amd64-unicode
Unicode true
RequestExecutionLevel user
Name Other
OutFile "${OUTPUT}"
Section
  FileOpen $0 "C:\ran.txt" w
  FileClose $0
SectionEnd
NSIS
makensis -V1 "-DOUTPUT=$work/other.exe" "$work/other.nsi" > /dev/null
cp -r "$work/1.0.0" "$c/Unpacked"
cp "$work/other.exe" "$c/Unpacked/uninstall.exe"
remember "$c/Unpacked"
check 'the uninstaller of another program is no reason to go on' install 3 "$work/1.1.0.exe" "$c/Unpacked"
check 'it was not run' absent "$c/ran.txt"
check 'and everything is as it was' unchanged "$c/Unpacked"
rm -f "$c/Unpacked/uninstall.exe"
check 'without it the unpacked launcher gets the new version' install 0 "$work/1.1.0.exe" "$c/Unpacked"
check 'a file of its list is gone' has_files "$work/1.1.0" "$c/Unpacked"
# A list that names what is not of the package.
printf '..\\Emberwake\\notes.txt\r\nC:\\Emberwake\\notes.txt\r\nsettings.txt\r\n\\notes.txt\r\nplatforms\\..\\..\\Emberwake\\notes.txt\r\n' > "$c/Unpacked/package-files.txt"
echo settings > "$c/Unpacked/settings.txt"
check 'a list that leads elsewhere removes nothing' install 0 "$work/1.1.0.exe" "$c/Unpacked"
check 'nothing there' test -f "$folder/notes.txt" -a -f "$c/Unpacked/settings.txt"
if minds_rights; then
  # Removed after an update that was killed behind the renames.
  rm -rf "$c/Unpacked/Kept files"
  mkdir -p "$c/Unpacked/launcher-setup.tmp/own"
  echo waits > "$c/Unpacked/launcher-setup.tmp/own/own.txt"
  cp "$work/1.1.0/package-files.txt" "$c/Unpacked/launcher-setup.tmp/new-files.txt"
  chmod a-w "$c/Unpacked/platforms"
  check 'a removal that is not finished has that result as well' uninstall 7 "$c/Unpacked"
  check 'Windows still knows the launcher' "${wine[@]}" reg query "$key"
  chmod u+w "$c/Unpacked/platforms"
  # As when somebody has opened it: Windows renames no folder with such a file in it, where this one does.
  mkdir -p "$c/Unpacked/launcher-setup.tmp/own"
  echo waits > "$c/Unpacked/launcher-setup.tmp/own/another.txt"
  cp "$work/1.1.0/package-files.txt" "$c/Unpacked/launcher-setup.tmp/new-files.txt"
  chmod a-w "$c/Unpacked/launcher-setup.tmp/own"
  check 'nor is it finished while something waits that cannot be moved' uninstall 7 "$c/Unpacked"
  check 'which is still there' grep -qx waits "$c/Unpacked/launcher-setup.tmp/own/another.txt"
  check 'and the uninstaller as well' test -f "$c/Unpacked/uninstall.exe"
  chmod u+w "$c/Unpacked/launcher-setup.tmp/own"
  check 'it uninstalls' uninstall 0 "$c/Unpacked"
  check 'and keeps what waited there' grep -qx waits "$c/Unpacked/Kept files/own.txt"
  check 'all of it' grep -qx waits "$c/Unpacked/Kept files 2/another.txt"
  check 'nothing is left of the installer'"'"'s folder' absent "$c/Unpacked/launcher-setup.tmp"
  # The launcher that Windows knows was another one: this one is known by what lies in its folder.
  chmod a-w "$folder/platforms"
  check 'the removal of one that Windows does not know is not finished' uninstall 7 "$folder"
  check 'though its program is gone' absent "$folder/emberwake-launcher.exe"
  chmod u+w "$folder/platforms"
  check 'the next one finishes it' uninstall 0 "$folder"
  check 'with the list of its files' absent "$folder/package-files.txt"
fi

print_checks
