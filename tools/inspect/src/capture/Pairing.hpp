/** @file
  Pairing: which display and help texts belong to which attribute, as far as the order of their creation proves it.

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
  std::uint16_t DisplayHandle = 0;                 // 0 when the text is known and its handle is not
  std::optional<std::string> Help;                 // only questions have one, and not all
  std::vector<std::optional<std::string>> Values;  // of an enumeration's values, in their order
};

struct Pairing {
  std::unordered_map<std::uint16_t, PairedTexts> ByHandle;  // of attributes whose display text is known
  std::string Reason;               // why not all attributes of the setup are paired; empty when all are
  std::uint16_t FirstUnpaired = 0;  // handle of the first of these

  const PairedTexts* Find(std::uint16_t handle) const {
    const auto found = ByHandle.find(handle);
    return found == ByHandle.end() ? nullptr : &found->second;
  }
};

// All strings of a boot in the order of their handles, as its cache keeps them.
struct StoredTexts {
  std::vector<std::u16string> Names;
  std::vector<std::u16string> Display;  // with the stars that the table leaves out
  std::vector<std::u16string> Help;
};

// Goes through the creation of the texts again. Where more than one way, or none, leads to the tables, nothing is
// paired from there on. With the texts of the same boot's cache, texts that the tables lack are there too.
Pairing PairTexts(const Image& image, const StoredTexts* stored = nullptr);

}  // namespace corvane::inspect
