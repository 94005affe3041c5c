#!/usr/bin/env bash
# Runs a command on a virtual display of its own, and takes the display down afterwards:
# with-display.sh [--window-manager] COMMAND...
# EMBERWAKE_TEST_SCREEN may give another size and depth of the screen, as WIDTHxHEIGHTxDEPTH.
set -euo pipefail
window_manager=
if [[ $1 == --window-manager ]]; then
  window_manager=openbox
  shift
fi
manager=
scratch=$(mktemp -d)
Xvfb -displayfd 3 -screen 0 "${EMBERWAKE_TEST_SCREEN:-1920x1080x24}" -nolisten tcp -noreset 3>"$scratch/display" 2>"$scratch/log" &
server=$!
finish() {
  local pid
  for pid in $manager $server; do
    kill "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
  done
  rm -rf "$scratch"
}
trap finish EXIT
for _ in $(seq 200); do
  [[ -s $scratch/display ]] && break
  sleep 0.05
done
if [[ ! -s $scratch/display ]]; then
  echo "no virtual display: $(cat "$scratch/log")" >&2
  exit 1
fi
# A run-time folder of its own; the toolkit complains without one.
mkdir -m 700 "$scratch/run"
DISPLAY=":$(cat "$scratch/display")"
export DISPLAY XDG_RUNTIME_DIR="$scratch/run" QT_QPA_PLATFORM=xcb
# Nothing here draws with OpenGL, but the toolkit would load all of it to find that out.
export QT_XCB_GL_INTEGRATION=none
if [[ -n $window_manager ]]; then
  "$window_manager" >"$scratch/manager" 2>&1 &
  manager=$!
  # It lists the windows when it is ready to show one. It says that it is there long before, with its
  # theme and fonts still to be read, and that takes seconds the first time.
  is_ready() {
    [[ $(xprop -root _NET_CLIENT_LIST 2>/dev/null) == *'window id'* ]]
  }
  for _ in $(seq 600); do
    is_ready && break
    sleep 0.05
  done
  if ! is_ready; then
    echo "no window manager: $(cat "$scratch/manager")" >&2
    exit 1
  fi
fi
unset WAYLAND_DISPLAY http_proxy https_proxy HTTP_PROXY HTTPS_PROXY
"$@"
