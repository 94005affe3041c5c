#!/usr/bin/env bash
# Runs a Windows program on a Windows of its own, with a virtual display of its own, and takes both
# down afterwards:
#
#   with-wine.sh [--window-manager] [--dpi N] [--show FILE] PROGRAM.exe ARGUMENT...
#
# With --dpi its screen has N dots per inch (96 are 100 %).
# The file of --show is printed afterwards: the toolkit's test log does not reach standard output
# there. EMBERWAKE_WINE_TEMPLATE names a folder with a Windows that is set up already; a copy of it is made
# for the program, so that programs that run at the same time do not meet. WINEPATH is handed on:
# Windows finds libraries there.
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)

if [[ ${1:-} != --inside ]]; then
  display=("$here/with-display.sh")
  if [[ $1 == --window-manager ]]; then
    display+=("$1")
    shift
  fi
  exec "${display[@]}" "${BASH_SOURCE[0]}" --inside "$@"
fi
shift

wine=/usr/lib/wine/wine64
wineserver=/usr/lib/wine/wineserver64
# In /tmp: the path of the server's socket must be short.
scratch=$(mktemp -d /tmp/emberwake-wine.XXXXXX)
# Windows' folders of the player are links into the home: a test that removes something there must
# not reach that of the one who runs it.
export HOME=$scratch/home
mkdir "$HOME"
export WINEPREFIX=$scratch/prefix WINEDEBUG=${WINEDEBUG:--all} WINEARCH=win64
# No half-installed desktop integration of the one who runs this.
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=;winedbg.exe,winemenubuilder.exe=d}"
unset QT_QPA_PLATFORM
# shellcheck disable=SC2317 # the trap calls it
finish() {
  "$wineserver" --kill 2>/dev/null || true
  "$wineserver" --wait 2>/dev/null || true
  rm -rf "$scratch"
}
trap finish EXIT
if [[ -n ${EMBERWAKE_WINE_TEMPLATE:-} ]]; then
  mkdir "$WINEPREFIX"
  # Hundreds of megabytes that nobody changes are linked, what belongs to a player is copied.
  cp -a "$EMBERWAKE_WINE_TEMPLATE"/*.reg "$EMBERWAKE_WINE_TEMPLATE/dosdevices" \
    "$EMBERWAKE_WINE_TEMPLATE/.update-timestamp" "$WINEPREFIX/"
  mkdir "$WINEPREFIX/drive_c"
  for folder in "$EMBERWAKE_WINE_TEMPLATE"/drive_c/*; do
    if [[ ${folder##*/} == windows ]]; then
      cp -al "$folder" "$WINEPREFIX/drive_c/" 2>/dev/null || cp -a "$folder" "$WINEPREFIX/drive_c/"
    else
      cp -a "$folder" "$WINEPREFIX/drive_c/"
    fi
  done
else
  "$wine" wineboot --init >"$scratch/log" 2>&1
  "$wineserver" --wait
fi
if [[ $1 == --dpi ]]; then
  "$wine" reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "$2" /f >"$scratch/log" 2>&1
  # The desktop asks once, when it begins.
  "$wineserver" --wait
  shift 2
fi
shown=
if [[ $1 == --show ]]; then
  shown=$2
  shift 2
fi
program=$1
shift
# Wine would ask the terminal for input.
status=0
"$wine" "$program" "$@" </dev/null || status=$?
if [[ -n $shown ]]; then
  cat "$shown"
fi
exit "$status"
