# @file
# The driver loaded a second time, unloaded, and loaded again.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent

AccessInstances
attr get ChargeStart

@echo "== A second instance takes the place of the first"
@load CorvaneDxe.efi >v message
@echo %lasterror%
AccessInstances
attr get ChargeStart
attr set -n ChargeStart 60
attr get -n ChargeStart

@echo "== It is unloaded, and its protocol leads nowhere"
AccessInstances -u
AccessInstances
attr get ChargeStart
@echo %attrstatus%
attr set ChargeStart 61
@echo %attrstatus%

@echo "== The protocol is removed"
AccessInstances -r
AccessInstances
attr get ChargeStart
@echo %attrstatus%

@echo "== The next instance starts as the first one did"
@load CorvaneDxe.efi >v message
@echo %lasterror%
AccessInstances
attr get ChargeStart
attr list charge
