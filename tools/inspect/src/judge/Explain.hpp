/** @file
  `inspect explain`: who forces an attribute, whom it forces, and what a planned set would drag along.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "bytes/Style.hpp"
#include "judge/Dependencies.hpp"

namespace corvane::inspect {

struct Consequence {
  enum class Kind {
    Sets,       // forces an attribute to a value that it does not have
    Holds,      // keeps an attribute from being set
    Frees,      // does so no longer
    Conflicts,  // forces a value other than the one that is planned
  };
  Kind What{};
  std::size_t Attribute = 0;
  std::optional<std::size_t> Value;
  std::string Because;  // the setting that does it, and the annotation
};

using Plan = std::vector<std::pair<std::size_t, std::size_t>>;  // attributes, by position, and values

// What follows of setting all of the plan at once, in the order in which one leads to the next.
std::vector<Consequence> FollowPlan(const Catalog& catalog, const Dependencies& dependencies, const Plan& plan);

struct Explanation {
  std::size_t Attribute = 0;
  std::vector<const Force*> OnTo;
  std::vector<const Force*> From;
  std::vector<std::pair<Plan, std::vector<Consequence>>> Plans;
  bool IsDependedOn = false;     // a keyword of another question names it
  bool IsCollected = false;      // and not only behind a name that was met before
  std::optional<bool> IsListed;  // in "PidDepList"; none when that is not known
};

// `plan` may be empty: then each of the attribute's other values is a plan.
Explanation Explain(const Catalog& catalog, const Dependencies& dependencies, std::size_t attribute, const Plan& plan,
                    const std::vector<std::uint32_t>* dependencyList);

std::string ExplanationAsText(const Catalog& catalog, const Dependencies& dependencies, const Explanation& explanation,
                              const Style& style);
std::string ExplanationAsJson(const Catalog& catalog, const Dependencies& dependencies, const Explanation& explanation);

}  // namespace corvane::inspect
