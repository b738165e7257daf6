# @file
# Long tests: power failures while the variable flash is written, and some hundred boots of one notebook.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

command_soak() {
  if (($# > 1)) || [[ ! ${1:-1} =~ ^[1-9][0-9]{0,4}$ ]]; then wrong_usage 'soak takes a number of boots'; fi
  set_up build
  build_firmware RELEASE
  build_inspector
  say '==> Power failures and a long run (RELEASE firmware in QEMU)'
  run_soak "${1:-200}"
  print_summary
  ((FAILED == 0))
}

# run_soak BOOTS
run_soak() {
  local start
  start=$(now_ms)
  # shellcheck disable=SC2034  # scenarios.sh and checks.sh read them
  SCENARIO_GROUP=soak INSPECT="$OUT/inspect"
  soak_boot fresh || return 0
  soak_boot fresh-warm --vars "$(vars_of fresh)" || return 0
  run_side_by_side cuts:in_cold_boot cuts:in_rebuild cuts:in_change cuts:in_later_change "life:$1"
  say "    all in $(seconds_since "$start") s"
}

job_cuts() { "cuts_$1"; }

# soak_boot NAME [OPTION OF boot]...
soak_boot() {
  local name=$1
  shift
  boot "soak/$name" RELEASE "$@" || { count_results 0 1; return 1; }
}

# The cache write of a cold boot is most of its writes.
cuts_in_cold_boot() {
  soak_boot cut-cold --flash-log yes || return
  cut_power cut-cold "$(firmware_output RELEASE)/FV/QEMU_VARS.fd" PldmString 60
}

# The boot after a change replaces a cache that is marked as bad, and clears the mark.
cuts_in_rebuild() {
  soak_boot changed --vars "$(vars_of fresh-warm)" --command "$CHANGE" || return
  soak_boot cut-rebuild --vars "$(vars_of changed)" --flash-log yes || return
  cut_power cut-rebuild "$(vars_of changed)" AttributesData 20
}

# The attribute service writes two variables of a few bytes, so the power fails after every write.
cuts_in_change() {
  soak_boot cut-change --vars "$(vars_of fresh-warm)" --flash-log yes --command "$CHANGE" || return
  cut_power cut-change "$(vars_of fresh-warm)" AttCacheStatus 20
}

# A change after the cache was replaced: the store then has another layout than after a first boot. The whole boot is cut,
# because the firmware's own writes move the cache too.
cuts_in_later_change() {
  soak_boot changed-once --vars "$(vars_of fresh-warm)" --command "$CHANGE" || return
  soak_boot rebuilt --vars "$(vars_of changed-once)" || return
  soak_boot cut-later --vars "$(vars_of rebuilt)" --flash-log yes --command 'attr set ChargeStart 50' || return
  cut_power cut-later "$(vars_of rebuilt)" - 20
}

# cut_power BOOT FLASH VARIABLE COUNT: lets the power fail at COUNT moments of the boot, which began with FLASH. The moments
# begin with the write of VARIABLE, or with the first write for "-". Boots twice after each. Prints how many moments hit each
# stage.
cut_power() {
  local boot=$1 flash=$2 variable=$3 count=$4 folder log at stage
  local -A hits=() whole=()
  folder=$(scenario_folder "$boot")
  log=$folder/flash.log
  while read -r at stage; do
    hits[$stage]=$((${hits[$stage]:-0} + 1))
    "$ROOT/scripts/python/flash.py" cut "$flash" "$log" "$at" "$folder/cut.fd"
    if boot_after_cut "$boot-$at" "$folder/cut.fd"; then whole[$stage]=$((${whole[$stage]:-0} + 1)); fi
  done < <("$ROOT/scripts/python/flash.py" cuts "$flash" "$log" "$variable" "$count")
  for stage in "${!hits[@]}"; do
    check "$stage: ${hits[$stage]} moments, complete tables after each" \
      test "${hits[$stage]}" -eq "${whole[$stage]:-0}"
  done
}

# boot_after_cut NAME FLASH: the tables must equal those of a fresh build, and the next boot must trust the cache. The flash
# driver can lose the setup's variables too. If values differ, a boot of the same flash that leaves the cache alone gives the
# expected ones. Only the first boot after the cut reads them in full.
boot_after_cut() {
  local name=$1 fresh=fresh
  boot "soak/$name" RELEASE --vars "$2" >/dev/null || return
  boot "soak/$name-next" RELEASE --vars "$(vars_of "$name")" >/dev/null || return
  if ! values_are fresh "$name" >/dev/null; then
    boot "soak/$name-fresh" RELEASE --vars "$2" --set failing-settings=0x2618 >/dev/null || return
    fresh=$name-fresh
  fi
  if ! { complete "$name" && values_are "$fresh" "$name" &&
    complete "$name-next" && restored "$name-next"; }; then
    say "        kept in out/soak/$name"
    cp "$2" "$(scenario_folder "$name")/cut.fd"
    return 1
  fi
  rm -rf "$(scenario_folder "$name")" "$(scenario_folder "$name")"-{next,fresh}
}

# complete BOOT: the tables that a cache reproduces equal those of the fresh build. Prints the differences.
complete() {
  local found
  count_is "$1" RecordsSent 8 || return
  found=$(same_tables fresh "$1" --only "$TABLES_OF_CACHE") || { say "$found"; return 1; }
}

# values_are FRESH BOOT: the values equal those of FRESH, except the one that a restore reads as a byte and the one that may
# have been changed.
values_are() {
  local changed
  changed=$(diff <(attributes "$1") <(attributes "$2") | sed -n -E 's/^> [0-9]+ (.*) \(default .*/\1/p' |
    grep -vxF -e "$IDLE_MINUTES_AS_BYTE" -e 'ChargeStart integer = 60') || return 0
  say "$changed"
  return 1
}

# What can happen in a boot of the long run.
readonly ACTIONS=(nothing nothing nothing setup shell update mark factory uncached damage)

# State of the notebook that the next boot of the long run depends on: the firmware version of the cache (empty: no cache),
# the firmware version, whether the cache is marked as bad, and two settings.
declare -A NOTEBOOK=([cached]='' [version]=1.0.0 [marked]=0 [percent]=50 [hour]=19)

# job_life BOOTS: boots one notebook in every way, in the same order in each run.
job_life() {
  local boots=$1 number action used faults=0 first='' last=''
  local -A kinds=()
  RANDOM=2026
  cp "$(firmware_output RELEASE)/FV/QEMU_VARS.fd" "$OUT/soak/life.fd"
  for ((number = 1; number <= boots; ++number)); do
    action=${ACTIONS[RANDOM % ${#ACTIONS[@]}]}
    kinds[$action]=$((${kinds[$action]:-0} + 1))
    live_once "$number" "$action" || faults=$((faults + 1))
    if [[ $action == nothing ]]; then
      used=$("$ROOT/scripts/python/flash.py" used "$OUT/soak/life.fd")
      last=$used
      if [[ -z $first ]] && ((number >= boots / 20)); then first=$used; fi
    fi
  done
  for action in "${!kinds[@]}"; do say "    ${kinds[$action]} boots with action '$action'"; done
  check "$boots boots parse the form sets only when they must, and have the values that were set" \
    test "$faults" -eq 0
  check "variables and bytes in use do not grow (${first:-?} early, ${last:-?} at the end)" \
    test "${last% *}" -le "${first% *}" -a "${last#* }" -le $((${first#* } + 64))
}

# live_once NUMBER ACTION: one boot; updates NOTEBOOK. A factory or an uncached boot leaves the cache alone.
live_once() {
  local number=$1 action=$2 rebuild=0 marks=0 status=0
  local percent=${NOTEBOOK[percent]}
  local -a options=()
  case $action in
    setup)
      NOTEBOOK[hour]=$((RANDOM % 24))
      options=(--set "set=1142=${NOTEBOOK[hour]}")
      ;;
    shell)
      percent=$((50 + RANDOM % 46))
      ((percent == NOTEBOOK[percent])) || marks=1
      options=(--command "attr set ChargeStart $percent")
      ;;
    update) NOTEBOOK[version]=2.0.$number ;;
    mark)
      marks=1
      options=(--command "setvar AttCacheStatus -guid $ATTRIBUTE_VARIABLES -bs -rt -nv =01")
      ;;
    factory) options=(--set factory-mode=1) ;;
    uncached) options=(--set failing-settings=0x2618) ;;
    damage) options=(--set damage=BiosVersion:delete) ;;
  esac
  if ((NOTEBOOK[marked])) || [[ ${NOTEBOOK[cached]} != "${NOTEBOOK[version]}" || $action == @(factory|uncached|damage) ]]; then
    rebuild=1
  fi
  boot soak/life RELEASE --vars "$OUT/soak/life.fd" --set "firmware-version=${NOTEBOOK[version]}" \
    "${options[@]}" >/dev/null || return
  cp "$(vars_of life)" "$OUT/soak/life.fd"
  if ! lived "$action" "$rebuild"; then
    say "        boot $number ($action): kept in out/soak/life-$number"
    cp -r "$(scenario_folder life)" "$(scenario_folder "life-$number")"
    status=1
  fi
  if [[ $action == damage ]]; then NOTEBOOK[cached]=''; fi
  if ((rebuild)) && [[ $action != @(factory|uncached) ]]; then
    NOTEBOOK[cached]=${NOTEBOOK[version]}
    NOTEBOOK[marked]=0
  fi
  if ((marks)); then NOTEBOOK[marked]=1; fi
  NOTEBOOK[percent]=$percent
  return "$status"
}

# lived ACTION REBUILD: whether the boot gathered or restored as it had to, with the right settings.
lived() {
  if (($2)); then rebuilt life; else restored life; fi || { say "rebuild: expected $2"; return 1; }
  has life "ChargeStart integer = ${NOTEBOOK[percent]}" "AutoOnHr integer = ${NOTEBOOK[hour]}" || return
  if [[ $1 == factory ]]; then count_is life RecordsSent 8; else complete life; fi
}
