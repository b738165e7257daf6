# @file
# Somebody at the Shell of a notebook with an administrator password lists, reads and changes attributes. The line after
# each command is the status that it leaves for scripts.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent

@echo "== What there is"
attr list charge
@echo %attrstatus%
attr list -l *Charge*Start
@echo %attrstatus%
attr list nothing
@echo %attrstatus%
attr list -l >a list.txt
@echo %attrstatus%
attr export >a exported.txt
@echo %attrstatus%

@echo "== One value, by handle and by name, in any case, with and without the suffix of the name"
attr get ChargeStart
@echo %attrstatus%
attr get -n ChargeStart
@echo %attrstatus%
attr get WakeOnLan
@echo %attrstatus%
attr get "WakeOnLan[ForceIf:BlockSleep=Disabled]"
@echo %attrstatus%
attr get -n LegacyRoms
@echo %attrstatus%
attr get asset
@echo %attrstatus%
attr get AdminPassword
@echo %attrstatus%
attr get -n "System boot configuration"
@echo %attrstatus%
attr get ChargStart
@echo %attrstatus%

@echo "== All that is known of an integer, an enumeration, a string, a password and a collection"
attr info ChargeStart
attr info DeepSleep
attr info ServiceContact
attr info AdminPassword
attr info Virtualization
attr info VirtualizationSupport
@echo %attrstatus%

@echo "== Refused before anything is sent"
attr set ChargeStart many -p
@echo %attrstatus%
attr set ChargeStart 96 -p
@echo %attrstatus%
attr set ChargeStart -5 -p
@echo %attrstatus%
attr set -n SlowChargeLimit 61 -p
@echo %attrstatus%
attr set FastBoot Slow -p
@echo %attrstatus%
attr set FastBoot 3 -p
@echo %attrstatus%
attr set Asset NB-00000042 -p
@echo %attrstatus%
attr set AuxoraSupportLevel 19 -p
@echo %attrstatus%
attr set -n MIPICam1 NONE -p
@echo %attrstatus%
attr set Power Enabled -p
@echo %attrstatus%
attr set AdminPassword other -p
@echo %attrstatus%
attr set "System boot configuration" 1 -p
@echo %attrstatus%
attr set ChargeStop2 60 -p
@echo %attrstatus%
attr set ChargeStop
@echo %attrstatus%
attr set -x ChargeStop 60
@echo %attrstatus%
attr set ChargeStart 50 -p
@echo %attrstatus%

@echo "== Without the password, and with a wrong one"
attr set ChargeStart 60
@echo %attrstatus%
attr set -n ChargeStart 60
@echo %attrstatus%
attr set ServiceContact nobody
@echo %attrstatus%
attr set ChargeStart 60 -p
@echo %attrstatus%
attr set -n ChargeStart 60 -p
@echo %attrstatus%
attr get ChargeStart
@echo %attrstatus%

@echo "== The program, where the Shell has no such command"
attr.efi set BootDelay 5 -p
@echo %lasterror%
attr.efi get BootDelay
@echo %lasterror%

@echo "== With the password: integers, enumerations and strings, by handle and by name"
attr set ChargeStart 60 -p
@echo %attrstatus%
attr set -n ChargeStop 0x50 -p
@echo %attrstatus%
attr set FastBoot Minimal -p
@echo %attrstatus%
attr set -n LegacyRoms Enabled -p
@echo %attrstatus%
attr set SerialPort 2 -p
@echo %attrstatus%
attr set Asset NB-0043 -p
@echo %attrstatus%
attr set -n OwnerTag "Lent to somebody" -p
@echo %attrstatus%
attr set ChargeStart 60 -p
@echo %attrstatus%
attr get -n SerialPort
@echo %attrstatus%
attr set InventoryNumber 123456789012 -p
@echo %attrstatus%

@echo "== Given up at the prompt: the script ends there"
attr set BootDelay 10 -p
@echo "not reached"
