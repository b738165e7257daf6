/** @file
  Invariants of a booted driver's tables and records, for any input.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "FakeUefi/FakeNotebook.hpp"

/// Returns true if a warning of the driver starts with this text. The rest of a warning may quote input.
[[nodiscard]] bool Warned(const FakeUefi& uefi, std::string_view start);

/// Requires that every table parses to its end and has its CRC-32, that directory and records describe these tables,
/// and that the stream equals the store. Entries are not checked in a value table that a collection or a fetched string
/// overran, nor in a help table that is full to its last bytes.
void RequireSoundTables(const FakeNotebook& notebook);

/// Requires that no pool block is left except those that the driver may keep. Ends the boot.
void RequireNothingLeft(FakeNotebook& notebook);
