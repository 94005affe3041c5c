#!/usr/bin/env bash
# Fails when a Python program is not annotated throughout, or uses something in another way than it
# is annotated.
set -euo pipefail
source "$(dirname "$0")/sources.sh"
mapfile -t files < <(own_files '*.py')
[[ ${#files[@]} -gt 30 ]] || { echo "found only ${#files[@]} programs"; exit 1; }
mypy --config-file mypy.ini "${files[@]}"
