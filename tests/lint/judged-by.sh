#!/usr/bin/env bash
# Runs a check that belongs to one version of a tool: judged-by.sh TOOL VERSION COMMAND...
# What another version would say is nobody's finding yet: newer ones lay out and warn otherwise. With
# another version, or none, the check says so in one line and is skipped (77).
set -euo pipefail
tool=$1
version=$2
shift 2
if ! command -v "$tool" > /dev/null; then
  echo "Skipped: it is judged by $tool $version, which is not here."
  exit 77
fi
told=$("$tool" --version 2>&1)
if ! grep -qE "version:? ${version//./\\.}(\.|\$| )|^$tool ${version//./\\.}(\.|\$| )" <<< "$told"; then
  echo "Skipped: it is judged by $tool $version, and here is: $(grep -m 1 -E '[0-9]+\.[0-9]+' <<< "$told")"
  exit 77
fi
exec "$@"
