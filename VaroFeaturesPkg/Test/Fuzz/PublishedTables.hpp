/** @file
  What has to hold of a booted driver's tables and records, whatever it was given.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "FakeUefi/FakeNotebook.hpp"

/// Whether the driver gave a warning that starts like this. Further behind it may quote what it was given.
[[nodiscard]] bool Warned(const FakeUefi& uefi, std::string_view start);

/// Insists that every table parses to its end and is sealed with its CRC-32, that the directory and the records are of
/// these tables, and that the stream is the store. A value table that a collection or a fetched string overran is only
/// looked at from outside, and so is a help table full to its last bytes.
void RequireSoundTables(const FakeNotebook& notebook);

/// Insists that nothing else is left of the boot than the driver may keep; ends the boot.
void RequireNothingLeft(FakeNotebook& notebook);
