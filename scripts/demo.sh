#!/usr/bin/env bash
# Builds the launcher against the demo world and shows it.

set -euo pipefail

usage() {
  cat << 'USAGE'
usage: scripts/demo.sh [--headless]

Builds the launcher against the demo world, serves that world on the loopback
and opens the launcher in a scratch installation folder (build/demo-install).
Missing Debian packages are installed first.

  --headless  drive the whole road without anybody's help, on a screen of its
              own, and leave a picture of each stop in build/demo. Also done
              when there is no display.
  --help      this text
USAGE
}

headless=no
for option in "$@"; do
  case $option in
    --headless) headless=yes ;;
    --help | -h)
      usage
      exit 0
      ;;
    *)
      echo "demo.sh: no such option: $option" >&2
      usage >&2
      exit 64
      ;;
  esac
done

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
build=$root/build/demo-launcher
# The distribution's own: another python3 earlier in the search path need not
# see the distribution's Python packages.
python=/usr/bin/python3

if [ "$headless" = no ] && [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  echo 'No display here: driving the demo on a screen of its own.'
  headless=yes
fi

"$root/scripts/install-packages.sh" build demo

# The launcher knows its base URL from the build. One port is preferred, so that
# building again changes nothing; another is taken when it is not free.
port=$("$python" "$root/demo/free_port.py" 18473)
base_url=http://127.0.0.1:$port/

echo "Building the launcher for $base_url ..."
cmake -S "$root" -B "$build" -G Ninja \
  -DCMAKE_BUILD_TYPE=Release \
  -DBUILD_TESTING=OFF \
  -DEMBERWAKE_BASE_URL="$base_url" \
  -DEMBERWAKE_WEBSITE_URL="${base_url}pages/website.html" \
  -DEMBERWAKE_DISCORD_URL="${base_url}pages/discord.html" \
  -DEMBERWAKE_FACEBOOK_URL="${base_url}pages/facebook.html"
cmake --build "$build" --target emberwake-launcher emberwake-unzip --parallel "$(nproc)"

# exec: whoever ends this script ends the demo, with its clean-up.
if [ "$headless" = yes ]; then
  exec "$python" "$root/tests/e2e/drive.py" \
    --program "$build/emberwake-launcher" \
    --extractor "$build/unzip.exe" \
    --base-url "$base_url" \
    --out "$root/build/demo" \
    --scratch "$root/build/demo-headless"
fi
exec "$python" "$root/tests/e2e/show.py" \
  --program "$build/emberwake-launcher" \
  --extractor "$build/unzip.exe" \
  --base-url "$base_url" \
  --world "$root/build/demo-world" \
  --install "$root/build/demo-install"
