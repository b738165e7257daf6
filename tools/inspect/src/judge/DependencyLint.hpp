/** @file
  DependencyLint: annotations without a target, cycles, and contradictions.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <set>
#include <vector>

#include "judge/Dependencies.hpp"
#include "judge/Problem.hpp"

namespace corvane::inspect {

std::vector<Problem> FindDependencyProblems(const Catalog& catalog, const Dependencies& dependencies);

// Numbers of the questions that belong into "PidDepList": questions that keywords of other questions name, collected
// by the driver's rules.
std::set<std::uint32_t> DependencyTokens(const Catalog& catalog, const Dependencies& dependencies);

}  // namespace corvane::inspect
