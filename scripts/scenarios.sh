# @file
# Firmware tests: boots the DEBUG notebook in every scenario, and checks what each boot published and left behind.
# scenarios/checks.sh has what there is to check of a boot, the other parts the scenarios themselves.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

for part in checks life modes damage platform stress access inspect export; do
  # shellcheck source=/dev/null
  source "$ROOT/scripts/scenarios/$part.sh"
done

# Boots without a cache that the other scenarios start from.
readonly COLD_SCENARIOS=(cold)

# Each is a function scenario_NAME of the part that the comment names. They run side by side and share nothing but the
# flash of the cold boot.
readonly SCENARIOS=(
  # life.sh: boots from the cache, settings changed, firmware updated
  again warm settings_changed version_changed marked_bad
  # modes.sh: factory mode, passwords, cameras, failing settings, language
  factory_mode owner_password cameras failing_settings no_caching language
  # damage.sh: damaged and unwritable caches
  damaged_version damaged_attributes damaged_counters damaged_names damaged_display_texts damaged_help_texts
  store_full_from_the_start store_full_before_attributes store_full_before_help
  # platform.sh: parts of the platform that are missing, foreign firmware
  foreign_forms stock_firmware optional_parts_missing bare_platform asset_tag_missing required_parts_missing signals
  # stress.sh: more setup than tables and store take, and less than a notebook has
  full_strings full_attributes full_values full_display_texts full_help_texts
  too_many_questions full_store bad_form_set no_form_sets
  # access.sh: sessions at the Shell
  access access_unkept access_unserved access_loaded_again access_long_help access_secrets
)

# inspect.sh, export.sh: what the inspector makes of the boots of the others
readonly INSPECTIONS=(inspect_texts inspect_lint inspect_cache inspect_validate exports)

# The boots land in out/debug/, beside the image that they ran; those of the soak elsewhere.
SCENARIO_GROUP=debug
scenario_folder() { printf '%s/%s/%s' "$OUT" "$SCENARIO_GROUP" "$1"; }

vars_of() { printf '%s/vars.fd' "$(scenario_folder "$1")"; }

# A file that the DEBUG build of the notebook left, such as an application.
built() { printf '%s/AARCH64/%s' "$(firmware_output DEBUG)" "$1"; }

# scenario_boot NAME [OPTION OF boot]...: every boot ends with the Shell program's view of tables and variables.
scenario_boot() {
  local name=$1
  shift
  boot "debug/$name" DEBUG --file "$(built AttributeDump.efi)" "$@" \
    --command 'AttributeDump >a attributes.txt' --command 'AttributeDump -c >a cache.txt' ||
    { count_results 0 1; return 1; }
}

# after BOOT NAME [OPTION]...: a boot that starts from the flash that another one left.
after() {
  local earlier=$1 name=$2
  shift 2
  scenario_boot "$name" --vars "$(vars_of "$earlier")" "$@"
}

run_scenarios() {
  local before=$FAILED start
  start=$(now_ms)
  say '==> Firmware scenarios (DEBUG firmware in QEMU)'
  run_side_by_side "${COLD_SCENARIOS[@]}"
  if ((FAILED == before)); then
    run_side_by_side "${SCENARIOS[@]}"
    run_side_by_side "${INSPECTIONS[@]}"
  else
    complain 'the other scenarios start from the cold boot and were left out'
  fi
  say "    all scenarios in $(seconds_since "$start") s"
  ((FAILED == before))
}
