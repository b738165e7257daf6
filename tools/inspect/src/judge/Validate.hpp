/** @file
  `inspect validate`: the structure of an image, for readers of every kind and for those that know common types alone.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <vector>

#include "bytes/Style.hpp"
#include "capture/Image.hpp"

namespace corvane::inspect {

// An entry that a reader of enumerations, strings and integers alone does not know. Nothing in it says how long it is,
// so such a reader cannot go on behind the first.
struct UncommonEntry {
  TableId Table{};
  std::size_t Number = 0;  // in its table
  std::uint16_t Handle = 0;
  std::uint8_t Type = 0;
};

struct Validation {
  Findings Problems;
  std::vector<UncommonEntry> Uncommon;
};

Validation Validate(const Image& image, bool commonProfile);

std::string ValidationAsText(const Image& image, const Validation& validation, const Style& style);
std::string ValidationAsJson(const Image& image, const Validation& validation);

}  // namespace corvane::inspect
