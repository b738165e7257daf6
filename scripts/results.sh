# @file
# Counts the checks that passed, failed and were skipped, over all kinds of tests.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

PASSED=0
FAILED=0
SKIPPED=0

# Exit status of a check that needs something the project does not install.
readonly STATUS_SKIPPED=77

# count_results PASSED FAILED [SKIPPED]
count_results() {
  PASSED=$((PASSED + $1))
  FAILED=$((FAILED + $2))
  SKIPPED=$((SKIPPED + ${3:-0}))
}

# check TITLE COMMAND...: runs a check. A failed check shows its output, a skipped one the reason.
check() {
  local title=$1 output status=0
  shift
  output=$("$@" 2>&1) || status=$?
  case $status in
    0)
      say "    ok      $title"
      count_results 1 0
      ;;
    "$STATUS_SKIPPED")
      say "    skipped $title: $output"
      count_results 0 0 1
      ;;
    *)
      say "    FAILED  $title"
      [[ -z $output ]] || printf '            %s\n' "${output//$'\n'/$'\n            '}"
      count_results 0 1
      ;;
  esac
}

# The last line of a test run.
print_summary() {
  local skipped=''
  ((SKIPPED == 0)) || skipped=", $SKIPPED skipped"
  say "$PASSED passed, $FAILED failed$skipped"
}
