/** @file
  Input: an image, and the cache of the same boot if a flash image is given.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "command/Input.hpp"

#include "export/Export.hpp"

namespace corvane::inspect {
namespace {

Image DecodeFile(std::vector<std::uint8_t> content) {
  bool ofCache = false;
  if (LooksLikeExport(content)) {
    content = ImportJson(content, &ofCache);
  } else if (LooksLikeFlash(content)) {
    Findings findings;
    Image image = ImageOfCache(DecodeCache(ReadVariableStore(content, findings)));
    image.Findings.Append(findings);
    return image;
  }
  return DecodeImage(std::move(content), ofCache);
}

}  // namespace

Image LoadImage(const std::string& path) {
  std::vector<std::uint8_t> content = ReadFile(path);
  return WithPath(path, [&] { return DecodeFile(std::move(content)); });
}

Input LoadInput(const std::string& path, const std::string& flash, const CacheOptions& options) {
  std::vector<std::uint8_t> content = ReadFile(path);
  const bool isFlash = LooksLikeFlash(content);
  Input input{.Image = WithPath(path, [&] { return DecodeFile(content); }), .Flash = {}, .Cache = {}};
  if (flash.empty() && !isFlash) {
    return input;
  }
  input.Flash = flash.empty() ? std::move(content) : ReadFile(flash);
  input.Cache = WithPath(flash.empty() ? path : flash, [&] { return ReportCache(input.Flash, options); });
  return input;
}

}  // namespace corvane::inspect
