# @file
# Sessions at the Shell: the scripts in access/ list, read and change attributes. Their output is beside them.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

readonly SESSIONS="$ROOT/scripts/scenarios/access"

# What is typed at the prompts of session.nsh: a wrong password, the right one, and at last Escape.
readonly PASSWORD='Tr0ut&Heron' WRONG_PASSWORD='Tr0ut&Hawks'
SESSION_KEYS=()
for typed in "$WRONG_PASSWORD"{,} "$PASSWORD"{,,,,,,,,}; do SESSION_KEYS+=(--keys "$typed"$'\r'); done
readonly SESSION_KEYS+=(--keys $'\e')
readonly LOCKED=(--set passwords=admin --set "password-admin=$PASSWORD")

# Scenario items that disturb the attribute service, and the output that a client then prints.
readonly -A UNSERVED=(['without=attribute-service']=absent ['service=fails']=mute ['service=silent']=mute)

# session EARLIER NAME SCRIPT [OPTION]...: a boot that runs a script of access/.
session() {
  local earlier=$1 name=$2 script=$3
  shift 3
  after "$earlier" "$name" --file "$SESSIONS/$script.nsh" --command "$script.nsh >a console.txt" "$@"
}

prints() { diff "$SESSIONS/$2.txt" <(text_of "$1" console.txt); }

scenario_access_session() {
  session cold access session "${LOCKED[@]}" --file "$(built attr.efi)" "${SESSION_KEYS[@]}" || return
  check 'the session goes as expected' prints access session
  check 'its list equals that of the inspector, except for passwords' lists_alike access
  check 'its export has all attributes' exports_all access
  check 'nothing changes in this boot' differs_only_in cold access "$IDLE_MINUTES_AS_BYTE" \
    "AdminPassword$PRINTABLE password = installed"
  session access access-kept kept || return
  check 'the next boot parses the form sets' rebuilt access-kept
  check 'its records have the changed values and no other change' differs_only_in cold access-kept \
    'ChargeStart integer = 60' 'ChargeStop integer = 80' \
    'LegacyRoms enumeration = Enabled' 'SerialPort enumeration = Port2F8' 'FastBoot enumeration = Minimal' \
    'BootDelay integer = 5' 'Asset string = "NB-0043"' 'OwnerTag string = "Lent to somebody"' \
    'InventoryNumber integer = 123456789012'
  check 'its attribute service has them too' prints access-kept kept
}

# A platform may publish an attribute whose setting it does not have (ChargePowerLimitFactoryFlag, in factory mode).
scenario_access_unkept() {
  session cold access-unkept unkept --vars '' --set factory-mode=1 || return
  check 'the session goes as expected' prints access-unkept unkept
  check 'the next boot need not gather again' no_variables access-unkept AttCacheStatus
}

lists_alike() {
  diff <(attributes "$1" | sed -E 's/^(.* password = )[a-z ]*( \()/\1hidden\2/') <(text_of "$1" list.txt)
}

exports_all() { (($(text_of "$1" exported.txt | grep -cE '^[^=[]+=') == $(attributes "$1" | wc -l))); }

scenario_access_unserved() {
  local item
  for item in "${!UNSERVED[@]}"; do
    session cold "access-${item#*=}" unserved --set "$item" || return
    check "$item: the session goes as expected" prints "access-${item#*=}" "unserved-${UNSERVED[$item]}"
  done
}

# AccessInstances removes the stale protocol of an unloaded driver, so that the driver can be loaded again.
scenario_access_loaded_again() {
  session cold access-again loaded-again --file "$(built CorvaneDxe.efi)" \
    --file "$(built AccessInstances.efi)" || return
  check 'the session goes as expected' prints access-again loaded-again
}

scenario_access_long_help() {
  session cold access-long long-help --vars '' --set stress=long-help --command 'AttributeDump -t help.bin' || return
  check 'the help table is complete, and too long for one answer' help_is_long access-long
  check 'the session goes as expected' prints access-long long-help
  check 'the service sends all of its texts' help_as_sent access-long
}

help_as_sent() {
  "$ROOT/scripts/python/published.py" help "$(records_of "$1")" "$(scenario_folder "$1")/help.bin"
}

# The bytes in use include pad and checksum, which are not sent.
help_is_long() {
  local used full
  read -r _ used _ _ _ _ full <<<"$("$INSPECT" show "$(records_of "$1")" | grep '^help ')"
  if [[ -n $full ]] || ((used < 65444 + 7)); then say "$used bytes $full"; return 1; fi
}

# Boots RELEASE firmware, because DEBUG firmware overwrites freed memory. The memory is saved at the last prompt, when the
# stack has not changed since the password before.
scenario_access_secrets() {
  local name=access-secrets folder
  folder=$(scenario_folder "$name")
  boot "debug/$name" RELEASE --vars "$(vars_of cold)" "${LOCKED[@]}" "${SESSION_KEYS[@]}" --memory yes \
    --file "$(firmware_output RELEASE)/AARCH64/attr.efi" --file "$SESSIONS/session.nsh" \
    --command 'session.nsh >a console.txt' || { count_results 0 1; return 1; }
  check 'the session goes as expected' prints "$name" session
  check 'no password and no key is left in memory, flash, records or logs' no_secrets "$folder"
}

# The saved memory is large, so it is kept only if something was found.
no_secrets() {
  "$ROOT/scripts/python/find_secrets.py" "$1" "$MEMORY_START" "$PASSWORD" "$WRONG_PASSWORD" && rm -f "$1/memory.bin"
}
