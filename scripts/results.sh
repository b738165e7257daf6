# @file
# Counts what passed and failed over all kinds of tests, and says so at the end.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

PASSED=0
FAILED=0

# count_results PASSED FAILED
count_results() {
  PASSED=$((PASSED + $1))
  FAILED=$((FAILED + $2))
}

# check TITLE COMMAND...: one check of a scenario or a linter; a failing one shows what it printed.
check() {
  local title=$1 output
  shift
  if output=$("$@" 2>&1); then
    say "    ok      $title"
    count_results 1 0
  else
    say "    FAILED  $title"
    [[ -z $output ]] || printf '            %s\n' "${output//$'\n'/$'\n            '}"
    count_results 0 1
  fi
}

# The line that closes a test run, alone on its line.
print_summary() { say "$PASSED passed, $FAILED failed"; }
