/** @file
  Input: an image with the cache that the variable store of the same boot has, from one file or two.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include "cache/CacheVerdict.hpp"

namespace corvane::inspect {

struct Input {
  inspect::Image Image;
  std::vector<std::uint8_t> Flash;  // what the cache report leads into
  std::optional<CacheReport> Cache;
};

// Of a capture, an export of one, or a flash image with a cache in its variable store.
Image LoadImage(const std::string& path);
// Of a capture, an export or a flash image; `flash` is the path of a flash image beside it, or empty. Throws
// UnusableInput.
Input LoadInput(const std::string& path, const std::string& flash, const CacheOptions& options);

}  // namespace corvane::inspect
