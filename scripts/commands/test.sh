# @file
# ./corvane test: host tests, fuzz targets, firmware scenarios, the limits of the benchmarks, linters; all of them or those
# that are named.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

command_test() {
  local plan
  if [[ ${1:-} == --list ]]; then
    catalogue | awk '!seen[$1]++ { print $1 }'
    return
  fi
  plan=$(plan_tests "$@") || exit
  set_up test
  build_planned "$plan"
  run_planned "$plan"
  print_summary
  ((FAILED == 0))
}

# A plan has one line for each thing to run: a kind (host, single, package, fuzz, scenario, bench, lint, seeded) and an item.
# catalogue: every name that ./corvane test takes, and a line of a plan that it stands for.
catalogue() {
  local name file suite
  for name in $(host_rooms); do printf '%s host %s\n' host "$name" "$name" "$name"; done
  for file in "${SCENARIO_FILES[@]}"; do
    # shellcheck disable=SC2153  # scenarios.sh has it
    for name in ${SCENARIOS[$file]}; do
      printf '%s scenario %s\n' scenarios "$name" "$file" "$name" "${name//_/-}" "$name"
    done
  done
  for name in $(fuzz_target_names); do printf '%s fuzz %s\n' fuzz "$name" "$name" "$name"; done
  printf 'package package build\nbench bench limits\nseeded seeded differences\n'
  for name in "${LINTERS[@]}"; do printf '%s lint %s\n' lint "$name" "$name" "$name"; done
  find "$ROOT/VaroFeaturesPkg/Test/Host" "$ROOT/tools/inspect" -name '*Test.cpp' | sort | while read -r file; do
    name=$(room_of "$file")
    sed -nE 's/^TEST(_F|_P)?\((\w+), *(\w+)\).*/\2 \3/p' "$file" | while read -r suite test; do
      printf '%s single %s:%s\n' "$suite" "$name" "$suite.*:*/$suite.*" \
        "$suite.$test" "$name" "$suite.$test:*/$suite.$test/*"
    done
  done
}

# plan_tests [WHAT]...: the plan. Without WHAT, all but "seeded". An unknown WHAT ends with similar names.
plan_tests() {
  local all what found
  all=$(catalogue)
  if (($# == 0)); then set -- host package scenarios fuzz bench lint; fi
  for what in "$@"; do
    found=$(awk -v what="$what" '$1 == what { print $2, $3 }' <<<"$all")
    [[ -n $found ]] || found=$(awk -v what="${what//_/-}" '$1 == what { print $2, $3 }' <<<"$all")
    [[ -n $found ]] || wrong_usage "no test is named '$what'; $(names_like "$what" <<<"$all")"
    printf '%s\n' "$found"
  done | awk '!seen[$0]++'
}

# names_like NAME: the names of the catalogue on standard input that are similar to NAME.
names_like() {
  local like
  like=$(awk -v name="$1" '
    function least(a, b, c) { if (b < a) a = b; return c < a ? c : a }
    function distance(a, b,   i, j, row, last, kept) {
      for (j = 0; j <= length(b); ++j) row[j] = j
      for (i = 1; i <= length(a); ++i) {
        last = row[0]; row[0] = i
        for (j = 1; j <= length(b); ++j) {
          kept = row[j]
          row[j] = least(row[j] + 1, row[j - 1] + 1, last + (substr(a, i, 1) != substr(b, j, 1)))
          last = kept
        }
      }
      return row[length(b)]
    }
    !seen[$1]++ {
      given = tolower(name); known = tolower($1)
      if (index(known, given) || distance(given, known) <= (length(given) + 2) / 4) print $1
    }' | head -n 8 | paste -sd ' ')
  if [[ -n $like ]]; then printf 'similar names: %s' "$like"; else printf './corvane test --list prints all names'; fi
}

# planned PLAN KIND: the items of a kind.
planned() { awk -v kind="$2" '$1 == kind { print $2 }' <<<"$1"; }

# whole_host PLAN: whether all host tests are to run, for which there is one program.
whole_host() { [[ $(planned "$1" host | sort) == "$(host_rooms | sort)" ]]; }

build_planned() {
  local plan=$1
  local -a rooms targets=() fuzz
  mapfile -t rooms < <({ planned "$plan" host; planned "$plan" single | cut -d : -f 1; } | sort -u)
  mapfile -t fuzz < <(planned "$plan" fuzz)
  if whole_host "$plan"; then targets=(corvane_tests); else targets=("${rooms[@]/#/test_}"); fi
  if grep -qE '^(scenario|bench) ' <<<"$plan"; then targets+=(inspect); fi
  if ((${#targets[@]} > 0)); then build_host_tests "${targets[@]}"; fi
  if ((${#fuzz[@]} > 0)); then build_fuzz_targets "${fuzz[@]}"; fi
  if grep -qE '^(scenario|bench) ' <<<"$plan"; then build_firmware DEBUG; fi
  if grep -qE '^(scenario access_secrets|bench .*|seeded .*)$' <<<"$plan"; then build_firmware RELEASE; fi
  if grep -q '^package ' <<<"$plan"; then build_package; fi
  if grep -q '^bench ' <<<"$plan"; then build_bench; fi
  if grep -q '^seeded ' <<<"$plan"; then
    build_inspector
    build_seeded
  fi
}

run_planned() {
  local plan=$1 room test
  local -a jobs named
  if whole_host "$plan"; then
    run_host_tests
  else
    for room in $(planned "$plan" host); do run_host_room "$room"; done
  fi
  for test in $(planned "$plan" single); do run_host_room "${test%%:*}" "${test#*:}"; done

  mapfile -t jobs < <(awk '($1 == "fuzz" || $1 == "lint") && $2 != "clang-tidy" { print $1 ":" $2 }' <<<"$plan")
  if ((${#jobs[@]} > 0)); then
    say '==> Fuzz targets, linters'
    run_side_by_side "${jobs[@]}"
  fi
  if grep -q '^lint clang-tidy$' <<<"$plan"; then run_clang_tidy; fi

  mapfile -t named < <(planned "$plan" scenario)
  if grep -q '^bench ' <<<"$plan"; then named+=(cold); fi
  if ((${#named[@]} > 0)); then run_scenarios "${named[@]}"; fi
  if grep -q '^bench ' <<<"$plan"; then
    say '==> Benchmarks'
    run_side_by_side bench:limits
  fi
  if grep -q '^seeded ' <<<"$plan"; then run_seeded; fi
}
