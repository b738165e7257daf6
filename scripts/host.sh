# @file
# The host side, built by CMake: the inspector (release) and the tests (sanitized).
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

readonly HOST_TESTS="$BUILD/host"
readonly HOST_TOOLS="$BUILD/tools"

# configure_host FOLDER OPTION...: CMake looks after the rest by itself once a folder is configured.
configure_host() {
  local folder=$1 key
  shift
  key="$EDK2_DIR $*"
  if stamp_is "cmake-$(basename "$folder")" "$key" && [[ -f $folder/build.ninja ]]; then return; fi
  run_logged "cmake-$(basename "$folder")" "Configuring the host build in ${folder#"$ROOT/"}" \
    cmake -S "$ROOT" -B "$folder" -G Ninja -DEDK2_DIR="$EDK2_DIR" "$@"
  set_stamp "cmake-$(basename "$folder")" "$key"
}

build_inspector() {
  configure_host "$HOST_TOOLS" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF
  run_logged inspect 'Building the inspector' cmake --build "$HOST_TOOLS" --target inspect
  local built
  built=$(find "$HOST_TOOLS" -name inspect -type f -perm -u+x -print -quit)
  [[ -n $built ]] || die 'the host build left no inspector'
  cmp -s "$built" "$OUT/inspect" || cp "$built" "$OUT/inspect"
}

build_host_tests() {
  configure_host "$HOST_TESTS" -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=ON -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
  run_logged host-tests 'Building the host tests' cmake --build "$HOST_TESTS"
}

# The sanitizers stop a test at its first finding.
run_host_tests() {
  say '==> Host tests'
  local log="$LOGS/ctest.log" status=0
  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    ctest --test-dir "$HOST_TESTS" --output-on-failure --no-tests=error -j "$JOBS" >"$log" 2>&1 || status=1
  if ((status == 0)); then tail -n 4 "$log"; else sed 's/^/    /' "$log" | tail -n 60; fi
  local failed total
  total=$(sed -nE 's/.*tests passed, [0-9]+ tests? failed out of ([0-9]+).*/\1/p' "$log")
  failed=$(sed -nE 's/.*tests passed, ([0-9]+) tests? failed out of .*/\1/p' "$log")
  count_results $((${total:-0} - ${failed:-0})) "${failed:-1}"
  return "$status"
}
