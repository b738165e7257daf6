/** @file
  DependencyLint: annotations that lead nowhere, in circles, or to two values at once.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <set>
#include <string>
#include <vector>

#include "judge/Dependencies.hpp"

namespace corvane::inspect {

struct DependencyProblem {
  std::string Code;
  std::string Text;
  bool IsNote = false;
};

std::vector<DependencyProblem> FindDependencyProblems(const Catalog& catalog, const Dependencies& dependencies);

// Numbers of the questions that "PidDepList" should have: those that keywords of others name, as the driver collects
// them.
std::set<std::uint32_t> DependencyTokens(const Catalog& catalog, const Dependencies& dependencies);

}  // namespace corvane::inspect
