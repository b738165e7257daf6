# @file
# Runs scenarios side by side, as many at once as there are processors.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# An interrupted ./corvane takes its workers along, and each of them its child. Ended ones are no longer listed: their
# numbers may be somebody else's.
stop_workers() { jobs -pr | xargs -r kill 2>/dev/null || true; }
trap 'stop_workers; stop_child' EXIT

# run_side_by_side SCENARIO...: starts and reports them in this order, the results of each in one piece. A worker needs
# a token off a pipe to be started and gives it back when it ends, however it ends.
run_side_by_side() {
  local folder="$LOGS/scenarios" name tokens reported=0
  local -a names=("$@") workers=()
  mkdir -p "$folder"
  tokens=$(mktemp -u "$folder/tokens.XXXXXX")
  mkfifo "$tokens"
  exec {TOKENS}<>"$tokens"
  rm -f "$tokens"
  printf '%*s' "$JOBS" '' >&"$TOKENS"
  for name in "$@"; do
    read -r -d '' -N 1 -u "$TOKENS"
    work_on "$name" >"$folder/$name.log" 2>&1 &
    workers+=("$!")
    while ! kill -0 "${workers[reported]}" 2>/dev/null; do report_next; done
  done
  while ((reported < $#)); do report_next; done
  exec {TOKENS}>&-
}

work_on() {
  trap 'stop_child; printf " " >&"$TOKENS"' EXIT
  trap 'exit 143' TERM
  PASSED=0
  FAILED=0
  "scenario_$1" || true
  say "worked: $PASSED $FAILED"
}

# For run_side_by_side. A worker that did not come to its last line has failed as a whole.
report_next() {
  local name=${names[reported]} counts
  wait "${workers[reported]}" || true
  reported=$((reported + 1))
  say "  $name"
  counts=$(sed -n 's/^worked: //p' "$folder/$name.log")
  grep -v '^worked: ' "$folder/$name.log" || true
  # shellcheck disable=SC2086  # two numbers
  count_results ${counts:-0 1}
}
