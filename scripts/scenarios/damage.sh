# @file
# Caches that are damaged, and caches that cannot be written.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# What is done to one variable of a cache (BootPhasesDxe/CacheDamage.h). The attributes are those that an operating system
# gives (7) and those of a variable that a power-off deletes (2). The counters of "AttributesCount" take 8 bytes each.
readonly -A DAMAGES=(
  [BiosVersion]='truncate flip garbage delete flip=-1'
  [AttributesData]='truncate flip garbage delete attributes=7'
  [AttributesCount]='truncate flip garbage delete count=0,40 count=8,400'
  [PldmString]='truncate flip garbage delete attributes=2'
  [DispString]='truncate flip garbage delete'
  [HelpString]='truncate flip garbage delete'
)

# Without a seal, a flipped bit may decode to a list of the same length with other text, which stays. The flips here hit the
# size that a compressed variable announces.
readonly -A UNSEALED_DAMAGES=(
  [AttributesData]='truncate attributes=7'
  [AttributesCount]='delete count=0,40 count=8,400'
  [PldmString]='truncate garbage flip=32'
  [DispString]='garbage delete'
  [HelpString]='truncate flip=32'
)

scenario_damaged_version() { damage_each_way BiosVersion; }
scenario_damaged_attributes() { damage_each_way AttributesData; }
scenario_damaged_counters() { damage_each_way AttributesCount; }
scenario_damaged_names() { damage_each_way PldmString; }
scenario_damaged_display_texts() { damage_each_way DispString; }
scenario_damaged_help_texts() { damage_each_way HelpString; }

# The version seals the cache, so the boot with a damaged variable gathers again.
damage_each_way() {
  local variable=$1 how boot
  for how in ${DAMAGES[$variable]}; do
    boot="$variable-${how//[=,]/-}"
    after cold "$boot" --set "damage=$variable:$how" || return
    check "$variable, $how: the form sets are parsed" rebuilt "$boot"
    check "$variable, $how: tables and cache equal the cold ones" same_tables_and_cache cold "$boot"
  done
}

# A version of four characters has no room for a seal.
readonly UNSEALED=(--set firmware-version=1.00)

scenario_unsealed_attributes() { damage_unsealed unsealed AttributesData AttributesCount; }
scenario_unsealed_texts() { damage_unsealed unsealed-texts PldmString DispString HelpString; }

# damage_unsealed COLD VARIABLE...: COLD is the name of a cold boot without a seal, which the damaged ones start from.
damage_unsealed() {
  local cold=$1 variable how
  shift
  scenario_boot "$cold" "${UNSEALED[@]}" || return
  check 'without a seal, the tables are the same' same_tables cold "$cold"
  for variable in "$@"; do
    for how in ${UNSEALED_DAMAGES[$variable]}; do
      heals "$cold" "$variable" "$how" || return
    done
  done
}

# The damaged boot or one of the next two publishes and caches the same as a cold boot.
heals() {
  local cold=$1 variable=$2 how=$3 boot="$1-$2-${3//[=,]/-}" next
  after "$cold" "$boot" "${UNSEALED[@]}" --set "damage=$variable:$how" || return
  check "$variable, $how, no seal: tables are published" published "$boot"
  check "$variable, $how, no seal: no attribute has another one's name" no_foreign_names "$cold" "$boot"
  for next in "$boot"-{second,third}; do
    ! same_tables_and_cache "$cold" "$boot" >/dev/null || break
    after "$boot" "$next" "${UNSEALED[@]}" || return
    boot=$next
  done
  check "$variable, $how, no seal: by the third boot, tables and cache equal the cold ones" \
    same_tables_and_cache "$cold" "$boot"
}

# no_foreign_names COLD BOOT: each attribute has the name that the cold boot gave to its handle, or none.
no_foreign_names() {
  local names
  names=$(comm -13 <(attribute_names "$1") <(attribute_names "$2") | grep -vE ' (""|null)$' || true)
  [[ -z $names ]] || { say "$names"; return 1; }
}

# attribute_names BOOT: handle and name of each attribute.
attribute_names() {
  "$INSPECT" show --json "$(records_of "$1")" 2>/dev/null |
    python3 -c 'import json, sys
for attribute in json.load(sys.stdin)["attributes"]:
    print(attribute["handle"], json.dumps(attribute["name"]))' | sort
}

same_tables_and_cache() { same_tables "$1" "$2" && same_cache "$1" "$2"; }

# cache_differs_in BOOT BOOT VARIABLE: in that variable alone, and in the version, which seals it.
cache_differs_in() {
  diff <(text_of "$1" cache.txt | grep -vE "^($3|BiosVersion) ") \
    <(text_of "$2" cache.txt | grep -vE "^($3|BiosVersion) ") &&
    ! grep -qxF "$(text_of "$1" cache.txt | grep "^$3 ")" <<<"$(text_of "$2" cache.txt)"
}

# A variable store without room for the whole cache keeps no part of it.
scenario_store_full_from_the_start() { store_full full "${CACHE_VARIABLES[@]}"; }

scenario_store_full_before_attributes() { store_full full-texts AttributesData AttributesCount BiosVersion; }

# store_full BOOT VARIABLE...: boots with a store that has no room for these variables.
store_full() {
  local boot=$1
  shift
  scenario_boot "$boot" --store "$(store_without "$@")" || return
  check 'the tables equal the cold ones' same_tables cold "$boot"
  check 'there is no cache' no_variables "$boot" "${CACHE_VARIABLES[@]}"
  check 'the driver reports it once' says_once "$boot" 'cache deleted: it could not be written completely'
  after "$boot" "$boot-next" || return
  check 'the next boot parses the form sets' rebuilt "$boot-next"
  check 'the next boot publishes the same tables' same_tables cold "$boot-next"
}

# A text variable that cannot be written is missing in the next boot, which then deletes the cache.
scenario_store_full_before_help() {
  scenario_boot no-help --store "$(store_without HelpString)" || return
  check 'the tables equal the cold ones' same_tables cold no-help
  check 'only the help texts are not in the cache' cache_differs_in cold no-help HelpString
  after no-help no-help-next || return
  check 'the next boot publishes all but the help texts' published no-help-next
  check 'the next boot restores the other tables' same_tables cold no-help-next --only strings,attributes,display
  check 'the next boot deletes the cache' no_variables no-help-next "${CACHE_VARIABLES[@]}"
  after no-help-next no-help-rebuilt || return
  check 'the boot after parses the form sets' rebuilt no-help-rebuilt
  check 'the boot after publishes everything' same_tables cold no-help-rebuilt
}

# store_without VARIABLE...: size of a store with room for all variables of the cold boot except these.
store_without() {
  local taken name
  taken=$((STORE_SIZE - $(text_of cold platform.txt | sed -n 's/^VariableStoreRoom //p') + 128))
  for name in "$@"; do
    taken=$((taken - 60 - 2 * (${#name} + 1) - $(text_of cold cache.txt | sed -n "s/^$name \([0-9]*\) .*/\1/p")))
  done
  say "$taken"
}
