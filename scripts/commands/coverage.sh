# @file
# Branch coverage of the driver's sources by the host tests: clang counts the conditions as they are written.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

readonly COVERAGE="$BUILD/coverage"

command_coverage() {
  no_arguments "$@"
  set_up coverage
  build_coverage
  measure_coverage
}

# The build of the host tests reports warnings.
build_coverage() {
  configure_host "$COVERAGE" -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=ON -DCORVANE_COVERAGE=ON -DCORVANE_SANITIZE=OFF \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_CXX_FLAGS=-w
  run_logged coverage 'Building the host tests with counters' cmake --build "$COVERAGE" --target corvane_tests
}

# Leaves out/coverage.json and prints it as a table.
measure_coverage() {
  local -x LLVM_PROFILE_FILE="$COVERAGE/tests.profraw"
  run_logged coverage-tests 'Running the host tests' "$COVERAGE/corvane_tests"
  llvm-profdata merge -o "$COVERAGE/tests.profdata" "$COVERAGE/tests.profraw" || die 'the counters cannot be read'
  llvm-cov export -instr-profile "$COVERAGE/tests.profdata" "$COVERAGE/corvane_tests" >"$COVERAGE/export.json" ||
    die 'the counters do not fit the tests'
  python3 "$ROOT/scripts/python/coverage.py" "$COVERAGE/export.json" "$OUT/coverage.json"
}
