#!/usr/bin/env bash
# @file
# Builds the notebook's firmware twice, as it is and from a copy with ten changes, boots both, and checks that
# `inspect diff` tells of these ten alone. Not part of ./corvane test: it takes minutes.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
set -euo pipefail

SCRIPTS=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
for part in common results packages edk2 firmware host boot; do
  # shellcheck source=/dev/null
  source "$SCRIPTS/$part.sh"
done

readonly COPY="$BUILD/seeded"

# edit FILE SED...: a change of the copy; one that changes nothing is a mistake here.
edit() {
  local file="$COPY/VaroFeaturesPkg/$1"
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
  edit Corvane/CorvaneDxe/sources/PlatformAttributes.cpp -e '/Token = 1843/s/1843/1843, .ReadOnly = true/'
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

# Builds and boots in a checkout: boot_in FOLDER
boot_in() {
  (
    # shellcheck source=/dev/null
    for part in common results packages edk2 firmware host boot; do source "$1/scripts/$part.sh"; done
    prepare_edk2
    build_firmware RELEASE
    boot seeded RELEASE
  )
}

compare() {
  local status=0 differences
  differences=$("$OUT/inspect" diff "$OUT/seeded/records.bin" "$COPY/out/seeded/records.bin") || status=$?
  diff <(expected_differences) <(printf '%s\n' "$differences") && ((status == 1))
}

mkdir -p "$BUILD" "$OUT"
lock_checkout
install_packages build
prepare_edk2
export EDK2_DIR
build_inspector
rm -rf "$COPY/VaroFeaturesPkg" "$COPY/scripts" "$COPY/out"
mkdir -p "$COPY"
cp -r "$ROOT/VaroFeaturesPkg" "$SCRIPTS" "$COPY/"
seed_changes
# `readonly` places of a checkout are fixed once a process, so each one is built by a process of its own.
for folder in "$ROOT" "$COPY"; do
  bash -c "set -euo pipefail; $(declare -f boot_in); boot_in \"\$1\"" seeded "$folder"
done
check 'inspect diff tells of the ten changes alone, five of them breaking' compare
print_summary
((FAILED == 0))
