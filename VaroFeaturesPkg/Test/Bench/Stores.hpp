/** @file
  The stores that are measured: the notebook's own, restored from its cache, and larger ones in the same language.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "Bench/BenchUefi.hpp"
#include "database/store/AttributeDatabase.hpp"

/// Frees the store and all that it holds.
void FreeStore(const AttributeDatabase& database);

/// Fills an empty database with `attributes` attributes and `texts` names, display and help texts, made of runs of
/// words of the display and help texts of `model`. The same on every run.
void GenerateStore(AttributeDatabase& database, const AttributeDatabase& model, size_t attributes, size_t texts);

/// A setup in an invented language, so that nothing can be tuned to its words.
struct Setup {
  const char* Name;
  size_t Attributes;
  size_t Options;       // values of each enumeration
  size_t SharedLists;   // lists of values that the enumerations share
  size_t HelpInterval;  // every so many texts have a help text
  size_t ShortestHelp;  // words
  size_t HelpSpread;
  bool TwoLanguages;  // the second one has letters with marks
};
inline constexpr Setup kSetups[] = {
    {"few-long-helps", 60, 3, 12, 4, 150, 250, false},
    {"many-options", 120, 12, 30, 14, 4, 6, false},
    {"two-languages", 110, 4, 20, 2, 8, 30, true},
};

/// Fills an empty database with a setup. The same on every run.
void GenerateStore(AttributeDatabase& database, const Setup& setup);
