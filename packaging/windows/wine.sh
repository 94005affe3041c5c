# A Windows for a test of the packages: a Wine folder and a display of its own; sourced by the tests.
# shellcheck shell=bash

work=$(mktemp -d "${TMPDIR:-/tmp}/emberwake-wine.XXXXXX")
# Wine makes the player's folders links into the home folder, and an uninstaller follows: not ours.
export HOME=$work/home WINEPREFIX=$work/wine WINEDEBUG=-all LC_ALL=C.UTF-8 WINEDLLOVERRIDES='mscoree,mshtml='
mkdir "$HOME"
# Where the system puts its libraries at random, Wine now and then finds a program's place taken.
wine=(setarch --addr-no-randomize /usr/lib/wine/wine64)
wine_display_pid=
finish_wine() {
  /usr/lib/wine/wineserver64 -k || true
  [ -z "$wine_display_pid" ] || kill "$wine_display_pid" || true
  rm -rf "$work"
}
trap finish_wine EXIT

# start_wine: afterwards "${wine[@]}" runs programs, on drive $c and for the user in $user.
start_wine() {
  exec 3<> <(:)
  Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp 3> "$work/display" 2> /dev/null &
  wine_display_pid=$!
  for _ in {1..100}; do
    [ -s "$work/display" ] && break
    sleep 0.1
  done
  DISPLAY=:$(cat "$work/display")
  export DISPLAY
  timeout 180 "${wine[@]}" wineboot --init > /dev/null 2>&1
  c=$WINEPREFIX/drive_c
  # shellcheck disable=SC2034 # for those who source this
  user=$c/users/$(id -un)
}

passed=0
failed=0
# check NAME COMMAND...: one check, which passes when the command does.
check() {
  local name=$1
  shift
  if "$@" > "$work/check.log" 2>&1; then
    passed=$((passed + 1))
    echo "ok    $name"
  else
    failed=$((failed + 1))
    echo "FAIL  $name"
    sed 's/^/      /' "$work/check.log" | tail -n 5
  fi
}
absent() { [ ! -e "$1" ] && [ ! -L "$1" ]; }
fails() { ! "$@"; }
# ends_with RESULT COMMAND...: the program under Wine ends by itself, with this result.
ends_with() {
  local expected=$1 result=0
  shift
  timeout 120 "${wine[@]}" "$@" || result=$?
  [ "$result" -eq "$expected" ] || { echo "ended with $result instead of $expected"; return 1; }
}
print_checks() {
  echo "$passed passed, $failed failed"
  [ "$failed" -eq 0 ]
}
