/** @file
  CacheContent: the attribute cache of a variable store, decoded, with what is wrong with each of its variables.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <array>
#include <optional>

#include "cache/VariableStore.hpp"
#include "capture/Image.hpp"
#include "capture/Pairing.hpp"

namespace corvane::inspect {

enum class CacheId { Version, Attributes, Counters, Names, Display, Help, Status };

// What a boot that restores the cache does about a problem, from the least to the most. The boot itself goes on with
// what it can restore.
enum class Restore {
  Whole,           // nothing: no harm is done
  Silent,          // nothing: the boot does not notice
  DeletesOne,      // deletes this variable; the next boot finds it missing
  DeletesVersion,  // deletes "BiosVersion", so that the next boot gathers
  Recorded,        // deletes the cache
};

// The CRC-32 of the other variables that "BiosVersion" has after its terminator.
enum class Seal { None, Fits, Broken };

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
  inspect::Seal Seal = Seal::None;
  std::optional<CacheCounters> Counters;
  StoredTexts Texts;                  // a lost text is empty: its handle stays taken
  std::vector<StreamRecord> Records;  // as far as they can be read; boot configurations are not kept
  std::uint64_t CountedRecords = 0;   // those that the restored AttributeCount counts
  std::uint64_t HelpTexts = 0;        // help texts that are restored
  std::optional<std::vector<std::uint32_t>> DependencyList;  // "PidDepList"

  const CacheVariable& Of(CacheId id) const { return Variables[static_cast<std::size_t>(id)]; }
  bool IsAbsent() const;  // there is none of the six variables that a cache is made of
  bool IsWhole() const;   // all are there, and nothing is wrong with them
};

CacheContent DecodeCache(const VariableStore& store);

// What the driver would publish of the cache if tables had no end. Throws UnusableInput when there is nothing to
// publish.
Image ImageOfCache(const CacheContent& cache);

}  // namespace corvane::inspect
