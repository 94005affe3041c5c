#!/usr/bin/env bash
# Configuring accepts a usable base URL and names the setting when it refuses one:
# build-settings.sh CMAKE
set -euo pipefail
cmake=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

configure() {
  rm -rf "$scratch/build"
  "$cmake" -S . -B "$scratch/build" -G Ninja -DBUILD_TESTING=OFF "-DEMBERWAKE_BASE_URL=$1" \
    >"$scratch/log" 2>&1
}

for url in 'https://launcher.emberwake.example' 'ftp://launcher.emberwake.example/' \
  'launcher.emberwake.example/' '/' '' 'http:///'; do
  if configure "$url"; then
    echo "the base URL '$url' was accepted"
    exit 1
  fi
  grep -q 'EMBERWAKE_BASE_URL' "$scratch/log" || { cat "$scratch/log"; exit 1; }
done

for url in 'http://127.0.0.1:8080/' 'https://cdn.example/games/emberwake/'; do
  configure "$url" || { cat "$scratch/log"; exit 1; }
  grep -qF "R\"url($url)url\"" "$scratch/build/base/buildsettings.cpp"
done
