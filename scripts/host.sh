# @file
# The host side, built by CMake: the inspector (release) and the tests (sanitized).
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

readonly HOST_TESTS="$BUILD/host"
readonly HOST_TOOLS="$BUILD/tools"

# configure_host FOLDER OPTION...: configures a folder once. CMake configures it again by itself.
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

configure_host_tests() {
  configure_host "$HOST_TESTS" -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=ON -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
}

# build_host_tests [TARGET]...: all targets when none is named.
build_host_tests() {
  configure_host_tests
  (($# > 0)) || set -- all
  run_logged host-tests "Building the host tests ($*)" cmake --build "$HOST_TESTS" --target "$@"
}

# The sanitizers stop a test at its first finding.
readonly SANITIZERS='print_stacktrace=1:halt_on_error=1'

run_host_tests() {
  say '==> Host tests'
  local log="$LOGS/ctest.log" status=0
  UBSAN_OPTIONS=$SANITIZERS \
    ctest --test-dir "$HOST_TESTS" --output-on-failure --no-tests=error -j "$JOBS" >"$log" 2>&1 || status=1
  if ((status == 0)); then tail -n 4 "$log"; else sed 's/^/    /' "$log" | tail -n 60; fi
  local failed total
  total=$(sed -nE 's/.*tests passed, [0-9]+ tests? failed out of ([0-9]+).*/\1/p' "$log")
  failed=$(sed -nE 's/.*tests passed, ([0-9]+) tests? failed out of .*/\1/p' "$log")
  count_results $((${total:-0} - ${failed:-0})) "${failed:-1}"
}

# host_rooms: the folders of Test/Host with tests, and the inspector.
host_rooms() {
  (cd "$ROOT/VaroFeaturesPkg/Test/Host" && find . -name '*Test.cpp' | cut -d / -f 2 | sort -u)
  echo inspect
}

# room_of FILE: the room that a test source belongs to.
room_of() {
  local file=${1#"$ROOT/VaroFeaturesPkg/Test/Host/"}
  case $file in
    "$ROOT"/tools/inspect/*) echo inspect ;;
    *) echo "${file%%/*}" ;;
  esac
}

# run_host_room ROOM [FILTER]: the tests of a room, all or those that Google Test's filter selects.
run_host_room() {
  local room=$1 filter=${2:-*} log="$LOGS/test-$1.log" status=0 passed failed
  say "==> Host tests: $room${2:+, $2}"
  UBSAN_OPTIONS=$SANITIZERS "$HOST_TESTS/test_$room" --gtest_filter="$filter" >"$log" 2>&1 || status=1
  if ((status == 0)); then grep -E '^\[ +OK \]' "$log" || true; else sed 's/^/    /' "$log" | tail -n 60; fi
  passed=$(sed -nE 's/^\[  PASSED  \] ([0-9]+) tests?\..*/\1/p' "$log")
  failed=$(sed -nE 's/^\[  FAILED  \] ([0-9]+) tests?, listed below.*/\1/p' "$log")
  count_results "${passed:-0}" "${failed:-$status}"
}
