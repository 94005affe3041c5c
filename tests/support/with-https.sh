#!/usr/bin/env bash
# Runs a command beside an encrypted web server of its own, as https_server.py says, and takes the
# server down afterwards:
#
#   with-https.sh COMMAND...
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
/usr/bin/python3 "$here/https_server.py" "$scratch" "$@"
