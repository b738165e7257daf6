/** @file
  `inspect show`: the attributes of a capture, the fill of its tables, its texts, for people and as JSON.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <ostream>
#include <string>

#include "Image.hpp"
#include "Style.hpp"

namespace corvane::inspect {

void ShowAttributes(const Image& image, std::ostream& out);
void ShowFill(const Image& image, const Style& style, std::ostream& out);
void ShowTexts(const Image& image, const Style& style, std::ostream& out);
void ShowOne(const Image& image, const AttributeEntry& attribute, std::ostream& out);  // in detail

std::string ImageAsJson(const Image& image);  // all of it
std::string AttributesAsJson(const Image& image, const std::vector<const AttributeEntry*>& attributes);

}  // namespace corvane::inspect
