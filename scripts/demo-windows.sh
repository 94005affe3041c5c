#!/usr/bin/env bash
# Drives the Windows launcher, out of its portable package, through the demo world.

set -euo pipefail

usage() {
  cat << 'USAGE'
usage: scripts/demo-windows.sh [--package ZIP [--base-url URL]]

Builds the Windows launcher against the demo world, packs it, unpacks the
package in a Windows prefix of its own, into a folder that no code page can
spell, and drives the whole road of one launch there, over https, on a screen of
its own. A picture of each stop is left in build/demo-windows. Missing Debian
packages are installed first.

  --package ZIP   drive this portable package; build nothing
  --base-url URL  the base URL that its program was built for
                  (default: https://127.0.0.1:18475/)
  --help          this text
USAGE
}

fail_usage() {
  echo "demo-windows.sh: $1" >&2
  usage >&2
  exit 64
}

package=
base_url=
while [ "$#" -gt 0 ]; do
  case $1 in
    --package | --base-url)
      [ -n "${2:-}" ] || fail_usage "$1 needs a value"
      if [ "$1" = --package ]; then package=$2; else base_url=$2; fi
      shift 2
      ;;
    --help | -h)
      usage
      exit 0
      ;;
    *) fail_usage "no such option: $1" ;;
  esac
done
[ -n "$package" ] || [ -z "$base_url" ] || fail_usage '--base-url goes with --package'

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
# The distribution's own: another python3 earlier in the search path need not
# see the distribution's Python packages.
python=/usr/bin/python3

"$root/scripts/install-packages.sh" demo windows windows-test

if [ -z "$package" ]; then
  # One port is preferred, so that building again changes nothing.
  base_url=https://127.0.0.1:$("$python" "$root/demo/free_port.py" 18475)/
  # Folders of its own: a program that knows the demo world must not be taken
  # for one that is to be handed out.
  packages=$root/build/demo-windows-packages
  rm -rf "$packages"
  echo "Building and packing the launcher for $base_url ..."
  "$root/packaging/windows/package.sh" \
    --output "$packages" \
    --build "$root/build/demo-windows-launcher" \
    -DEMBERWAKE_BASE_URL="$base_url" \
    -DEMBERWAKE_WEBSITE_URL="${base_url}pages/website.html" \
    -DEMBERWAKE_DISCORD_URL="${base_url}pages/discord.html" \
    -DEMBERWAKE_FACEBOOK_URL="${base_url}pages/facebook.html"
  archives=("$packages"/emberwake-launcher-*.zip)
  if [ "${#archives[@]}" -ne 1 ] || [ ! -f "${archives[0]}" ]; then
    echo "demo-windows.sh: not one zip archive in $packages" >&2
    exit 1
  fi
  package=${archives[0]}
fi

# exec: whoever ends this script ends the drive, with its clean-up.
exec "$python" "$root/tests/e2e/drive.py" \
  --package "$package" \
  --base-url "${base_url:-https://127.0.0.1:18475/}" \
  --out "$root/build/demo-windows" \
  --scratch "$root/build/demo-windows-scratch"
