#!/usr/bin/env bash
# Fails when a source is not formatted as .clang-format says.
set -euo pipefail
source "$(dirname "$0")/sources.sh"
mapfile -t files < <(own_files '*.cpp' '*.h')
[[ ${#files[@]} -gt 20 ]] || { echo "found only ${#files[@]} sources"; exit 1; }
clang-format --dry-run -Werror "${files[@]}"
