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
  std::string Advice;   // what to do
  bool IsNote = false;  // worth knowing, and as it is meant to be: the exit status does not count it
  std::vector<LostEntry> Lost;
};

struct LintOptions {
  std::optional<std::size_t> Limit;  // bytes that the store takes for one variable
};

// `cache` is what the variable store of the same boot has, if there is one.
std::vector<LintFinding> Lint(const Image& image, const CacheReport* cache, const LintOptions& options);

bool IsClean(const std::vector<LintFinding>& findings);
std::string LintAsText(const std::vector<LintFinding>& findings, const Style& style);
std::string LintAsJson(const std::vector<LintFinding>& findings);

}  // namespace corvane::inspect
