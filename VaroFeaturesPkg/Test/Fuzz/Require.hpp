/** @file
  Require: what a fuzz target insists on.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "FakeUefi/FakeUefi.hpp"

/// Ends the run, telling `what`, unless `condition` holds.
inline void Require(bool condition, const char* what) {
  if (!condition) {
    FakeUefi::Misuse(what);
    __builtin_trap();
  }
}
