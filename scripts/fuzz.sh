#!/usr/bin/env bash
# Builds the fuzz targets and runs each, first its corpus, then new inputs for so many seconds:
#
#   scripts/fuzz.sh [SECONDS] [TARGET...]      default: 60 seconds, all targets
#
# One line per target: name, executions, crashes, slowest input. An input that crashes a target,
# takes longer than twelve seconds (the largest picture, five with sanitizers and a busy processor) or
# more than 512 MB is left in build/fuzz/findings/; ends with 1 when there is one. New inputs worth
# keeping are collected in build/fuzz/corpus/, beside the seeds of tests/fuzz/corpus/. The last line
# counts the targets: "N passed, N failed".
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

# One target, in a process of its own. Its line goes to the terminal, the rest to its log.
run_target() {
  local target=$1 name=${1#fuzz_}
  # What the reader of documents reads are the documents of the window.
  local input=${name%reader}
  # Whole paths: a target may work in another folder.
  local findings=$PWD/build/fuzz/findings/$name
  local corpus=("$PWD/build/fuzz/corpus/$name" "$PWD/tests/fuzz/corpus/$input")
  mkdir -p "$findings" "${corpus[0]}"
  local log=build/fuzz/$target.log
  local options=(
    -timeout=12 -rss_limit_mb=512 -max_len=65536 -print_final_stats=1
    "-artifact_prefix=$findings/"
  )
  [ ! -f "tests/fuzz/$input.dict" ] || options+=("-dict=tests/fuzz/$input.dict")
  # What lives until the window closes by design is a leak to nobody.
  export LSAN_OPTIONS="suppressions='$PWD/tests/support/leaks.supp':print_suppressions=0"
  # An allocation that cannot be had is answered as it is to a player: by nothing. Freed memory is
  # kept aside for a while, which counts as the target's own.
  export ASAN_OPTIONS=allocator_may_return_null=1:quarantine_size_mb=64
  local failed=0
  # The seeds and all that was found before, once each; then new ones. What a target prints itself,
  # a console line for each input, is not kept.
  "build/fuzz/tests/fuzz/$target" "${options[@]}" -runs=0 "${corpus[@]}" 2> "$log" > /dev/null || failed=1
  if [ "$failed" -eq 0 ] && [ "$seconds" -gt 0 ]; then
    "build/fuzz/tests/fuzz/$target" "${options[@]}" "-max_total_time=$seconds" \
      "${corpus[@]}" 2>> "$log" > /dev/null || failed=1
  fi
  local executions
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | awk '{ sum += $1 } END { print sum + 0 }')
  local slowest
  slowest=$(sed -n 's/^stat::slowest_unit_time_sec: *//p' "$log" | sort -n | tail -1)
  echo "$target: $executions executions, $failed crashes, slowest ${slowest:-?} s"
  if [ "$failed" -ne 0 ]; then
    tail -n 40 "$log"
  fi
  return "$failed"
}

# One target per processor at a time.
failures=0
running=0
for target in "${targets[@]}"; do
  if [ "$running" -ge "$(nproc)" ]; then
    wait -n || failures=$((failures + 1))
    running=$((running - 1))
  fi
  run_target "$target" &
  running=$((running + 1))
done
while [ "$running" -gt 0 ]; do
  wait -n || failures=$((failures + 1))
  running=$((running - 1))
done
echo "$((${#targets[@]} - failures)) passed, $failures failed"
[ "$failures" -eq 0 ]
