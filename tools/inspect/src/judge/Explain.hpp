/** @file
  `inspect explain`: what forces an attribute, what it forces, and the consequences of a planned change.

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
    Sets,       // forces an attribute to another value
    Holds,      // makes an attribute unchangeable
    Frees,      // ends a hold
    Conflicts,  // forces another value than the planned one
  };
  Kind What{};
  std::size_t Attribute = 0;
  std::optional<std::size_t> Value;
  std::string Because;  // the setting and the annotation that cause it
};

using Plan = std::vector<std::pair<std::size_t, std::size_t>>;  // attributes, by position, and values

// The consequences of setting all of the plan at once, each after its cause.
std::vector<Consequence> FollowPlan(const Catalog& catalog, const Dependencies& dependencies, const Plan& plan);

struct Explanation {
  std::size_t Attribute = 0;
  std::vector<const Force*> OnTo;
  std::vector<const Force*> From;
  std::vector<std::pair<Plan, std::vector<Consequence>>> Plans;
  bool IsDependedOn = false;     // a keyword of another question names it
  bool IsCollected = false;      // "PidDepList" should have it
  std::optional<bool> IsListed;  // in "PidDepList"; empty if the list is unknown
};

// If `plan` is empty, each other value of the attribute is a plan.
Explanation Explain(const Catalog& catalog, const Dependencies& dependencies, std::size_t attribute, const Plan& plan,
                    const std::vector<std::uint32_t>* dependencyList);

std::string ExplanationAsText(const Catalog& catalog, const Dependencies& dependencies, const Explanation& explanation,
                              const Style& style);
std::string ExplanationAsJson(const Catalog& catalog, const Dependencies& dependencies, const Explanation& explanation);

}  // namespace corvane::inspect
