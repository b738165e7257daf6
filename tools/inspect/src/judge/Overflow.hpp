/** @file
  Overflow: which entries a table lacks, by name where that can be known, and how many bytes more it would take.

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
  std::string Text;  // UTF-8: the name, or the text itself
};

struct TableCut {
  TableId Id{};
  std::uint64_t Lost = 0;
  std::optional<std::uint16_t> FirstLost;  // handle
  std::vector<LostEntry> Known;            // of the lost ones
  std::optional<std::size_t> BytesOver;    // what the whole table takes beyond its capacity
};

// Why the strings of a cache are not those of the image, which is of another boot then; empty when they are.
std::string CompareBoots(const Image& image, const CacheContent& cache);

// The tables of an image that are cut, or of the image of a cache those that would be. `cache` is of the same boot.
std::vector<TableCut> FindCuts(const Image& image, const CacheContent* cache);

}  // namespace corvane::inspect
