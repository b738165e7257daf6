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
  std::string Name;  // as the attribute line has it
  std::string Old;   // as the current value of the attribute line; "-" without an entry
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

// Of the tables asked for, in their order; a table that only one capture has differs.
std::vector<TableDifference> DiffTables(const Image& older, const Image& newer, const std::vector<TableId>& tables);

std::string DifferencesAsText(const std::vector<TableDifference>& differences);
std::string DifferencesAsJson(const std::vector<TableDifference>& differences);

}  // namespace corvane::inspect
