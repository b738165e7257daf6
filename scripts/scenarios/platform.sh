# @file
# Parts of the platform that are missing or strange, and firmware that is none of ours.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# What is left out by the scenario item "without", and what the driver says of it.
readonly -A MISSING_REQUIRED=(
  [settings]=gVaroSettingsProtocolGuid [form-data]=gVaroFormBrowserDataProtocolGuid
  [transport]=gVaroTableTransportProtocolGuid
)
readonly NOTHING_GATHERED='not found: no attribute is gathered or published'

readonly -A MISSING_OPTIONAL=(
  [asset-tag]='gVaroAssetTagLengthProtocolGuid not found: with a valid cache nothing is published'
  [boot-options]='gVaroBootOptionSourceProtocolGuid not found: "System boot configuration" is not built'
  [cameras]='gVaroCameraIdentifiersProtocolGuid not found: no camera attribute is built'
  [defaults]='gVaroSettingDefaultsProtocolGuid not found: every default is 0'
  [firmware-version]='gVaroFirmwareVersionProtocolGuid not found or empty: nothing is cached'
  [mode-query]='gVaroModeQueryProtocolGuid not found: the platform counts as in no factory mode'
  [password-directory]='gVaroPasswordDirectoryProtocolGuid not found: every password counts as not installed'
  [password-service]='gVaroPasswordServiceProtocolGuid not found: there is no owner password'
  [password-state]='gVaroPasswordStateProtocolGuid not found: every password counts as not installed'
)

# What Debian's package installs, and what our build has to put beside it: no Shell is in it.
readonly STOCK_FIRMWARE=/usr/share/qemu-efi-aarch64/QEMU_EFI.fd STOCK_VARS=/usr/share/AAVMF/AAVMF_VARS.fd

readonly -A SIGNALS=(
  [form-sets-updated]=618C92CD-EAAF-48F7-9626-773D90FE1DEF
  [tables-requested]=1A3E76AA-A540-41A1-8DD5-F11A81B7EE3A
)

# Each is asked for something that it would have given.
scenario_optional_parts_missing() {
  missing boot-options cameras=2 lacks 'System boot configuration' || return
  missing cameras cameras=4 lacks MIPICam || return
  missing defaults cameras=2 has 'AutoOnHr integer = 19 (default 0)' || return
  missing firmware-version cameras=2 no_variables "${CACHE_VARIABLES[@]}" || return
  missing mode-query factory-mode=1 lacks FrontFan || return
  missing password-directory passwords=admin has "1 AdminPassword$PRINTABLE password = not installed" || return
  missing password-service owner-password=1 lacks OwnerPassword || return
  missing password-state passwords=admin has "1 AdminPassword$PRINTABLE password = not installed"
}

# missing PART SETTING CHECK [ARGUMENT]...: what the check says of the boot is what the driver says will follow.
missing() {
  local part=$1 setting=$2 outcome=$3
  shift 3
  scenario_boot "no-$part" --set "without=$part" --set "$setting" || return
  check "without $part: the tables are published" published "no-$part"
  check "without $part: the driver names it once, and nothing else" misses_only "no-$part" "${MISSING_OPTIONAL[$part]}"
  check "without $part: ${MISSING_OPTIONAL[$part]#*: }" "$outcome" "no-$part" "$@"
}

misses_only() {
  local said
  said=$(text_of "$1" serial.log | grep -E '^CorvaneDxe: .* not found' || true)
  [[ $said == "CorvaneDxe: $2" ]] || { say "${said:-nothing is said}"; return 1; }
}

# EDK II's DriverSampleDxe keeps values in every kind of store, and in bit fields of them.
scenario_foreign_forms() {
  scenario_boot foreign --set foreign=1 || return
  check 'the tables are published' published foreign
  check 'types, bounds, options and defaults are as compiled, values as in the variables' as_compiled foreign
  check 'values come out of a variable, a buffer store and a name/value store' has foreign \
    'How tall are you? (Hex) integer = 18 (default 18)' 'How old are you? (Step) integer = 18 (default 18)' \
    'NameValueVar1 integer = 18 (default 18)'
  check 'values come out of bit fields' has foreign 'BIT numeric integer = 4 (default 4) {0..7 step 0}'
  check "the notebook's own questions keep their numbers" same_own_attributes cold foreign
  check 'the form data sums up once' says_of_form_data foreign 1 '[0-9]+ form sets, [0-9]+ questions, '
  check 'a computed question is left out, with one line' says_of_form_data foreign 1 'question 0x20 .* computed'
  session foreign foreign-change foreign --set foreign=1 || return
  check 'the session goes as expected' prints foreign-change foreign
  after foreign-change foreign-changed --set foreign=1 || return
  check 'each change is in force in the next boot' has foreign-changed \
    'How tall are you? (Hex) integer = 19' 'How old are you? (Step) integer = 77' 'NameValueVar1 integer = 4660'
}

# as_compiled BOOT: a second reader of IFR finds the foreign attributes in what the build left.
as_compiled() {
  local shown
  shown="$(scenario_folder "$1")/records.json"
  "$INSPECT" show --json "$(records_of "$1")" >"$shown" 2>/dev/null || (($? == 1)) || return
  "$ROOT/scripts/python/ifr.py" "$shown" "$(built MdeModulePkg)" "$(vars_of "$1")"
}

# same_own_attributes BOOT BOOT: those with handles below the first foreign one.
same_own_attributes() {
  diff <(attributes "$1" | head -n 100 | sed -E 's/^[0-9]+ //') <(attributes "$2" | head -n 100 | sed -E 's/^[0-9]+ //')
}

# says_of_form_data BOOT COUNT PATTERN
says_of_form_data() {
  local count
  count=$(grep -cE "FormDataDxe: $3" <<<"$(text_of "$1" serial.log)") || true
  ((count == $2)) || { say "$count lines of: $3"; return 1; }
}

# A platform that provides only what the driver cannot do without.
scenario_bare_platform() {
  local parts="${!MISSING_OPTIONAL[*]}"
  scenario_boot bare --set "without=${parts// /,}" || return
  check 'the tables are published' published bare
  check 'no message comes twice' no_repeats bare
  check 'nothing is cached' no_variables bare "${CACHE_VARIABLES[@]}"
}

no_repeats() { ! text_of "$1" serial.log | grep '^CorvaneDxe: ' | sort | uniq -d | grep .; }

# Only a boot that gathers publishes then; the cache outlives those that do not.
scenario_asset_tag_missing() {
  scenario_boot no-asset-tag --set without=asset-tag || return
  check 'without a cache, the tables equal the cold ones' same_tables cold no-asset-tag
  check 'the driver names it once, and nothing else' misses_only no-asset-tag "${MISSING_OPTIONAL[asset-tag]}"
  after cold untagged --set without=asset-tag || return
  check 'with a valid cache, nothing is published' published_nothing untagged
  check 'the driver names it once, and nothing else' misses_only untagged "${MISSING_OPTIONAL[asset-tag]}"
  check 'the cache stays as it was' same_cache cold untagged
  after untagged tagged || return
  check 'with the protocol back, the cache is trusted' restored tagged
}

# The dispatcher leaves the driver out then, and whoever starts it by hand is told why it does nothing.
scenario_required_parts_missing() {
  local part boot
  for part in "${!MISSING_REQUIRED[@]}"; do
    boot="no-$part"
    scenario_boot "$boot" --set "without=$part" --file "$(driver_image DEBUG)" \
      --command 'load fs0:CorvaneDxe.efi' || return
    check "without $part: the driver names it once, and nothing else" \
      misses_only "$boot" "${MISSING_REQUIRED[$part]} $NOTHING_GATHERED"
    check "without $part: loading it gives the status of the search" refused_to_load "$boot"
    check "without $part: nothing is published" published_nothing "$boot"
    check "without $part: nothing is cached" no_variables "$boot" "${CACHE_VARIABLES[@]}"
  done
}

refused_to_load() { grep -q "CorvaneDxe.efi' error in StartImage: Not Found" <<<"$(text_of "$1" serial.log)"; }

# A signal on two handles is nobody's signal, no more than one that never comes.
scenario_signals() {
  local signal boot
  for signal in form-sets-updated tables-requested; do
    for boot in twice without; do
      scenario_boot "$boot-$signal" --set "$boot=$signal" || return
      check "$boot $signal: nothing is published" published_nothing "$boot-$signal"
      check "$boot $signal: nothing is cached" no_variables "$boot-$signal" "${CACHE_VARIABLES[@]}"
    done
    check "twice $signal: the driver says so once" says_once "twice-$signal" \
      "${SIGNALS[$signal]} is installed on more than one handle: the wait for it does not end"
  done
}

# No platform protocol is there, and no signal: the driver says which it misses first, and the Shell goes on.
scenario_stock_firmware() {
  scenario_boot stock --firmware "$STOCK_FIRMWARE" --vars "$STOCK_VARS" --loader "$(built Shell.efi)" \
    --file "$(driver_image DEBUG)" --command 'load fs0:CorvaneDxe.efi' || return
  check 'loading the driver gives the status of the search' refused_to_load stock
  check 'the first missing protocol is named' says_once stock "${MISSING_REQUIRED[settings]} $NOTHING_GATHERED"
  check 'nothing is published' no_published_tables stock
  check 'no variable is written' no_variables stock "${CACHE_VARIABLES[@]}" AttCacheStatus PidDepList
}
