/** @file
  DependencyLint: annotations without a target, cycles, and contradictions.

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

// Numbers of the questions that belong into "PidDepList": questions that keywords of other questions name, collected
// by the driver's rules.
std::set<std::uint32_t> DependencyTokens(const Catalog& catalog, const Dependencies& dependencies);

}  // namespace corvane::inspect
