/** @file
  The stores that are measured: the notebook's own, restored from its cache, and larger ones in the same language.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "Bench/BenchUefi.hpp"
#include "database/AttributeDatabase.hpp"

/// Frees the store and all that it holds.
void FreeStore(const AttributeDatabase& database);

/// Fills an empty database with `attributes` attributes and `texts` names, display and help texts, made of runs of
/// words of the display and help texts of `model`. The same on every run.
void GenerateStore(AttributeDatabase& database, const AttributeDatabase& model, size_t attributes, size_t texts);
