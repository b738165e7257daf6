/** @file
  `inspect diff-tables`: which tables of two captures differ byte for byte, and which values.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <vector>

#include "capture/Image.hpp"

namespace corvane::inspect {

struct ValueDifference {
  std::uint16_t Handle = 0;
  std::string Name;  // in the form of the attribute line
  std::string Old;   // in the form of the attribute line; "-" without an entry
  std::string New;
};

struct TableDifference {
  TableId Id{};
  bool Equal = true;
  std::size_t OldSize = 0;  // bytes
  std::size_t NewSize = 0;
  std::size_t FirstOffset = 0;           // of the first byte that differs
  std::vector<ValueDifference> Changes;  // of the value table
};

// Compares the given tables. A table that only one capture has is a difference.
std::vector<TableDifference> DiffTables(const Image& older, const Image& newer, const std::vector<TableId>& tables);

std::string DifferencesAsText(const std::vector<TableDifference>& differences);
std::string DifferencesAsJson(const std::vector<TableDifference>& differences);

}  // namespace corvane::inspect
