#!/usr/bin/env bash
# Runs a command on a virtual display of its own, and takes the display down afterwards.
set -euo pipefail
scratch=$(mktemp -d)
Xvfb -displayfd 3 -screen 0 1920x1080x24 -nolisten tcp 3>"$scratch/display" 2>"$scratch/log" &
server=$!
trap 'kill "$server" 2>/dev/null || true; wait "$server" 2>/dev/null || true; rm -rf "$scratch"' EXIT
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
unset WAYLAND_DISPLAY http_proxy https_proxy HTTP_PROXY HTTPS_PROXY
"$@"
