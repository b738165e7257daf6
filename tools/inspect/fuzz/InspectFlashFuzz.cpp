/** @file
  Any bytes as a flash image: its variable store, the cache in it, the verdict and the image made of it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <nlohmann/json.hpp>

#include "Require.hpp"
#include "cache/CacheVerdict.hpp"
#include "judge/Lint.hpp"
#include "judge/Validate.hpp"

using namespace corvane::inspect;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes flash(data, size);
  try {
    const CacheOptions options{.Firmware = "1.0.0", .Limit = 4000};
    const CacheReport report = ReportCache(flash, options);
    Require(nlohmann::json::accept(CacheAsJson(report, options)));
    Require(!report.Verdict.IsFine() || report.Content.IsAbsent() || report.Content.IsWhole());
    CacheAsText(report, options, Style(false));
    const Image image = ImageOfCache(report.Content);
    Require(image.Strings.Entries.size() == report.Content.Texts.Names.size());
    Require(nlohmann::json::accept(LintAsJson(Lint(image, &report, {}))));
    ValidationAsText(image, Validate(image, true), Style(false));
  } catch (const UnusableInput&) {
  }
  return 0;
}
