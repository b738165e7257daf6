# @file
# A help table that is too long for one answer of the attribute service.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent

attr info ChargeStart
attr info RemoteHelp
attr info ServiceContact
