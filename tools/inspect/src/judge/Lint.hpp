/** @file
  `inspect lint`: what is lost, dangling, contradictory or out of bounds in a boot's attributes, and what to do about
it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "bytes/Style.hpp"
#include "cache/CacheVerdict.hpp"
#include "judge/Overflow.hpp"

namespace corvane::inspect {

struct LintFinding {
  std::string Code;     // stable, for programs
  std::string Text;     // a sentence
  std::string Advice;   // what the user can do
  bool IsNote = false;  // intended behaviour worth knowing; does not change the exit status
  std::vector<LostEntry> Lost;
};

struct LintOptions {
  std::optional<std::size_t> Limit;  // largest variable of the store in bytes
};

// `cache` is of the variable store of the same boot, or null.
std::vector<LintFinding> Lint(const Image& image, const CacheReport* cache, const LintOptions& options);

bool IsClean(const std::vector<LintFinding>& findings);
std::string LintAsText(const std::vector<LintFinding>& findings, const Style& style);
std::string LintAsJson(const std::vector<LintFinding>& findings);

}  // namespace corvane::inspect
