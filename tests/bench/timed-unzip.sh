#!/usr/bin/env bash
# The real extractor, which also leaves the seconds it took beside the archive: timed-unzip.sh OPTION...
set -uo pipefail
begin=$EPOCHREALTIME
unzip "$@"
status=$?
echo "$begin $EPOCHREALTIME" >unzipped
exit "$status"
