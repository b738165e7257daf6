# @file
# An attribute service that is missing or misbehaves.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent

attr list
@echo %attrstatus%
attr get Nfc
@echo %attrstatus%
attr get -n Nfc
@echo %attrstatus%
attr set Nfc Enabled
@echo %attrstatus%
