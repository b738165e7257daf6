/** @file
  `inspect show`: the attributes of a capture, the fill of its tables, its texts, for people and as JSON.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <ostream>
#include <string>

#include "bytes/Style.hpp"
#include "capture/Image.hpp"
#include "capture/Pairing.hpp"

namespace corvane::inspect {

void ShowAttributes(const Image& image, std::ostream& out);
void ShowFill(const Image& image, const Style& style, std::ostream& out);
void ShowTexts(const Image& image, const Style& style, std::ostream& out);
// Attribute lines, each followed by its texts, and why texts are missing.
void ShowWithTexts(const Image& image, const Pairing& pairing, const Style& style, std::ostream& out);
// One attribute in detail.
void ShowOne(const Image& image, const Pairing& pairing, const AttributeEntry& attribute, std::ostream& out);

std::string ImageAsJson(const Image& image, const Pairing& pairing);  // the whole image
std::string AttributesAsJson(const Image& image, const Pairing& pairing,
                             const std::vector<const AttributeEntry*>& attributes);

}  // namespace corvane::inspect
