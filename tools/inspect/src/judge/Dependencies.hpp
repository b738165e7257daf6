/** @file
  Dependencies: which attribute forces which other attribute, by the annotations of names.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "capture/Catalog.hpp"

namespace corvane::inspect {

// "Enabled[ForceIf:A=B]" among the values of X: X is forced to Enabled while A is B. "X[ForceIf:A=B]", the attribute's
// own name: X is held as it is while A is B.
struct Force {
  std::size_t Forced = 0;            // position of X in the catalog
  std::optional<std::size_t> Value;  // position among the values of X; empty if X is held
  bool Inverted = false;             // ForceIfNot: while A is anything but B
  std::string Text;                  // the annotation
  std::string Attribute;             // A, as written
  std::string Condition;             // B, as written
  std::optional<std::size_t> By;     // position of A; empty if no attribute has this name
  std::optional<std::size_t> When;   // the value B of A; empty if A has no such value

  bool IsHold() const { return !Value; }
};

class Dependencies {
 public:
  explicit Dependencies(const Catalog& catalog);

  const std::vector<Force>& All() const { return all_; }
  std::vector<const Force*> OnTo(std::size_t attribute) const;   // forces on this attribute
  std::vector<const Force*> From(std::size_t attribute) const;   // forces by this attribute
  std::optional<std::size_t> Find(std::string_view name) const;  // by name without annotations

  // Whether the force acts with the current or planned values. Empty if the value is unknown.
  std::optional<bool> Acts(const Force& force, const std::map<std::size_t, std::size_t>& planned = {}) const;

 private:
  const Catalog& catalog_;
  std::map<std::string, std::size_t, std::less<>> byName_;
  std::vector<Force> all_;
};

// An attribute and its value as "Name=Value".
std::string DescribeSetting(const Catalog& catalog, std::size_t attribute, std::size_t value);

}  // namespace corvane::inspect
