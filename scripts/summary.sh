# Adds up the closing lines of several test runs; sourced by the scripts that run them.
# shellcheck shell=bash

summary_passed=0
summary_failed=0
summary_skipped=0
summary_log=$(mktemp)
trap 'rm -f "$summary_log"' EXIT

# run_counted COMMAND...: runs it and adds its closing line, "N passed, N failed" with or without
# ", N skipped". A run without such a line, or one that fails without a failure in it, counts as one
# failure.
run_counted() {
  local status=0 failed=1
  "$@" 2>&1 | tee "$summary_log" || status=1
  if [[ $(tail -n 1 "$summary_log") =~ ^([0-9]+)\ passed,\ ([0-9]+)\ failed(,\ ([0-9]+)\ skipped)?$ ]]; then
    summary_passed=$((summary_passed + BASH_REMATCH[1]))
    summary_skipped=$((summary_skipped + ${BASH_REMATCH[4]:-0}))
    failed=${BASH_REMATCH[2]}
    if [ "$status" -ne 0 ] && [ "$failed" -eq 0 ]; then failed=1; fi
  fi
  summary_failed=$((summary_failed + failed))
}

# run_as_one COMMAND...: runs it and counts it as one test by its result.
run_as_one() {
  if "$@"; then
    summary_passed=$((summary_passed + 1))
  else
    summary_failed=$((summary_failed + 1))
  fi
}

# print_summary: the closing line of all of them. Fails when one failed or none ran.
print_summary() {
  local line="$summary_passed passed, $summary_failed failed"
  if [ "$summary_skipped" -gt 0 ]; then line="$line, $summary_skipped skipped"; fi
  echo "$line"
  [ "$summary_failed" -eq 0 ] && [ "$summary_passed" -gt 0 ]
}
