# What the tests of the installer share; sourced behind wine.sh, after start_wine.
# shellcheck shell=bash disable=SC2154 # wine.sh says where things are

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
# find_packages FOLDER: the packages' $setup and $archive, in a folder that holds one of each.
find_packages() {
  local folder setups archives
  folder=$(cd "$1" && pwd)
  mapfile -t setups < <(compgen -G "$folder/emberwake-launcher-*-setup.exe")
  mapfile -t archives < <(compgen -G "$folder/emberwake-launcher-*-windows-x86_64.zip")
  if [ "${#setups[@]}" -ne 1 ] || [ "${#archives[@]}" -ne 1 ]; then
    echo "$folder must hold one installer and one archive" >&2
    exit 1
  fi
  # shellcheck disable=SC2034 # for those who source this
  setup=${setups[0]} archive=${archives[0]}
}
# shellcheck disable=SC2034
key='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Emberwake Online Launcher'
# shellcheck disable=SC2034
own_key='HKCU\Software\Emberwake Online Launcher'
no_key() { ! "${wine[@]}" reg query "$1"; }

# test_program FILE VERSION [PRODUCT]: a program with a version that runs until it is told to end.
test_program() {
  {
    printf '#include <windows.h>\nVS_VERSION_INFO VERSIONINFO\nFILEVERSION %s,0\nBEGIN\n' "${2//./,}"
    if [ "$#" -gt 2 ]; then
      printf 'BLOCK "StringFileInfo"\nBEGIN\nBLOCK "040904b0"\nBEGIN\nVALUE "ProductName", "%s"\nEND\nEND\n' "$3"
      printf 'BLOCK "VarFileInfo"\nBEGIN\nVALUE "Translation", 0x0409, 1200\nEND\n'
    fi
    echo END
  } > "$work/version.rc"
  x86_64-w64-mingw32-windres "$work/version.rc" "$work/version.o"
  x86_64-w64-mingw32-gcc-posix -Os -s -mwindows -o "$1" "$root/packaging/windows/test-program.c" "$work/version.o"
}
# start_program PROGRAM [FILE]: starts one, in its folder, and waits until it runs.
start_program() {
  (cd "$(dirname "$1")" && exec "${wine[@]}" "$1" 'C:\running.txt' "${@:2}") > /dev/null 2>&1 &
  program_pid=$!
  for _ in {1..600}; do
    [ ! -f "$c/running.txt" ] || return 0
    sleep 0.1
  done
  echo 'it does not run'
  return 1
}
end_program() {
  rm -f "$c/running.txt"
  wait "$program_pid"
}

# installer FOLDER VERSION OUTPUT: an installer with the files of the folder, which gets their list.
installer() {
  cat > "$work/product.nsh" << NSIS
!define NAME "Emberwake Online Launcher"
!define NAME_IN_WINDOWS "Emberwake Online Launcher"
!define VERSION $2
!define PUBLISHER "Emberwake"
!define COPYRIGHT ""
!define URL "https://www.emberwake.example/"
!define ICON "$root/images/clienticon.ico"
NSIS
  "$root/packaging/windows/list-files.sh" "$1" "$work/files.nsh"
  makensis -V1 -WX -INPUTCHARSET UTF8 "-DPRODUCT=$work/product.nsh" "-DFILES=$work/files.nsh" \
    "-DFILE_LIST=$1/package-files.txt" -DSIZE=1 -DSIGN=true "-DUNINSTALLER=$work/uninstaller.exe" "-DOUTPUT=$3" \
    "$root/packaging/windows/installer.nsi" > "$work/makensis.log" || { cat "$work/makensis.log"; return 1; }
}

# has_files FOLDER INSTALLED [NAME...]: each file of the package is there, the same; and nothing else but
# the uninstaller and what has one of the names.
has_files() {
  local name excluded=(-x uninstall.exe)
  for name in "${@:3}"; do
    excluded+=(-x "$name")
  done
  [ -f "$2/uninstall.exe" ] || { echo 'no uninstaller'; return 1; }
  diff -r "${excluded[@]}" "$1" "$2"
}
# What a folder holds, and what is in it: before and after something that must change nothing.
snapshot() {
  (cd "$1" && find . -printf '%p %y %l\n' | LC_ALL=C sort && find . -type f -exec sha256sum {} + | LC_ALL=C sort)
}
remember() { snapshot "$1" > "$work/remembered"; }
unchanged() { snapshot "$1" | diff "$work/remembered" -; }
# NAME: the window of the program is there, or comes within a minute.
window_appears() {
  for _ in {1..600}; do
    [ -z "$(xdotool search --onlyvisible --name "$1" 2> /dev/null)" ] || return 0
    sleep 0.1
  done
  return 1
}
# Something of everything that the launcher itself writes.
games() {
  mkdir -p "$1/Игра/Official/1.0/data" "$1/Realm/Beta"
  echo game > "$1/Игра/Official/1.0/game.exe"
  echo data > "$1/Игра/Official/1.0/data/saved"
  echo settings > "$1/settings.txt"
  echo '<client server="Café" url="https://games.example/cafe.zip"/>' | iconv -t cp1252 > "$1/offline.txt"
  echo logo | tee "$1/Café.png" "$1/Realm.png" "$1/newsBigBackground.png" "$1/homeNewsImageBackground3.png" > "$1/cafe.zip"
}
games_kept() {
  [ "$(cat "$1/Игра/Official/1.0/game.exe" "$1/Игра/Official/1.0/data/saved" "$1/settings.txt" "$1/Realm.png" | tr '\n' ' ')" = 'game data settings logo ' ]
}
# The arguments of an installer for a folder. It takes the rest of its command line for the name, and Wine
# would put one argument with blanks into quotation marks: so each word is an argument.
folder_arguments() { read -ra words <<< "$1C:$(tr / '\134' <<< "${2#"$c"}")"; }
# install RESULT SETUP FOLDER [OPTION...]: silently, and ends with the result.
install() {
  local words
  folder_arguments /D= "$3"
  ends_with "$1" "$2" /S "${@:4}" "${words[@]}"
}
# uninstall RESULT FOLDER [OPTION...]: the same. Started in its folder it would go on by a copy of itself,
# and nobody would learn how that ends; so it is one here.
uninstall() {
  local words
  cp "$2/uninstall.exe" "$work/uninstaller.exe"
  folder_arguments '_?=' "$2"
  ends_with "$1" "$work/uninstaller.exe" /S "${@:3}" "${words[@]}"
}
