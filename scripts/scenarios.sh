# @file
# Firmware tests: boots the DEBUG notebook in scenarios and checks the results. scenarios/checks.sh holds the checks, the
# other files there the scenarios.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# The scenarios of each file. A scenario is a function scenario_NAME. Scenarios run side by side and share only the flash of
# the cold boot.
readonly SCENARIO_FILES=(life modes damage platform stress access captures)
readonly -A SCENARIOS=(
  [life]='cold again warm settings_changed version_changed marked_bad'
  [modes]='factory_mode owner_password cameras failing_settings no_caching language'
  [damage]='damaged_version damaged_attributes damaged_counters damaged_names damaged_display_texts damaged_help_texts
    unsealed_attributes unsealed_texts
    store_full_from_the_start store_full_before_attributes store_full_before_help'
  [platform]='foreign_forms stock_firmware optional_parts_missing bare_platform asset_tag_missing required_parts_missing signals'
  [stress]='full_strings full_attributes full_values full_display_texts full_help_texts
    too_many_questions full_store bad_form_set no_form_sets'
  [access]='access_session access_unkept access_unserved access_loaded_again access_long_help access_secrets'
  [captures]='capture_texts capture_findings capture_cache capture_validity capture_exports'
)

for part in checks "${SCENARIO_FILES[@]}" seeded; do
  # shellcheck source=/dev/null
  source "$ROOT/scripts/scenarios/$part.sh"
done

# Scenarios that check the boots of others. Every scenario also needs the cold boot.
readonly -A NEEDS=(
  [capture_texts]='warm factory_mode language'
  [capture_findings]='full_strings full_attributes full_values full_display_texts full_help_texts full_store too_many_questions
    store_full_before_help'
  [capture_cache]='warm marked_bad store_full_from_the_start store_full_before_help'
  [capture_validity]='warm'
  [capture_exports]='factory_mode settings_changed version_changed'
)

# Folder of the boots in out/. The soak uses another one.
SCENARIO_GROUP=debug
scenario_folder() { printf '%s/%s/%s' "$OUT" "$SCENARIO_GROUP" "$1"; }

vars_of() { printf '%s/vars.fd' "$(scenario_folder "$1")"; }

# built FILE: a file of the DEBUG build of the notebook, such as an application.
built() { printf '%s/AARCH64/%s' "$(firmware_output DEBUG)" "$1"; }

# scenario_boot NAME [OPTION OF boot]...: every boot also leaves the blocks of the published protocol and a list of the
# driver's variables.
scenario_boot() {
  local name=$1
  shift
  boot "debug/$name" DEBUG --file "$(built AttributeDump.efi)" "$@" \
    --command 'AttributeDump published.bin >a published.txt' ||
    { count_results 0 1; return 1; }
  "$ROOT/scripts/python/cache.py" list "$(vars_of "$name")" >"$(scenario_folder "$name")/cache.txt"
}

# after BOOT NAME [OPTION]...: a boot from the flash that BOOT left.
after() {
  local earlier=$1 name=$2
  shift 2
  scenario_boot "$name" --vars "$(vars_of "$earlier")" "$@"
}

# all_scenarios: one name a line. Each comes after those it needs.
all_scenarios() {
  local file
  for file in "${SCENARIO_FILES[@]}"; do xargs -n 1 <<<"${SCENARIOS[$file]}"; done
}

# run_scenarios NAME...: the named ones and those they need.
run_scenarios() {
  local name needed start before=$FAILED
  local -A wanted=()
  local -a boots=() looks=()
  for name in "$@"; do
    wanted[$name]=1
    for needed in ${NEEDS[$name]:-}; do wanted[$needed]=1; done
  done
  unset 'wanted[cold]'
  for name in $(all_scenarios); do
    if [[ ! -v wanted[$name] ]]; then continue; fi
    if [[ -v NEEDS[$name] ]]; then looks+=("scenario:$name"); else boots+=("scenario:$name"); fi
  done
  start=$(now_ms)
  say '==> Firmware scenarios (DEBUG firmware in QEMU)'
  run_side_by_side scenario:cold
  if ((FAILED == before)); then
    run_side_by_side "${boots[@]}"
    run_side_by_side "${looks[@]}"
  else
    complain 'the cold boot failed, so the other scenarios did not run'
  fi
  say "    $((1 + ${#boots[@]} + ${#looks[@]})) scenarios in $(seconds_since "$start") s"
}

job_scenario() { "scenario_$1"; }
