# @file
# A notebook's ordinary life: its first boot, boots from the cache, settings changed, firmware updated.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# A restored value keeps its low byte: 720, the setup's default, is 208 from the second boot on.
readonly IDLE_MINUTES_AS_BYTE='IdleMinutes integer = 208'

readonly ATTRIBUTE_VARIABLES=47FEFD34-5EDF-4BA3-9FEA-8F3620D7CF07

scenario_cold() {
  scenario_boot cold || return
  check 'eight records are sent, and the protocol in the firmware has the same blocks' published cold
  check 'the form sets are parsed' rebuilt cold
  check 'the inspector has no findings' decodes cold
  check "EDK II's own decompressor decodes the cache" cache_decodes cold
}

# All scenarios rely on this: a boot depends only on its scenario.
scenario_again() {
  scenario_boot again || return
  check 'a second cold boot sends and stores the same' same_boot cold again
}

scenario_warm() {
  after cold warm || return
  check 'the tables are published' published warm
  check 'no form set is listed or parsed' restored warm
  check 'all but the values equal the cold tables' same_tables cold warm --only "$TABLES_OF_CACHE"
  check 'the one value above 255 is read again as a byte, all others equal the cold ones' \
    differs_only_in cold warm "$IDLE_MINUTES_AS_BYTE"
  check 'the cache stays as it was' same_cache cold warm
}

# A checkbox, a one-of and a numeric question, changed by the user before the tables are asked for.
scenario_settings_changed() {
  after cold changed --set 'set=2003=1;2001=2;1142=7' || return
  check 'no form set is listed or parsed' restored changed
  check 'all but the values equal the cold tables' same_tables cold changed --only "$TABLES_OF_CACHE"
  check 'the three attributes have their new values, all others the old' \
    differs_only_in cold changed 'BlockSleep enumeration = Enabled' 'PrimaryBattChargeCfg enumeration = Express' \
    'AutoOnHr integer = 7' "$IDLE_MINUTES_AS_BYTE"
}

scenario_version_changed() {
  after cold updated --set firmware-version=2.0.0 || return
  check 'with another firmware version the form sets are parsed' rebuilt updated
  check 'the tables equal the cold ones' same_tables cold updated
  after updated updated-warm --set firmware-version=2.0.0 || return
  check 'the new cache is trusted' restored updated-warm
}

# Any byte but 0 in "AttCacheStatus" calls for a rebuild, which clears it. -bs -rt -nv are its attributes.
scenario_marked_bad() {
  after cold marked --command "setvar AttCacheStatus -guid $ATTRIBUTE_VARIABLES -bs -rt -nv =01" || return
  after marked rebuilt || return
  check 'with 1 in "AttCacheStatus" the form sets are parsed' rebuilt rebuilt
  check 'the tables equal the cold ones' same_tables cold rebuilt
  check 'the cache equals the cold one, and its mark is cleared' same_cache cold rebuilt
  after rebuilt rebuilt-warm || return
  check 'the rebuilt cache is trusted' restored rebuilt-warm
}
