/** @file
  Require: what a fuzz target insists on.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

inline void Require(bool condition) {
  if (!condition) {
    __builtin_trap();
  }
}
