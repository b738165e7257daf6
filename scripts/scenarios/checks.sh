# @file
# Checks of a boot: one function each, which prints what is wrong.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# The tables that a restore reproduces. Values are read again.
TABLES_OF_CACHE=strings,attributes,display,help

# The variables of the cache that a failure deletes.
CACHE_VARIABLES=(BiosVersion AttributesData AttributesCount PldmString DispString HelpString)

# shellcheck disable=SC2034  # read by the parts with the scenarios
readonly TABLES_OF_CACHE CACHE_VARIABLES

# The sanitized inspector of the host tests, so that boots test the inspector too.
INSPECT="$HOST_TESTS/tools/inspect/inspect"

records_of() { printf '%s/records.bin' "$(scenario_folder "$1")"; }

# text_of BOOT FILE: a text that the guest wrote, without carriage returns.
text_of() { tr -d '\r\0' <"$(scenario_folder "$1")/$2"; }

# count_of BOOT NAME: a count of timings.txt.
count_of() { text_of "$1" timings.txt | awk -v name="$2" '$1 == name { print $2 }'; }

count_is() {
  local count
  count=$(count_of "$1" "$2")
  [[ $count == "$3" ]] || { say "$2 is ${count:-missing}, not $3"; return 1; }
}

rebuilt() { (($(count_of "$1" FormSetsListed) > 0 && $(count_of "$1" FormSetsParsed) > 0)); }

restored() { count_is "$1" FormSetsListed 0 && count_is "$1" FormSetsParsed 0; }

decodes() { "$INSPECT" show "$(records_of "$1")" >/dev/null; }

# Eight records, five tables with good checksums, a protocol with the same blocks. The tables may be cut.
published() {
  count_is "$1" RecordsSent 8 && published_as_sent "$1" || return
  (($("$INSPECT" show "$(records_of "$1")" 2>/dev/null | awk '/^table / { on = 1 } on && $6 == "ok"' | wc -l) == 5)) ||
    { say 'not all five tables are sound'; return 1; }
}

published_nothing() { count_is "$1" RecordsSent 0 && no_published_tables "$1"; }

no_published_tables() { [[ $(text_of "$1" published.txt) == 'AttributeDump: Not Found' ]]; }

# same_tables BOOT BOOT [OPTION OF inspect diff-tables]...
same_tables() {
  local first second
  first=$(records_of "$1")
  second=$(records_of "$2")
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
attributes() { "$INSPECT" show --no-tables "$(records_of "$1")" 2>/dev/null || (($? == 1)); }

# The protocol in the guest has the same blocks as the records.
published_as_sent() {
  "$ROOT/scripts/python/published.py" blocks "$(records_of "$1")" "$(scenario_folder "$1")/published.bin"
}

# has BOOT LINE...: there are attribute lines that begin like LINE, with or without the handle.
has() {
  local shown line status=0
  shown=$(attributes "$1")
  shift
  for line in "$@"; do
    LINE=$line awk '
      { found += index($0, ENVIRON["LINE"]) == 1 || index($0, ENVIRON["LINE"]) == length($1) + 2 }
      END { exit !found }' <<<"$shown" || { say "missing: $line"; status=1; }
  done
  return "$status"
}

# lacks BOOT NAME...: no attribute's name begins like that.
lacks() {
  local boot=$1 name
  shift
  for name in "$@"; do
    if has "$boot" "$name" >/dev/null; then say "present: $name"; return 1; fi
  done
}

# differs_only_in BOOT BOOT LINE...: exactly these lines of the second boot differ from the first. A LINE goes from the name
# to the current value.
differs_only_in() {
  local first=$1 second=$2 changed line
  shift 2
  changed=$(diff <(attributes "$first") <(attributes "$second") |
    sed -n -E 's/^> [0-9]+ (.*) \(default .*/\1/p') || true
  for line in "$@"; do
    grep -qxF -e "$line" <<<"$changed" || { say "missing: $line"; return 1; }
  done
  (($(grep -c . <<<"$changed") == $#)) || { say "$changed"; return 1; }
}

# same_cache BOOT BOOT: the driver's variables have the same content.
same_cache() { diff <(text_of "$1" cache.txt) <(text_of "$2" cache.txt); }

# EDK II's own decompressor decodes each variable to the length that it announces.
cache_decodes() {
  "$ROOT/scripts/python/cache.py" decodes "$(vars_of "$1")" "$EDK2_DIR/BaseTools/Source/C/bin/TianoCompress"
}

# no_variables BOOT NAME...
no_variables() {
  local shown name
  shown=$(text_of "$1" cache.txt)
  shift
  for name in "$@"; do
    grep -qx "$name Not Found" <<<"$shown" || { say "$shown"; return 1; }
  done
}

# says_once BOOT TEXT...: the driver prints each TEXT in exactly one line.
says_once() {
  local said line
  said=$(text_of "$1" serial.log)
  shift
  for line in "$@"; do
    (($(grep -cF -e "CorvaneDxe: $line" <<<"$said") == 1)) || { say "not said once: $line"; return 1; }
  done
}

# says BOOT PATTERN, says_nothing_of BOOT PATTERN: whether a line of the driver matches.
says() { grep -qE "CorvaneDxe: .*($2)" <<<"$(text_of "$1" serial.log)"; }

says_nothing_of() { ! grep -E "CorvaneDxe: .*($2)" <<<"$(text_of "$1" serial.log)"; }
