# @file
# The boot after: the changes are in force, and no password is set any more.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent

attr list charge
attr get FastBoot
attr get LegacyRoms
attr get SerialPort
attr get Asset
attr get OwnerTag
attr get -n InventoryNumber
attr get BootDelay
attr set Nfc Enabled
@echo %attrstatus%
attr set -n Nfc Disabled
@echo %attrstatus%
