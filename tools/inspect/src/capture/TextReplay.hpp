/** @file
  TextReplay: finds the text that each step of gathering created, if only one text is possible.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace corvane::inspect {

// Texts are in the order of creation, without a link to an attribute. The steps that create texts, and their order,
// are known. Whether a step created a text is not always known: a text above 174 characters is dropped, an existing
// text is not added again, and a checkbox looks like a list of two values.
enum class ReplayKind {
  Any,    // a new text, unless too long
  Title,  // a text that equals Text without its blanks, unless present before or too long
  Maybe,  // Text, unless present before or not added
  Fixed,  // Text, unless present before
};

struct ReplayStep {
  ReplayKind Kind = ReplayKind::Any;
  std::u16string Text;  // unused with Any
};

struct ReplayTexts {
  std::vector<std::u16string> Texts;  // the known texts, from the first on
  std::size_t Total = 0;              // upper limit for the number of texts
  std::size_t EndsFrom = 0;           // texts from this position on may come after the last step
  std::size_t Capacity = 0;           // of the store, which drops further texts
};

struct ReplayResult {
  std::size_t Proven = 0;                          // number of first steps with the same result in all solutions
  std::vector<std::optional<std::size_t>> Places;  // for each of these steps: its text
  bool CameOut = false;                            // a solution exists
};

ReplayResult Replay(const std::vector<ReplayStep>& steps, const ReplayTexts& texts);

std::u16string WithoutStars(std::u16string_view text);

}  // namespace corvane::inspect
