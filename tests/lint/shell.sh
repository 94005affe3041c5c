#!/usr/bin/env bash
# Fails when a shell script has something that shellcheck warns of.
set -euo pipefail
source "$(dirname "$0")/sources.sh"
mapfile -t files < <(own_files '*.sh' .ci/run)
[[ ${#files[@]} -gt 3 ]] || { echo "found only ${#files[@]} scripts"; exit 1; }
shellcheck -x -P SCRIPTDIR "${files[@]}"
