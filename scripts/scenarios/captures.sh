# @file
# Scenarios without boots: checks what the inspector prints for the captures and variable stores of other scenarios.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

scenario_capture_texts() {
  check 'display and help texts are those of the form sources' texts_are cold en-US
  check 'the same in a boot from the cache' texts_are warm en-US
  check 'the same in factory mode' texts_are factory en-US
  check 'the same in French' texts_are french fr-FR
}

# texts_are BOOT LANGUAGE: every attribute has the texts that the driver makes of its question's texts.
texts_are() {
  "$INSPECT" show --json "$(records_of "$1")" |
    python3 "$ROOT/scripts/python/texts.py" "$ROOT/VaroFeaturesPkg/VirtualNotebook/SetupForms" "$2"
}

scenario_capture_findings() {
  local table
  check 'the default notebook has no findings' lint_says cold 0 '^0 findings'
  check 'a store that is exactly full has no findings' lint_says brim 0 '^0 findings'
  for table in strings attributes values display help; do
    check "overfull $table table: the capture gives the number of lost entries and the first one" \
      cut_is_told "$table"
    check "overfull $table table: the flash image adds their texts and the bytes over" cut_is_named "$table"
  done
  check 'questions above the limit are reported' lint_says crowd 1 '^finding: attribute-limit: '
  check 'a cache without help texts is reported' lint_says no-help 1 '^finding: cache-partial: .*"HelpString"'
  check 'help texts above the limit are reported' lint_says cold 1 '^finding: cache-limit: "HelpString"' --limit 4200
  check 'a flash image of another boot is reported' \
    lint_with cold "$(vars_of full-strings)" 1 '^finding: other-boot: '
}

# lint_says BOOT STATUS PATTERN [OPTION OF lint]...: with the boot's own flash image.
lint_says() {
  local boot=$1 status=$2 pattern=$3
  shift 3
  lint_with "$boot" "$(vars_of "$boot")" "$status" "$pattern" "$@"
}

lint_with() {
  local boot=$1 flash=$2 status=$3 pattern=$4 said got=0
  shift 4
  said=$("$INSPECT" lint "$(records_of "$boot")" ${flash:+"$flash"} "$@") || got=$?
  if ((got != status)) || ! grep -qE "$pattern" <<<"$said"; then
    say "exit $got: $said"
    return 1
  fi
}

# first_lost TABLE: the first entry that the driver left out, from its message on the console.
first_lost() {
  local said
  said=$(text_of "full-$1" serial.log | grep -m 1 -F "CorvaneDxe: ${CUTS[$1]}")
  grep -oE '[0-9]+' <<<"${said##*"${CUTS[$1]}"}" | head -n 1
}

cut_is_told() {
  lint_with "full-$1" '' 1 "^finding: table-cut: The $1 table lacks [0-9]+ entries, from handle $(first_lost "$1") on"
}

# The finding lists as many names or texts as are lost, from the first lost handle on.
cut_is_named() {
  local said count
  lint_says "full-$1" 1 "^finding: table-cut: The $1 table .*; whole, it is [0-9]+ bytes over its capacity" || return
  said=$("$INSPECT" lint "$(records_of "full-$1")" "$(vars_of "full-$1")" || true)
  count=$(sed -nE 's/^finding: table-cut: .* lacks ([0-9]+) entries.*/\1/p' <<<"$said")
  (($(grep -cE '^    [0-9]+ ' <<<"$said") == count)) || { say "$count entries are lost"; return 1; }
  [[ $(grep -m 1 -E '^    [0-9]+ ' <<<"$said") == "    $(first_lost "$1") "* ]]
}

scenario_capture_cache() {
  check 'the cold store is valid' verdict_is cold valid
  check 'the warm store is valid' verdict_is warm valid --firmware 1.0.0
  check 'for an updated firmware, it is stale' verdict_is warm stale --firmware 2.0.0
  check 'a marked store is marked bad' verdict_is marked 'marked bad'
  check 'a store without help texts is partial' verdict_is no-help partial
  check 'a limit below the help texts makes it partial' verdict_is cold partial --limit 4200
  check 'a store that took nothing has no cache' verdict_is full absent
  check 'the padded image for QEMU gives the same result' padded_alike cold
}

verdict_is() {
  local boot=$1 verdict=$2 said
  shift 2
  said=$("$INSPECT" cache "$(vars_of "$boot")" "$@" | head -n 1) || true
  [[ $said == "verdict: $verdict" ]] || { say "$said"; return 1; }
}

padded_alike() {
  local padded
  padded=$(mktemp)
  cp "$(vars_of "$1")" "$padded"
  truncate -s 64M "$padded"
  diff <("$INSPECT" cache "$(vars_of "$1")") <("$INSPECT" cache "$padded")
  local status=$?
  rm -f "$padded"
  return "$status"
}

scenario_capture_validity() {
  check 'what the default notebook publishes is valid' validates cold
  check 'what a boot from the cache publishes is valid' validates warm
  check 'readers of common types stop at the first password' stops_at_password cold
}

validates() { [[ $("$INSPECT" validate "$(records_of "$1")") == valid ]]; }

stops_at_password() {
  local said
  said=$("$INSPECT" validate --profile common "$(records_of "$1")") && return 1
  grep -qF 'stops at entry 0 of the attributes table (handle 1, password)' <<<"$said"
}

# Exports, imports and exports every capture of every scenario.
captures_come_back() {
  local capture work status=0 count=0
  work=$(mktemp -d)
  for capture in "$OUT"/debug/*/records.bin; do
    [[ -s $capture ]] || continue
    if ! "$INSPECT" export --json "$capture" -o "$work/first.json" ||
      ! "$INSPECT" import "$work/first.json" -o "$work/records.bin" ||
      ! "$INSPECT" export --json "$work/records.bin" -o "$work/second.json" ||
      ! cmp "$capture" "$work/records.bin" || ! cmp "$work/first.json" "$work/second.json"; then
      say "${capture#"$OUT/"} changes in export and import"
      status=1
    fi
    count=$((count + 1))
  done
  rm -rf "$work"
  ((count > 0)) || { say 'there are no captures'; return 1; }
  return "$status"
}

# differ_in BOOT BOOT [LINE]...: `inspect diff` reports exactly these lines.
differ_in() {
  local first second
  first=$(records_of "$1")
  second=$(records_of "$2")
  shift 2
  diff <(printf '%s\n' "$@" | sed '/^$/d') <("$INSPECT" diff "$first" "$second" | sed -n 's/^  //p')
}

# redfish_is_complete CAPTURE...: the check without the schemas.
redfish_is_complete() {
  local status=0
  REDFISH_SCHEMA_DIR='' "$ROOT/tools/inspect/test/export/check_redfish.py" "$INSPECT" "$@" || status=$?
  ((status == 0 || status == STATUS_SKIPPED))
}

# exports_are_read READER: software of others reads every attribute of two captures.
exports_are_read() {
  "$ROOT/tools/inspect/test/export/check_exports.py" "$1" "$INSPECT" "$(records_of cold)" "$(records_of factory)"
}

fwupd_reads() {
  local folder="$BUILD/fwupd"
  command -v fwupdtool >/dev/null || [[ -x $folder/fwupdtool ]] ||
    (unpack_fwupd "$folder") >"$LOGS/fwupd.log" 2>&1 || { printf 'fwupd cannot be had'; return "$STATUS_SKIPPED"; }
  if [[ -x $folder/fwupdtool ]]; then export FWUPDTOOL=$folder/fwupdtool; fi
  exports_are_read fwupd
}

scenario_capture_exports() {
  check 'every capture has the same bytes after export and import' captures_come_back
  check 'another version of the same firmware does not differ' differ_in cold updated
  check 'a diff reports the changed settings' differ_in cold changed 'AutoOnHr (1142) current: 19 -> 7' \
    'PrimaryBattChargeCfg (2001) current: Adaptive -> Express' \
    'IdleMinutes (2002) current: 720 -> 208 (a boot from the cache reads the low byte alone)' \
    'BlockSleep (2003) current: Disabled -> Enabled'
  check 'the Redfish documents hold every attribute' redfish_is_complete "$(records_of cold)" "$(records_of factory)"
  check 'the Redfish documents fit the schemas of the DMTF' \
    "$ROOT/tools/inspect/test/export/check_redfish.py" "$INSPECT" "$(records_of cold)" "$(records_of factory)"
  check 'sushy reads every attribute and registry entry, and sends changes' exports_are_read sushy
  check 'a reader of DSP0247 reads every attribute from the PLDM tables' exports_are_read pldm
  check 'fwupd reads every attribute of the firmware-attributes tree' fwupd_reads
  check 'the report shows everything in a browser, wide and narrow, without an error' \
    "$ROOT/tools/inspect/test/export/check_report.py" "$INSPECT" "$(records_of factory)" "$(records_of changed)"
}
