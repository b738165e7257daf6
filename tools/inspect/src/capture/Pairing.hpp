/** @file
  Pairing: assigns display and help texts to attributes, as far as the order of creation proves the assignment.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "capture/Image.hpp"

namespace corvane::inspect {

// Texts of one attribute, as UTF-8.
struct PairedTexts {
  std::optional<std::string> Display;
  std::uint16_t DisplayHandle = 0;                 // 0 if only the text is known
  std::optional<std::string> Help;                 // only some questions have help
  std::vector<std::optional<std::string>> Values;  // of an enumeration's values, in their order
};

struct Pairing {
  std::unordered_map<std::uint16_t, PairedTexts> ByHandle;  // of attributes whose display text is known
  std::string Reason;               // why some attributes of the setup are not paired; empty if all are
  std::uint16_t FirstUnpaired = 0;  // handle of the first unpaired attribute

  const PairedTexts* Find(std::uint16_t handle) const {
    const auto found = ByHandle.find(handle);
    return found == ByHandle.end() ? nullptr : &found->second;
  }
};

// All strings of a boot in the order of their handles, from its cache.
struct StoredTexts {
  std::vector<std::u16string> Names;
  std::vector<std::u16string> Display;  // with the leading stars, which the table does not have
  std::vector<std::u16string> Help;
};

// Replays the creation of the texts. From the first step with several possible texts, or none, no attribute is
// paired. With the cache of the same boot, texts that the tables lack are known too.
Pairing PairTexts(const Image& image, const StoredTexts* stored = nullptr);

}  // namespace corvane::inspect
