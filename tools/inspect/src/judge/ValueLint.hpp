/** @file
  ValueLint: values, defaults and bounds of an attribute that contradict each other.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <vector>

#include "capture/Catalog.hpp"
#include "judge/Problem.hpp"

namespace corvane::inspect {

std::vector<Problem> FindValueProblems(const CatalogAttribute& attribute);

}  // namespace corvane::inspect
