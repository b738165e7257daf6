# @file
# Fuzzing: libFuzzer with address and undefined-behaviour sanitizers. A target is a source named *Fuzz.cpp; what it starts
# from is in the folder of its name under seeds/ beside it, with what earlier runs found in files named regression-*.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

readonly FUZZ="$BUILD/fuzz"
readonly FUZZ_SECONDS_IN_TEST=3
# An input that takes longer than this many seconds is a finding, too.
readonly FUZZ_SLOW=25

build_fuzz_targets() {
  configure_host "$FUZZ" -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=OFF -DCORVANE_FUZZ=ON \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
  run_logged fuzz 'Building the fuzz targets' cmake --build "$FUZZ" --target fuzz_targets
}

fuzz_sources() { printf '%s\n' "$ROOT"/VaroFeaturesPkg/Test/Fuzz/*Fuzz.cpp "$ROOT"/tools/inspect/fuzz/*Fuzz.cpp | grep -v '[*]'; }

fuzz_target_names() { fuzz_sources | xargs -n 1 basename -s .cpp; }

# fuzz_figure LABEL: the number that the running target's log has behind it, the last time that it does.
fuzz_figure() { grep -oE "$1 *[0-9]+" "$log" | tail -n 1 | grep -oE '[0-9]+$' || echo 0; }

# fuzz_target NAME SECONDS CORPUS: runs one; leaves its figures in EXECUTIONS, EDGES, EDGES_THERE, FEATURES and INPUTS, and
# the input that it ended on in FINDING. Fails with a finding.
fuzz_target() {
  local name=$1 seconds=$2 corpus=$3 log="$LOGS/fuzz-$1.log" source status=0
  source=$(fuzz_sources | grep "/$name.cpp$")
  mkdir -p "$corpus" "$OUT/fuzz"
  local -a inputs=("$corpus")
  [[ ! -d ${source%/*}/seeds/$name ]] || inputs+=("${source%/*}/seeds/$name")
  start_child "$log" "$FUZZ/targets/$name" "-max_total_time=$seconds" "-timeout=$FUZZ_SLOW" \
    "-report_slow_units=$FUZZ_SLOW" -rss_limit_mb=3072 -print_final_stats=1 "-artifact_prefix=$OUT/fuzz/$name-" "${inputs[@]}"
  show_progress "$(now_ms)" "$log"
  reap_child || status=$?
  EXECUTIONS=$(fuzz_figure 'number_of_executed_units:')
  EDGES=$(fuzz_figure 'cov:')
  EDGES_THERE=$(sed -nE 's/.*\(([0-9]+) inline 8-bit counters\).*/\1/p' "$log" | head -n 1)
  FEATURES=$(fuzz_figure 'ft:')
  INPUTS=$(fuzz_figure 'corp:')
  FINDING=$(sed -n "s|.*Test unit written to $ROOT/||p" "$log" | tail -n 1)
  if ((status != 0)); then
    FINDING=${FINDING:-${log#"$ROOT/"}}
    grep -m 3 -E '^FakeUefi: |ERROR: |runtime error: ' "$log" || true
  fi
  return "$status"
}

# run_fuzz SECONDS TARGET...: one after the other, from where earlier runs left. A table for people, out/fuzz.json for
# machines.
run_fuzz() {
  local seconds=$1 name rows='' separator='' findings=0
  local -a lines=()
  shift
  for name in "$@"; do
    say "==> Fuzzing $name for $seconds s"
    fuzz_target "$name" "$seconds" "$FUZZ/corpus/$name" || findings=$((findings + 1))
    lines+=("$(printf '%-20s %12s %6s of %-6s %9s %7s  %s' "$name" "$EXECUTIONS" "$EDGES" "${EDGES_THERE:-0}" "$FEATURES" \
      "$INPUTS" "${FINDING:-none}")")
    rows+=$separator$(printf '\n  {"target": "%s", "seconds": %s, "executions": %s, "edges": %s, "edges_there": %s,' \
      "$name" "$seconds" "$EXECUTIONS" "$EDGES" "${EDGES_THERE:-0}")
    rows+=$(printf ' "features": %s, "corpus": %s, "finding": "%s"}' "$FEATURES" "$INPUTS" "$FINDING")
    separator=,
  done
  printf '[%s\n]\n' "$rows" >"$OUT/fuzz.json"
  printf '%-20s %12s %16s %9s %7s  %s\n' target executions edges features corpus finding
  printf '%s\n' "${lines[@]}"
  ((findings == 0)) || die "$findings of $# targets ended on a finding; their inputs are in out/fuzz"
}

# What every test run does: all seeds, and a few seconds of fuzzing that leave nothing behind.
run_short_fuzz() {
  local before=$FAILED name status
  say '==> Fuzz targets'
  for name in $(fuzz_target_names); do
    rm -rf "$FUZZ/short"
    status=0
    fuzz_target "$name" "$FUZZ_SECONDS_IN_TEST" "$FUZZ/short" || status=1
    check "$name: $EXECUTIONS executions, $EDGES edges" found_nothing "$status"
  done
  ((FAILED == before))
}

found_nothing() { (($1 == 0)) || { say "$FINDING"; return 1; }; }
