#!/usr/bin/env bash
# Builds the fuzz targets and runs each, first its corpus, then new inputs for so many seconds:
#
#   scripts/fuzz.sh [SECONDS] [TARGET...]      default: 60 seconds, all targets
#
# One line per target: name, executions, crashes. An input that crashes a target, takes longer than
# a second or more than 512 MB is left in build/fuzz/findings/; ends with 1 when there is one. New
# inputs worth keeping are collected in build/fuzz/corpus/, beside the seeds of tests/fuzz/corpus/.
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C.UTF-8

seconds=${1:-60}
[ "$#" -eq 0 ] || shift
if ! [[ $seconds =~ ^[0-9]+$ ]]; then
  echo 'usage: scripts/fuzz.sh [SECONDS] [TARGET...]' >&2
  exit 64
fi
scripts/install-packages.sh build fuzz
cmake --preset fuzz > /dev/null
cmake --build --preset fuzz

targets=("$@")
if [ "${#targets[@]}" -eq 0 ]; then
  for source in tests/fuzz/fuzz_*.cpp; do
    targets+=("$(basename "$source" .cpp)")
  done
fi

status=0
for target in "${targets[@]}"; do
  name=${target#fuzz_}
  # Whole paths: a target may work in another folder.
  findings=$PWD/build/fuzz/findings/$name
  corpus=("$PWD/build/fuzz/corpus/$name" "$PWD/tests/fuzz/corpus/$name")
  mkdir -p "$findings" "${corpus[0]}"
  log=build/fuzz/$target.log
  options=(
    -timeout=1 -rss_limit_mb=512 -max_len=65536 -print_final_stats=1
    "-artifact_prefix=$findings/"
  )
  [ ! -f "tests/fuzz/$name.dict" ] || options+=("-dict=tests/fuzz/$name.dict")
  # What lives until the window closes by design is a leak to nobody.
  export LSAN_OPTIONS="suppressions=$PWD/tests/support/leaks.supp:print_suppressions=0"
  # An allocation that cannot be had is answered as it is to a player: by nothing.
  export ASAN_OPTIONS=allocator_may_return_null=1
  failed=0
  # The seeds and all that was found before, once each; then new ones.
  "build/fuzz/tests/fuzz/$target" "${options[@]}" -runs=0 "${corpus[@]}" > "$log" 2>&1 || failed=1
  if [ "$failed" -eq 0 ] && [ "$seconds" -gt 0 ]; then
    "build/fuzz/tests/fuzz/$target" "${options[@]}" "-max_total_time=$seconds" \
      "${corpus[@]}" >> "$log" 2>&1 || failed=1
  fi
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | awk '{ sum += $1 } END { print sum + 0 }')
  echo "$target: $executions executions, $failed crashes"
  if [ "$failed" -ne 0 ]; then
    status=1
    tail -n 40 "$log"
  fi
done
exit "$status"
