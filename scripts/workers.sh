# @file
# Runs jobs side by side, as many at once as there are processors.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# An interrupted ./corvane stops its workers, and each worker its child. Finished workers are no longer listed, because
# their process numbers may belong to another program by then.
stop_workers() { jobs -pr | xargs -r kill 2>/dev/null || true; }
trap 'stop_workers; stop_child' EXIT

# run_side_by_side JOB...: runs the function job_KIND NAME for each JOB, given as KIND:NAME. Jobs are started and reported
# in this order; the output of each is printed in one piece. A worker takes a token from a pipe when it starts and
# returns the token when it ends.
run_side_by_side() {
  local folder="$LOGS/jobs" tokens job worker
  local -a waiting=()
  mkdir -p "$folder"
  tokens=$(mktemp -u "$folder/tokens.XXXXXX")
  mkfifo "$tokens"
  exec {TOKENS}<>"$tokens"
  rm -f "$tokens"
  printf '%*s' "$JOBS" '' >&"$TOKENS"
  for job in "$@"; do
    read -r -d '' -N 1 -u "$TOKENS"
    work_on "$job" >"$folder/${job//:/-}.log" 2>&1 &
    waiting+=("$! $job")
    while ((${#waiting[@]} > 0)) && ! kill -0 "${waiting[0]% *}" 2>/dev/null; do
      report_worker "${waiting[0]% *}" "${waiting[0]#* }" "$folder"
      waiting=("${waiting[@]:1}")
    done
  done
  for worker in "${waiting[@]}"; do report_worker "${worker% *}" "${worker#* }" "$folder"; done
  exec {TOKENS}>&-
}

work_on() {
  trap 'stop_child; printf " " >&"$TOKENS"' EXIT
  trap 'exit 143' TERM
  PASSED=0
  FAILED=0
  SKIPPED=0
  "job_${1%%:*}" "${1#*:}" || true
  say "worked: $PASSED $FAILED $SKIPPED"
}

# report_worker PROCESS JOB FOLDER: waits for a worker and prints its log. A worker that ended early counts as failed.
report_worker() {
  local process=$1 job=$2 log="$3/${2//:/-}.log" counts
  wait "$process" || true
  say "  ${job#*:}"
  counts=$(sed -n 's/^worked: //p' "$log")
  grep -v '^worked: ' "$log" || true
  # shellcheck disable=SC2086  # three numbers
  count_results ${counts:-0 1 0}
}
