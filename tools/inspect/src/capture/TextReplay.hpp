/** @file
  TextReplay: which text each step of the gathering of attributes made, where only one is possible.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace corvane::inspect {

// Texts stand in their order of creation, and nothing says what a text belongs to. What made texts, and in which order,
// is known; whether a step made one is not always: a text of more than 174 characters is left out, one that is there
// already is not entered again, a checkbox and a list of two values look alike.
enum class ReplayKind {
  Any,    // a new text, unless it was too long
  Title,  // a text that is Text once its blanks are taken out, unless it was there or too long
  Maybe,  // Text, unless it was there or nothing was entered
  Fixed,  // Text, unless it was there
};

struct ReplayStep {
  ReplayKind Kind = ReplayKind::Any;
  std::u16string Text;  // not of Any
};

struct ReplayTexts {
  std::vector<std::u16string> Texts;  // as many as are known, from the first on
  std::size_t Total = 0;              // how many there are at most
  std::size_t EndsFrom = 0;           // the last step can have been followed by texts from here on
  std::size_t Capacity = 0;           // of the store: no text is entered beyond
};

struct ReplayResult {
  std::size_t Proven = 0;                          // steps from the first on that did the same in all ways
  std::vector<std::optional<std::size_t>> Places;  // of these steps: the text that each made
  bool CameOut = false;                            // there is a way through all steps
};

ReplayResult Replay(const std::vector<ReplayStep>& steps, const ReplayTexts& texts);

std::u16string WithoutStars(std::u16string_view text);

}  // namespace corvane::inspect
