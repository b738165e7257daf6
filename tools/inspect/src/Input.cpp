/** @file
  Input: an image with the cache that the variable store of the same boot has, from one file or two.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "Input.hpp"

namespace corvane::inspect {

Input LoadInput(const std::string& path, const std::string& flash, const CacheOptions& options) {
  Input input{.Image = LoadImage(path), .Flash = {}, .Cache = {}};
  if (flash.empty() && !input.Image.OfCache) {
    return input;
  }
  const std::string& from = flash.empty() ? path : flash;
  input.Flash = ReadFile(from);
  input.Cache = WithPath(from, [&] { return ReportCache(input.Flash, options); });
  return input;
}

}  // namespace corvane::inspect
