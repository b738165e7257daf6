/** @file
  Names from the command line: finds attributes, and near names for an unknown name.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "capture/Image.hpp"

namespace corvane::inspect {

// The known names most similar to the wanted one, as " (near: "A", "B")". Empty if no name is similar.
std::string DescribeNearNames(std::string_view wanted, const std::vector<std::string>& known);

// Finds attributes by name, with or without annotations, or else by handle. Throws UnusableInput if there is none.
std::vector<const AttributeEntry*> FindAttributes(const Image& image, const std::string& name);

// Finds the position of exactly one attribute. Throws UnusableInput if there is none, or more than one.
std::size_t FindOneAttribute(const Image& image, const std::string& name);

}  // namespace corvane::inspect
