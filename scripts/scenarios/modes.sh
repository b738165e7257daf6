# @file
# Modes of the notebook: factory mode, passwords, cameras, failing settings, another language.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# Attributes of factory mode alone, with the values of the notebook.
readonly FACTORY_ATTRIBUTES=(
  'CommonSystemId integer = 3146' 'OverrideBatteryChargeFactory enumeration = Enabled'
  'ServiceResetConfig enumeration = ProjectVariablesPreserve' 'Generation string ro = "23Q1"' 'IBV string ro = "VARO"'
  'MfgModePxeAttribute integer = 4' 'FrontFan enumeration = Disabled' 'WlanCountryCode integer = 16720'
  'AdvancedDebugMenu enumeration = Disabled' 'HEVC enumeration ro = Enabled'
  'ChargePowerLimitFactoryFlag enumeration = Disabled'
)

# How the tables name the passwords.
readonly PRINTABLE='[RegEx:^\\133\\x20-\\x7e\\135{0,32}$]'
readonly OWNER_PASSWORD="OwnerPassword$PRINTABLE"

# Factory mode neither reads nor writes the cache.
scenario_factory_mode() {
  scenario_boot factory --set factory-mode=1 || return
  check 'the tables are published' published factory
  check 'the factory attributes are there' has factory "${FACTORY_ATTRIBUTES[@]}"
  check 'without factory mode they are missing' lacks cold "${FACTORY_ATTRIBUTES[@]%% *}"
  check 'neither the cache nor "PidDepList" is written' no_variables factory "${CACHE_VARIABLES[@]}" PidDepList
  after cold factory-again --set factory-mode=1 || return
  check 'a valid cache is not read' rebuilt factory-again
  check 'the tables equal those without a cache' same_tables factory factory-again
  check 'a valid cache is not written' same_cache cold factory-again
  after factory-again factory-left || return
  check 'after factory mode, the cache is trusted' restored factory-left
  check 'after factory mode, the factory attributes are gone' lacks factory-left "${FACTORY_ATTRIBUTES[@]%% *}"
}

# Password attributes are gathered in every boot, also if the cache has other ones.
scenario_owner_password() {
  scenario_boot owner --set owner-password=1 --set passwords=admin,owner || return
  check 'owner and administrator passwords are installed, of one length for all' has owner \
    "1 AdminPassword$PRINTABLE password = installed (default length 0) {0..24}" \
    "2 SystemPassword$PRINTABLE password = not installed (default length 0) {0..24}" \
    "3 $OWNER_PASSWORD password = installed (default length 0) {0..24}"
  check 'the tables are published' published owner
  after owner owner-off || return
  check 'off again, no form set is parsed' restored owner-off
  check 'off again, there is no owner password' lacks owner-off OwnerPassword
  check 'off again, all else equals the cold boot' differs_only_in cold owner-off "$IDLE_MINUTES_AS_BYTE"
  after owner-off owner-on --set owner-password=1 || return
  check 'on again, no form set is parsed' restored owner-on
  check 'on again, it is known and not installed' has owner-on "3 $OWNER_PASSWORD password = not installed"
}

# The notebook's third camera is missing, and only four cameras have attributes.
scenario_cameras() {
  local count
  local -A present=([0]='' [1]='1' [4]='1 2 4' [6]='1 2 4')
  for count in 0 1 4 6; do
    scenario_boot "cameras-$count" --set "cameras=$count" || return
    check "$count cameras: the tables are published" published "cameras-$count"
    check "$count cameras: attributes ${present[$count]:-none}" cameras_are "cameras-$count" "${present[$count]}"
  done
}

cameras_are() {
  local shown
  shown=$(attributes "$1" | sed -n -E 's/^[0-9]+ MIPICam([0-9]+) .*/\1/p' | paste -sd ' ')
  [[ $shown == "$2" ]] || { say "there are $shown"; return 1; }
}

# Without its setting an attribute is dropped, or has the value 0, or keeps its cached value.
scenario_failing_settings() {
  scenario_boot failing --set factory-mode=1 --set failing-settings=1340,1621,1751,1843,12054 || return
  check 'the tables are published' published failing
  check 'attributes without their setting are dropped, each with a message' says_once failing \
    'attribute "AuxoraSupportLevel" dropped: Device Error' \
    'attribute "OverrideBatteryChargeFactory" dropped: Device Error' \
    'attribute "MasterPasswordLockout" dropped: Device Error' \
    'attribute "ChargePowerLimitFactoryFlag" dropped: Device Error'
  check 'they are not published' lacks failing \
    AuxoraSupportLevel OverrideBatteryChargeFactory MasterPasswordLockout ChargePowerLimitFactoryFlag
  check 'a password without a length is kept' has failing \
    "1 AdminPassword$PRINTABLE password = not installed (default length 0) {0..0}"
  after cold failing-values --set failing-settings=2001,1142 --set 'set=2003=1;2001=2;1142=7' || return
  check 'from the cache, no form set is parsed' restored failing-values
  check 'from the cache, a value that cannot be read stays the cached one' \
    differs_only_in cold failing-values 'BlockSleep enumeration = Enabled' "$IDLE_MINUTES_AS_BYTE"
}

# Without setting 0x2618 the driver leaves the cache and "PidDepList" alone.
scenario_no_caching() {
  scenario_boot uncached --set failing-settings=0x2618 || return
  check 'the tables equal the cold ones' same_tables cold uncached
  check 'neither the cache nor "PidDepList" is written' no_variables uncached "${CACHE_VARIABLES[@]}" PidDepList
  after cold uncached-again --set failing-settings=0x2618 || return
  check 'a valid cache is not read' rebuilt uncached-again
  check 'a valid cache is not written' same_cache cold uncached-again
}

# Names are keywords, equal in every language. Collections are named by the titles of their form sets, and one question of
# the setup has no keyword.
scenario_language() {
  scenario_boot french --set language=fr-FR || return
  check 'the tables are published' published french
  check 'the inspector has no findings' decodes french
  check 'attributes and values equal those in English' same_tables cold french --only values
  check 'names equal those in English, except collections and a question without keyword' \
    same_attribute_names cold french
  check 'the texts are French' speaks_french french
  after french french-warm || return
  check 'from the cache, no form set is parsed' restored french-warm
  check 'from the cache, the texts are the same' same_tables french french-warm --only "$TABLES_OF_CACHE"
}

same_attribute_names() { diff <(translated "$1") <(translated "$2"); }

translated() { attributes "$1" | sed -e '/ collection /d' -e 's/Setup Language/Langue du setup/'; }

# Display texts keep only ASCII characters, so the accents are in the help texts.
speaks_french() {
  local texts
  texts=$("$INSPECT" show --texts "$(records_of "$1")")
  grep -q 'é' <<<"$texts" && grep -qx '16 "Dimanche"' <<<"$texts"
}
