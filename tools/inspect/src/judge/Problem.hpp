/** @file
  Problem: a fault of an attribute that `inspect lint` and the exports report.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>

namespace corvane::inspect {

struct Problem {
  std::string Code;     // stable, for programs
  std::string Text;     // a sentence
  bool IsNote = false;  // intended behaviour worth knowing
};

}  // namespace corvane::inspect
