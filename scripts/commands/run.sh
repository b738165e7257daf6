# @file
# Prints the results of boots: attributes, fill of the tables, the inspector's findings, times of the phases, and the effect
# of a change at the Shell. Puts all of it on a page.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

command_run() {
  no_arguments "$@"
  set_up build
  build_firmware RELEASE
  build_inspector
  say '==> Booting the virtual notebook, cold and warm'
  boot cold RELEASE
  boot warm RELEASE --vars "$OUT/cold/vars.fd"
  report_boots cold warm
  say
  say '==> Changing a setting at the Shell, and booting again'
  boot change RELEASE --vars "$OUT/warm/vars.fd" --command "$CHANGE >a console.txt"
  boot changed RELEASE --vars "$OUT/change/vars.fd"
  report_change cold change changed
}

# report_boots BOOT...: attributes, fill and findings of each, the times side by side, and a page of the last boot with
# what changed since the first.
report_boots() {
  local name
  for name in "$@"; do
    say
    say "== $name boot: attributes and tables"
    [[ -f $OUT/$name/records.bin ]] || die "the $name boot left no records.bin: the driver sent no tables"
    "$OUT/inspect" show "$OUT/$name/records.bin" || die "inspect show fails for out/$name/records.bin"
    say
    say "== $name boot: findings"
    "$OUT/inspect" lint "$OUT/$name/records.bin" "$OUT/$name/vars.fd" || found_something
  done
  say
  say '== Times (virtual: 16 ns an instruction)'
  print_times "$@"
  (cd "$OUT" && ./inspect report "$name/records.bin" "$name/vars.fd" --since "$1/records.bin" -o report.html) ||
    found_something
  say
  say '== Report: out/report.html'
}

# The inspector ends with 1 for findings, which it prints, and with 2 for unusable input.
found_something() { (($? == 1)) || die 'the inspector cannot read what a boot left'; }

# A line of timings.txt is a measured phase (name, ticks, nanoseconds) or a count (name, number). One column a boot.
print_times() {
  local name
  local -a files=()
  for name in "$@"; do
    [[ -f $OUT/$name/timings.txt ]] || die "the $name boot left no timings.txt"
    files+=("$OUT/$name/timings.txt")
  done
  awk -v boots="$*" '
    FNR == 1 { ++boot }
    { sub(/\r$/, "") }
    NF == 2 || NF == 3 {
      if (!($1 in known)) { known[$1] = 1; order[++lines] = $1 }
      shown[$1, boot] = NF == 3 ? sprintf("%.1f us", $3 / 1000) : $2
    }
    END {
      columns = split(boots, title, " ")
      printf "  %-30s", ""
      for (b = 1; b <= columns; ++b) printf "%16s", title[b]
      print ""
      for (i = 1; i <= lines; ++i) {
        printf "  %-30s", order[i]
        for (b = 1; b <= columns; ++b) printf "%16s", (order[i], b) in shown ? shown[order[i], b] : "-"
        print ""
      }
    }' "${files[@]}"
}

# A setting of the notebook that no password protects.
readonly CHANGE='attr set ChargeStart 60'

# report_change BEFORE CHANGE AFTER: prints the console of the boot CHANGE, and the values that differ between the other two
# boots. Both gathered all values, so there is no other difference.
report_change() {
  local status=0
  say
  say "== $CHANGE, and the next boot"
  tr -d '\r\0' <"$OUT/$2/console.txt"
  "$OUT/inspect" diff-tables "$OUT/$1/records.bin" "$OUT/$3/records.bin" --only values || status=$?
  ((status == 1)) || die "the change is not in the tables of the $3 boot"
}
