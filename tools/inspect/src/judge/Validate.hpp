/** @file
  `inspect validate`: checks the structure of an image, also for readers that know common types only.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <vector>

#include "bytes/Style.hpp"
#include "capture/Image.hpp"

namespace corvane::inspect {

// An entry that a reader of enumerations, strings and integers does not know. The entry does not tell its length, so
// such a reader stops at the first of these entries.
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
