# @file
# ./corvane fuzz: libFuzzer with address and undefined-behaviour sanitizers. A target is a source named *Fuzz.cpp. Its
# seeds are in the folder seeds/TARGET beside the source; inputs that found something earlier are named regression-*.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

readonly FUZZ="$BUILD/fuzz"
readonly FUZZ_SECONDS=60 FUZZ_SECONDS_IN_TEST=3

# An input that takes longer than this many seconds is a finding.
readonly FUZZ_SLOW=25

command_fuzz() {
  local seconds=$FUZZ_SECONDS name
  local -a targets
  if [[ ${1:-} =~ ^[1-9][0-9]*$ ]]; then
    seconds=$1
    shift
  fi
  mapfile -t targets < <(fuzz_target_names)
  for name in "$@"; do
    [[ " ${targets[*]} " == *" $name "* ]] || wrong_usage "no such fuzz target: $name (there are ${targets[*]})"
  done
  if (($# > 0)); then targets=("$@"); fi
  set_up test
  build_fuzz_targets "${targets[@]}"
  run_fuzz "$seconds" "${targets[@]}"
}

# build_fuzz_targets TARGET...: with line numbers for the stack of a finding. Other debug information takes long to compile.
build_fuzz_targets() {
  configure_host "$FUZZ" -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=OFF -DCORVANE_FUZZ=ON \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_C_FLAGS_DEBUG=-gline-tables-only -DCMAKE_CXX_FLAGS_DEBUG=-gline-tables-only
  run_logged fuzz "Building $# fuzz targets" cmake --build "$FUZZ" --target "$@"
}

fuzz_sources() {
  find "$ROOT/VaroFeaturesPkg/Test/Fuzz" "$ROOT/tools/inspect" -name '*Fuzz.cpp' -type f | sort
}

fuzz_target_names() { fuzz_sources | xargs -r -n 1 basename -s .cpp; }

# fuzz_target NAME SECONDS CORPUS: runs a target. Fails with a finding.
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
  ((status == 0)) || grep -m 3 -E '^FakeUefi: |ERROR: |runtime error: ' "$log" || true
  return "$status"
}

# fuzz_figure NAME LABEL: the last number after LABEL in the log of a target.
fuzz_figure() { grep -oE "$2 *[0-9]+" "$LOGS/fuzz-$1.log" | tail -n 1 | grep -oE '[0-9]+$' || echo 0; }

fuzz_executions() { fuzz_figure "$1" 'number_of_executed_units:'; }
fuzz_edges() { fuzz_figure "$1" 'cov:'; }

# fuzz_edges_there NAME: all edges of the program, reachable or not.
fuzz_edges_there() {
  sed -nE 's/.*\(([0-9]+) inline 8-bit counters\).*/\1/p' "$LOGS/fuzz-$1.log" | head -n 1 | grep . || echo 0
}

# fuzz_finding NAME: the input that a failed target stopped at, or its log.
fuzz_finding() {
  sed -n "s|.*Test unit written to $ROOT/||p" "$LOGS/fuzz-$1.log" | tail -n 1 | grep . || echo "build/logs/fuzz-$1.log"
}

# run_fuzz SECONDS TARGET...: one after the other, with the corpus of earlier runs. Prints a table and writes
# out/fuzz.json.
run_fuzz() {
  local seconds=$1 name finding rows='' separator='' findings=0
  local -a lines=()
  shift
  for name in "$@"; do
    say "==> Fuzzing $name for $seconds s"
    finding=''
    if ! fuzz_target "$name" "$seconds" "$FUZZ/corpus/$name"; then
      findings=$((findings + 1))
      finding=$(fuzz_finding "$name")
    fi
    lines+=("$(printf '%-20s %12s %6s of %-6s %9s %7s  %s' "$name" "$(fuzz_executions "$name")" "$(fuzz_edges "$name")" \
      "$(fuzz_edges_there "$name")" "$(fuzz_figure "$name" ft:)" "$(fuzz_figure "$name" corp:)" "${finding:-none}")")
    rows+=$separator$(printf '\n  {"target": "%s", "seconds": %s, "executions": %s, "edges": %s, "edges_there": %s,' \
      "$name" "$seconds" "$(fuzz_executions "$name")" "$(fuzz_edges "$name")" "$(fuzz_edges_there "$name")")
    rows+=$(printf ' "features": %s, "corpus": %s, "finding": "%s"}' \
      "$(fuzz_figure "$name" ft:)" "$(fuzz_figure "$name" corp:)" "$finding")
    separator=,
  done
  printf '[%s\n]\n' "$rows" >"$OUT/fuzz.json"
  printf '%-20s %12s %16s %9s %7s  %s\n' target executions edges features corpus finding
  printf '%s\n' "${lines[@]}"
  ((findings == 0)) || die "$findings of $# targets have a finding; the inputs are in out/fuzz"
}

# For ./corvane test: all seeds of a target, then a few seconds of fuzzing. Nothing is kept.
job_fuzz() {
  local name=$1 status=0
  rm -rf "$FUZZ/short/$name"
  fuzz_target "$name" "$FUZZ_SECONDS_IN_TEST" "$FUZZ/short/$name" || status=1
  check "$(fuzz_executions "$name") executions, $(fuzz_edges "$name") edges" found_nothing "$status" "$name"
}

found_nothing() { (($1 == 0)) || { fuzz_finding "$2"; return 1; }; }
