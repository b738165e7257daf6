# @file
# Builds the notebook's firmware from a copy of the project with ten changes, boots it beside the firmware as it is, and
# checks that `inspect diff` reports these ten changes and no others.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

readonly SEEDED="$BUILD/seeded"

# edit FILE SED...: changes a file of the copy. Fails when nothing changes.
edit() {
  local file="$SEEDED/VaroFeaturesPkg/$1"
  shift
  cp "$file" "$file.old"
  sed -i -E "$@" "$file"
  ! cmp -s "$file" "$file.old" || die "seeded: $* changes nothing in $file"
  rm "$file.old"
}

seed_changes() {
  local forms=VirtualNotebook/SetupForms
  edit "$forms/PowerForms.vfr" \
    -e '/BatteryAlarm,/s/3, 25, 10/3, 20, 10/' \
    -e '/UsbWake,/d' \
    -e '/LidStart,/a CHECKBOX (2099, SleepLight, STRING_TOKEN(STR_SLEEP_LIGHT), NO_HELP, TRUE);'
  edit "$forms/PowerSetup.h" -e '/Engineering;/a \  UINT8     SleepLight;'
  edit "$forms/PowerForms.uni" \
    -e 's/"Idle Minutes"/"Idle Time"/' \
    -e 's/"Start the notebook when its adapter is plugged in\."/"Start with the adapter."/' \
    -e 's/x-UEFI  "LidStart"/x-UEFI  "LidOpens"/'
  # shellcheck disable=SC2016  # a sed script, not shell variables
  edit "$forms/PowerForms.uni" -e \
    '$a #string STR_SLEEP_LIGHT #language en-US "Sleep Light" #language fr-FR "Voyant" #language x-UEFI "SleepLight"'
  edit "$forms/PerformanceForms.vfr" \
    -e '/PowerLimit,/s/10, 45, 28/10, 45, 30/' \
    -e '/OPTION \(3, STRING_TOKEN\(STR_FAST\)\)/d' \
    -e '/ClockScaling,/{h;d}' -e '/IdleStates,/G'
  edit Corvane/CorvaneDxe/sources/PlatformAttributes.cpp -e 's/OWN_MASTER_PASSWORD_LOCKOUT/&, .ReadOnly = true/'
}

expected_differences() {
  cat <<'TEXT'
breaking
  UsbWake (2009) removed: enumeration -> -
  BatteryAlarm (2016) upper-bound: 25 -> 20
  LidOpens (2010) renamed: LidStart -> LidOpens
  ThermalMode (7005) value-removed: Fast -> -
  MasterPasswordLockout (1843) read-only: no -> yes
other
  IdleMinutes (2002) display-text: Idle Minutes -> Idle Time
  WakeOnAc (2007) help-text: Start the notebook when its adapter is plugged in. -> Start with the adapter.
  SleepLight (2099) added: - -> enumeration
  PowerLimit (7007) default: 28 -> 30
  IdleStates (7004) order: after ClockScaling -> after TurboSeconds
10 differences, 5 breaking
TEXT
}

build_seeded() {
  copy_checkout "$SEEDED"
  rm -rf "$SEEDED/out"
  seed_changes
  in_checkout "$SEEDED" build_firmware RELEASE
}

run_seeded() {
  say '==> Ten changes of a firmware'
  boot seeded RELEASE
  in_checkout "$SEEDED" boot seeded RELEASE
  check 'inspect diff reports the ten changes and no others' finds_the_changes
}

finds_the_changes() {
  local status=0 differences
  differences=$("$OUT/inspect" diff "$OUT/seeded/records.bin" "$SEEDED/out/seeded/records.bin") || status=$?
  diff <(expected_differences) <(printf '%s\n' "$differences") && ((status == 1))
}
