/** @file
  Input: an image with the cache that the variable store of the same boot has, from one file or two.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "command/Input.hpp"

#include "export/Export.hpp"

namespace corvane::inspect {

Image LoadImage(const std::filesystem::path& path) {
  std::vector<std::uint8_t> capture = ReadFile(path);
  try {
    bool ofCache = false;
    if (LooksLikeExport(capture)) {
      capture = ImportJson(capture, &ofCache);
    } else if (LooksLikeFlash(capture)) {
      Findings findings;
      Image image = ImageOfCache(DecodeCache(ReadVariableStore(capture, findings)));
      image.Findings.Append(findings);
      return image;
    }
    return DecodeImage(std::move(capture), ofCache);
  } catch (const UnusableInput& unusable) {
    throw UnusableInput(path.string() + ": " + unusable.what());
  }
}

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
