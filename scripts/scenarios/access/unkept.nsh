# @file
# A value that nothing can store.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent

attr set ChargePowerLimitFactoryFlag Enabled
@echo %attrstatus%
attr set -n ChargePowerLimitFactoryFlag Enabled
@echo %attrstatus%
attr get ChargePowerLimitFactoryFlag
@echo %attrstatus%
