# @file
# Firmware tests: boots the DEBUG notebook in one scenario after the other and checks what each boot published.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# What comes out of the cache as it went in; values are read anew.
readonly TABLES_OF_CACHE=strings,attributes,display,help

# A value that is read anew keeps its low byte: 720, the setup's default, is 208 from the second boot on.
readonly IDLE_MINUTES_AS_BYTE='IdleMinutes integer = 208'

readonly ATTRIBUTE_VARIABLES=47FEFD34-5EDF-4BA3-9FEA-8F3620D7CF07

# The sanitized inspector of the host tests: what boots leave is one more test of it.
readonly INSPECT="$HOST_TESTS/tools/inspect/inspect"

# The boots land in out/debug/, beside the image that they ran.
scenario_folder() { printf '%s/debug/%s' "$OUT" "$1"; }

# scenario_boot NAME [OPTION OF boot]...: every boot ends with the Shell program's view of tables and cache.
scenario_boot() {
  local name=$1
  shift
  boot "debug/$name" DEBUG --file "$(firmware_output DEBUG)/AARCH64/AttributeDump.efi" \
    --command 'AttributeDump >a attributes.txt' --command 'AttributeDump -c >a cache.txt' "$@" ||
    { count_results 0 1; return 1; }
}

vars_of() { printf '%s/vars.fd' "$(scenario_folder "$1")"; }

run_scenarios() {
  local before=$FAILED
  say '==> Firmware scenarios (DEBUG firmware in QEMU)'
  if scenario_cold; then
    scenario_again || true
    scenario_warm || true
    scenario_settings_changed || true
    scenario_version_changed || true
    scenario_cache_marked_bad || true
  else
    complain 'the other scenarios start from the cold boot and were left out'
  fi
  ((FAILED == before))
}

scenario_cold() {
  scenario_boot cold || return
  check 'cold: eight records are sent' count_is cold RecordsSent 8
  check 'cold: the form sets are parsed' rebuilt cold
  check 'cold: the inspector finds nothing to complain of' decodes cold
  check 'cold: the protocol in the firmware shows the attributes of the records' same_attributes cold
  check "cold: the firmware's own decompressor decodes the cache" cache_decodes cold
}

# What the whole suite leans on: a boot depends on its scenario alone.
scenario_again() {
  scenario_boot again || return
  check 'again: a second cold boot sends and stores the same' same_boot cold again
}

scenario_warm() {
  scenario_boot warm --vars "$(vars_of cold)" || return
  check 'warm: eight records are sent' count_is warm RecordsSent 8
  check 'warm: no form set is listed or parsed' restored warm
  check 'warm: all but the values equal the cold tables' same_tables cold warm --only "$TABLES_OF_CACHE"
  check 'warm: the one value above 255 is read anew as a byte, all others are the cold ones' \
    differs_only_in cold warm "$IDLE_MINUTES_AS_BYTE"
  check 'warm: the protocol in the firmware shows the attributes of the records' same_attributes warm
}

# A checkbox, a one-of and a numeric question, changed by the user before the tables are asked for.
scenario_settings_changed() {
  scenario_boot changed --vars "$(vars_of cold)" --set 'set=2003=1;2001=2;1142=7' || return
  check 'changed: no form set is listed or parsed' restored changed
  check 'changed: all but the values equal the cold tables' \
    same_tables cold changed --only "$TABLES_OF_CACHE"
  check 'changed: the three attributes have their new values, all others the old' \
    differs_only_in cold changed 'BlockSleep enumeration = Enabled' 'PrimaryBattChargeCfg enumeration = Express' \
    'AutoOnHr integer = 7' "$IDLE_MINUTES_AS_BYTE"
}

scenario_version_changed() {
  scenario_boot updated --vars "$(vars_of cold)" --set firmware-version=2.0.0 || return
  check 'updated: another firmware version has the form sets parsed' rebuilt updated
  check 'updated: the tables equal the cold ones' same_tables cold updated
  scenario_boot updated-warm --vars "$(vars_of updated)" --set firmware-version=2.0.0 || return
  check 'updated-warm: the version of the new cache is trusted' restored updated-warm
}

# Any byte but 0 in "AttCacheStatus" calls for a rebuild, which clears it. -bs -rt -nv are its attributes.
scenario_cache_marked_bad() {
  scenario_boot marked --vars "$(vars_of cold)" \
    --command "setvar AttCacheStatus -guid $ATTRIBUTE_VARIABLES -bs -rt -nv =01" || return
  scenario_boot rebuilt --vars "$(vars_of marked)" || return
  check 'rebuilt: "AttCacheStatus" 1 has the form sets parsed' rebuilt rebuilt
  check 'rebuilt: the tables equal the cold ones' same_tables cold rebuilt
  scenario_boot rebuilt-warm --vars "$(vars_of rebuilt)" || return
  check 'rebuilt-warm: the rebuild has cleared the mark' restored rebuilt-warm
}

# count_of BOOT NAME: a count of timings.txt.
count_of() { awk -v name="$2" '$1 == name { sub(/\r$/, ""); print $2 }' "$(scenario_folder "$1")/timings.txt"; }

count_is() {
  local count
  count=$(count_of "$1" "$2")
  [[ $count == "$3" ]] || { say "$2 is ${count:-missing}, not $3"; return 1; }
}

rebuilt() { (($(count_of "$1" FormSetsListed) > 0 && $(count_of "$1" FormSetsParsed) > 0)); }

restored() { count_is "$1" FormSetsListed 0 && count_is "$1" FormSetsParsed 0; }

decodes() { "$INSPECT" show "$(scenario_folder "$1")/records.bin" >/dev/null; }

# same_tables BOOT BOOT [OPTION OF inspect diff-tables]...
same_tables() {
  local first second
  first=$(scenario_folder "$1")/records.bin
  second=$(scenario_folder "$2")/records.bin
  shift 2
  "$INSPECT" diff-tables "$first" "$second" "$@"
}

same_boot() {
  local file
  for file in records.bin platform.txt vars.fd; do
    cmp "$(scenario_folder "$1")/$file" "$(scenario_folder "$2")/$file" || return
  done
}

# attributes BOOT: a line for each, without the tables' fill.
attributes() { "$INSPECT" show --no-tables "$(scenario_folder "$1")/records.bin"; }

# The program in the guest reads the published protocol, the inspector the records: both print the same lines.
same_attributes() { diff <(attributes "$1") <(tr -d '\r' <"$(scenario_folder "$1")/attributes.txt"); }

# One line for each of the four compressed variables, the last word of which says how it went.
cache_decodes() {
  tr -d '\r' <"$(scenario_folder "$1")/cache.txt" |
    awk '{ print; good += $NF == "ok" } END { exit good != 4 || NR != 4 }'
}

# differs_only_in BOOT BOOT LINE...: those lines of the second boot, given from the name to the current value, and no
# others differ from the first.
differs_only_in() {
  local first=$1 second=$2 changed line
  shift 2
  changed=$(diff <(attributes "$first") <(attributes "$second") | sed -n -E 's/^> [0-9]+ (.*) \(default .*/\1/p') || true
  for line in "$@"; do
    grep -qxF "$line" <<<"$changed" || { say "not there: $line"; return 1; }
  done
  (($(wc -l <<<"$changed") == $#)) || { say "$changed"; return 1; }
}
