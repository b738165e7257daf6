/** @file
  The attribute line and its parts. tools/inspect/README.md defines the form.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>

#include "capture/Image.hpp"

namespace corvane::inspect {

std::string DescribeName(const Image& image, std::uint16_t handle);    // of a string handle
std::string DescribeMember(const Image& image, std::uint16_t handle);  // of an attribute handle
std::string DescribeCurrent(const Image& image, const AttributeEntry& attribute);
std::string DescribeDefault(const Image& image, const AttributeEntry& attribute);
std::string DescribeDomain(const Image& image, const AttributeEntry& attribute);

std::string AttributeLine(const Image& image, const AttributeEntry& attribute);  // without the line feed

}  // namespace corvane::inspect
