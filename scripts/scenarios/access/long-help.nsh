# @file
# A help table that no single answer of the attribute service holds.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent

attr info ChargeStart
attr info RemoteHelp
attr info ServiceContact
