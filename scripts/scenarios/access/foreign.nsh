# @file
# Values of foreign form sets, in a variable, a buffer store and a name/value store.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent

attr set "How tall are you? (Hex)" 19
@echo %attrstatus%
attr set "How old are you? (Step)" 77
@echo %attrstatus%
attr set NameValueVar1 4660
@echo %attrstatus%
attr get NameValueVar1
