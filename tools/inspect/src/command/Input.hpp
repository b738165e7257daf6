/** @file
  Input: an image, and the cache of the same boot if a flash image is given.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include "cache/CacheVerdict.hpp"

namespace corvane::inspect {

struct Input {
  inspect::Image Image;
  std::vector<std::uint8_t> Flash;  // the cache report points into this
  std::optional<CacheReport> Cache;
};

// Loads a capture, an export, or the cache of a flash image.
Image LoadImage(const std::string& path);
// Loads an image and the cache. `flash` is the path of a flash image of the same boot, or empty. Throws
// UnusableInput.
Input LoadInput(const std::string& path, const std::string& flash, const CacheOptions& options);

}  // namespace corvane::inspect
