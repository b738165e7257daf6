/** @file
  Names that a user gives: the attributes that have them, and near names where nothing has.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "capture/Image.hpp"

namespace corvane::inspect {

// " (near: "A", "B")" with the known names that are most like the wanted one; empty where none is.
std::string DescribeNearNames(std::string_view wanted, const std::vector<std::string>& known);

// By name, with or without annotations, or else by handle. Throws UnusableInput where there is none.
std::vector<const AttributeEntry*> FindAttributes(const Image& image, const std::string& name);

// The position of the one attribute that is meant. Throws UnusableInput where there is none, or more than one.
std::size_t FindOneAttribute(const Image& image, const std::string& name);

}  // namespace corvane::inspect
