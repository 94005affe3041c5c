#!/usr/bin/env bash
# The extractor that TIMED_UNZIP names, which also leaves the seconds it took beside the archive:
# timed-unzip.sh OPTION...
set -uo pipefail
begin=$EPOCHREALTIME
"$TIMED_UNZIP" "$@"
status=$?
echo "$begin $EPOCHREALTIME" >unzipped
exit "$status"
