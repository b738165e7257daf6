# @file
# Checks of what the inspector makes of the captures that the boots left: comparisons, exports, the report.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# Ends a command for which something is missing that the project does not install.
readonly STATUS_SKIPPED=77

# tell STATUS TEXT: what a command said that has run already.
tell() {
  printf '%s' "$2"
  return "$1"
}

# check_or_skip TITLE COMMAND...: like check; a command that could not do its work says why and counts for nothing.
check_or_skip() {
  local title=$1 output status=0
  shift
  output=$("$@" 2>&1) || status=$?
  if ((status == STATUS_SKIPPED)); then
    say "    skipped $title: $output"
  else
    check "$title" tell "$status" "$output"
  fi
}

# Every capture in turn, whatever its scenario did to it: export, import, export.
captures_come_back() {
  local capture work status=0 count=0
  work=$(mktemp -d)
  for capture in "$OUT"/debug/*/records.bin; do
    [[ -s $capture ]] || continue
    if ! "$INSPECT" export --json "$capture" -o "$work/first.json" ||
      ! "$INSPECT" import "$work/first.json" -o "$work/records.bin" ||
      ! "$INSPECT" export --json "$work/records.bin" -o "$work/second.json" ||
      ! cmp "$capture" "$work/records.bin" || ! cmp "$work/first.json" "$work/second.json"; then
      say "${capture#"$OUT/"} does not come back"
      status=1
    fi
    count=$((count + 1))
  done
  rm -rf "$work"
  ((count > 0)) || { say 'there are no captures'; return 1; }
  return "$status"
}

# differ_in BOOT BOOT [LINE]...: `inspect diff` tells of these alone.
differ_in() {
  local first second
  first=$(records_of "$1")
  second=$(records_of "$2")
  shift 2
  diff <(printf '%s\n' "$@" | sed '/^$/d') <("$INSPECT" diff "$first" "$second" | sed -n 's/^  //p')
}

scenario_exports() {
  check 'every capture comes back from its export, byte for byte' captures_come_back
  check 'another version of the same firmware does not differ' differ_in cold updated
  check 'a diff tells of the settings changed' differ_in cold changed 'AutoOnHr (1142) current: 19 -> 7' \
    'PrimaryBattChargeCfg (2001) current: Adaptive -> Express' 'IdleMinutes (2002) current: 720 -> 208' \
    'BlockSleep (2003) current: Disabled -> Enabled'
  check_or_skip 'the Redfish documents hold every attribute and fit their schemas' \
    "$ROOT/tools/inspect/test/export/check_redfish.py" "$INSPECT" "$(records_of cold)" "$(records_of factory)"
  check_or_skip 'the report shows everything in a browser, wide and narrow, without an error' \
    "$ROOT/tools/inspect/test/export/check_report.py" "$INSPECT" "$(records_of factory)" "$(records_of changed)"
}
