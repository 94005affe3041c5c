#!/usr/bin/env bash
# Runs clang-tidy over the launcher's sources: tidy.sh BUILD_FOLDER
set -euo pipefail
source "$(dirname "$0")/sources.sh"
build=$1
mapfile -t files < <(own_files 'app/*.cpp' 'check/*.cpp' 'window/*.cpp' 'info/*.cpp' 'install/*.cpp' 'news/*.cpp')
[[ ${#files[@]} -gt 20 ]] || { echo "found only ${#files[@]} sources"; exit 1; }
printf '%s\0' "${files[@]}" | xargs -0 -n 4 -P "$(nproc)" clang-tidy -quiet -p "$build"
