/** @file
  Overflow: the entries that a table lacks, with names if known, and how many bytes the table exceeds its capacity.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cache/CacheContent.hpp"

namespace corvane::inspect {

struct LostEntry {
  std::uint16_t Handle = 0;
  std::string Text;  // UTF-8: a name or a text
};

struct TableCut {
  TableId Id{};
  std::uint64_t Lost = 0;
  std::optional<std::uint16_t> FirstLost;  // handle
  std::vector<LostEntry> Known;            // the lost entries with known names
  std::optional<std::size_t> BytesOver;    // size of the complete table minus its capacity
};

// Why the cache is of another boot than the image, judged by their strings. Empty if the strings agree.
std::string CompareBoots(const Image& image, const CacheContent& cache);

// The tables that are cut, or for the image of a cache, that would be cut. `cache` is of the same boot, or null.
std::vector<TableCut> FindCuts(const Image& image, const CacheContent* cache);

}  // namespace corvane::inspect
