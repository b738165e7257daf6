# @file
# The long tests: power that fails while the variable flash is written, and some hundred boots of one notebook.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# run_soak BOOTS
run_soak() {
  local start
  start=$(now_ms)
  LIFE_BOOTS=$1
  # shellcheck disable=SC2034  # of scenarios.sh and checks.sh
  SCENARIO_GROUP=soak INSPECT="$OUT/inspect"
  soak_boot fresh || return
  soak_boot fresh-warm --vars "$(vars_of fresh)" || return
  run_side_by_side cuts_in_cold_boot cuts_in_rebuild cuts_in_change cuts_in_later_change life
  say "    all in $(seconds_since "$start") s"
  ((FAILED == 0))
}

# soak_boot NAME [OPTION OF boot]...
soak_boot() {
  local name=$1
  shift
  boot "soak/$name" RELEASE "$@" || { count_results 0 1; return 1; }
}

# The cache write of a cold boot is most of its writes.
scenario_cuts_in_cold_boot() {
  soak_boot cut-cold --flash-log yes || return
  cut_power cut-cold "$(firmware_output RELEASE)/FV/QEMU_VARS.fd" PldmString 60
}

# The boot after a change writes what has changed over a cache that is marked as bad, and clears the mark.
scenario_cuts_in_rebuild() {
  soak_boot changed --vars "$(vars_of fresh-warm)" --command "$CHANGE" || return
  soak_boot cut-rebuild --vars "$(vars_of changed)" --flash-log yes || return
  cut_power cut-rebuild "$(vars_of changed)" AttributesData 20
}

# The attribute service writes two variables of a few bytes, so that every write is one of the moments.
scenario_cuts_in_change() {
  soak_boot cut-change --vars "$(vars_of fresh-warm)" --flash-log yes --command "$CHANGE" || return
  cut_power cut-change "$(vars_of fresh-warm)" AttCacheStatus 20
}

# A change of a notebook whose cache was written over: what lies where in the store is not what it is after a first boot.
# Its whole boot is cut, as the firmware's own writes move the cache, too.
scenario_cuts_in_later_change() {
  soak_boot changed-once --vars "$(vars_of fresh-warm)" --command "$CHANGE" || return
  soak_boot rebuilt --vars "$(vars_of changed-once)" || return
  soak_boot cut-later --vars "$(vars_of rebuilt)" --flash-log yes --command 'attr set ChargeStart 50' || return
  cut_power cut-later "$(vars_of rebuilt)" - 20
}

# cut_power BOOT FLASH VARIABLE COUNT: lets the power fail at that many moments of the boot, which began with this
# flash, from when the variable is written, or from the first write for "-"; then boots twice. How many moments hit each
# stage is told at the end.
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

# boot_after_cut NAME FLASH: the tables are those of a fresh build, and the boot after trusts the cache of this one. The
# flash driver can lose the setup's own variables, too: where values differ, a boot of the same flash that keeps its
# hands off the cache says what they have come to. Only the first of the boots after has read them in full.
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

# complete BOOT: all that comes out of a cache, or would, is that of the fresh build; what differs is printed.
complete() {
  local found
  count_is "$1" RecordsSent 8 || return
  found=$(same_tables fresh "$1" --only "$TABLES_OF_CACHE") || { say "$found"; return 1; }
}

# values_are FRESH BOOT: the values of a boot that gathered them anew, but for the one that is read anew as a byte and
# the one that may have been changed.
values_are() {
  local changed
  changed=$(diff <(attributes "$1") <(attributes "$2") | sed -n -E 's/^> [0-9]+ (.*) \(default .*/\1/p' |
    grep -vxF -e "$IDLE_MINUTES_AS_BYTE" -e 'ChargeStart integer = 60') || return 0
  say "$changed"
  return 1
}

# What happens in a boot of the long run, most often nothing.
readonly ACTIONS=(nothing nothing nothing setup shell update mark factory uncached damage)

# One notebook through boots of every kind, in an order that repeats. What its next boot has to do follows from what it
# was told before: the version that the cache is of, whether that is marked as bad, and two values.
scenario_life() {
  local number action faults=0 first='' last=''
  local cached='' version=1.0.0 marked=0 percent=50 hour=19
  local -A kinds=()
  RANDOM=2026
  cp "$(firmware_output RELEASE)/FV/QEMU_VARS.fd" "$OUT/soak/life.fd"
  for ((number = 1; number <= LIFE_BOOTS; ++number)); do
    action=${ACTIONS[RANDOM % ${#ACTIONS[@]}]}
    kinds[$action]=$((${kinds[$action]:-0} + 1))
    live_once || faults=$((faults + 1))
  done
  for action in "${!kinds[@]}"; do say "    ${kinds[$action]} boots with action '$action'"; done
  check "$LIFE_BOOTS boots gather anew when they have to and not else, and have the values that were set" \
    test "$faults" -eq 0
  check "variables and bytes in use do not grow (${first:-?} early, ${last:-?} at the end)" \
    test "${last% *}" -le "${first% *}" -a "${last#* }" -le $((${first#* } + 64))
}

# For scenario_life: one boot, and what is known after it. A factory or an uncached boot leaves the cache alone.
live_once() {
  local rebuild=0 next_marked=0 next_percent=$percent
  local -a options=()
  case $action in
    setup)
      hour=$((RANDOM % 24))
      options=(--set "set=1142=$hour")
      ;;
    shell)
      next_percent=$((50 + RANDOM % 46))
      ((next_percent == percent)) || next_marked=1
      options=(--command "attr set ChargeStart $next_percent")
      ;;
    update) version=2.0.$number ;;
    mark)
      next_marked=1
      options=(--command "setvar AttCacheStatus -guid $ATTRIBUTE_VARIABLES -bs -rt -nv =01")
      ;;
    factory) options=(--set factory-mode=1) ;;
    uncached) options=(--set failing-settings=0x2618) ;;
    damage) options=(--set damage=BiosVersion:delete) ;;
  esac
  if ((marked)) || [[ $cached != "$version" || $action == @(factory|uncached|damage) ]]; then rebuild=1; fi
  boot soak/life RELEASE --vars "$OUT/soak/life.fd" --set "firmware-version=$version" \
    "${options[@]}" >/dev/null || return
  cp "$(vars_of life)" "$OUT/soak/life.fd"
  if ! lived; then
    say "        boot $number ($action): kept in out/soak/life-$number"
    cp -r "$(scenario_folder life)" "$(scenario_folder "life-$number")"
    faults=$((faults + 1))
  fi
  if [[ $action == damage ]]; then cached=''; fi
  if ((rebuild)) && [[ $action != @(factory|uncached) ]]; then
    cached=$version
    marked=0
  fi
  ((next_marked)) && marked=1
  percent=$next_percent
  if [[ $action == nothing ]]; then
    last=$("$ROOT/scripts/python/flash.py" used "$OUT/soak/life.fd")
    if [[ -z $first ]] && ((number >= LIFE_BOOTS / 20)); then first=$last; fi
  fi
  return 0
}

# For live_once: whether the boot was as its past has it.
lived() {
  if ((rebuild)); then rebuilt life; else restored life; fi || { say "rebuild: expected $rebuild"; return 1; }
  has life "ChargeStart integer = $percent" "AutoOnHr integer = $hour" || return
  if [[ $action == factory ]]; then count_is life RecordsSent 8; else complete life; fi
}
