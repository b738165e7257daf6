/** @file
  CacheContent: the attribute cache of a variable store, decoded, with what is wrong with each of its variables.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <array>
#include <optional>

#include "capture/Image.hpp"
#include "capture/Pairing.hpp"
#include "cache/VariableStore.hpp"

namespace corvane::inspect {

enum class CacheId { Version, Attributes, Counters, Names, Display, Help, Status };

// How a boot that restores the cache takes a problem.
enum class Restore {
  Whole,     // no harm
  Silent,    // takes what there is, and keeps the cache
  Recorded,  // takes what there is, and deletes the cache
};

struct CacheVariable {
  CacheId Id{};
  const char* Name = "";
  bool Present = false;
  std::size_t Size = 0;                // bytes of data
  std::size_t Footprint = 0;           // with header and name
  std::optional<std::size_t> Content;  // bytes that the data decode to
  std::size_t Entries = 0;
  std::string Problem;  // a clause; empty when nothing is wrong
  Restore Outcome = Restore::Whole;
};

struct CacheCounters {
  std::uint64_t Attributes = 0;
  std::uint64_t Names = 0;
  std::uint64_t Display = 0;
  std::uint64_t Help = 0;
};

struct CacheContent {
  std::array<CacheVariable, 7> Variables;  // by CacheId
  std::string Version;                     // of the firmware that wrote it
  std::uint8_t Status = 0;                 // not 0: somebody marked it bad
  std::optional<CacheCounters> Counters;
  StoredTexts Texts;                                         // as far as they can be read
  std::vector<StreamRecord> Records;                         // likewise; boot configurations are not kept
  std::optional<std::vector<std::uint32_t>> DependencyList;  // "PidDepList"

  const CacheVariable& Of(CacheId id) const { return Variables[static_cast<std::size_t>(id)]; }
  bool IsAbsent() const;  // none of the six variables that a cache is made of
  bool IsWhole() const;   // all are there, and nothing is wrong with them
};

CacheContent DecodeCache(const VariableStore& store);

// What the driver would publish of it if tables had no end. Throws UnusableInput when there is nothing to publish.
Image ImageOfCache(const CacheContent& cache);

}  // namespace corvane::inspect
