/** @file
  CacheContent: the decoded attribute cache of a variable store, with the problem of each variable.

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
  std::size_t Footprint = 0;           // header and name included
  std::optional<std::size_t> Content;  // bytes after decompression
  std::size_t Entries = 0;
  std::string Problem;  // a clause; empty if nothing is wrong
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
  std::uint8_t Status = 0;                 // any value but 0 marks the cache as bad
  inspect::Seal Seal = Seal::None;
  std::optional<CacheCounters> Counters;
  StoredTexts Texts;                  // a lost text is empty: its handle stays taken
  std::vector<StreamRecord> Records;  // the readable records; the cache has no boot configurations
  std::uint64_t CountedRecords = 0;   // AttributeCount after a restore
  std::uint64_t HelpTexts = 0;        // HelpCount after a restore
  std::optional<std::vector<std::uint32_t>> DependencyList;  // "PidDepList"

  const CacheVariable& Of(CacheId id) const { return Variables[static_cast<std::size_t>(id)]; }
  bool IsAbsent() const;  // none of the six variables is present
  bool IsWhole() const;   // all are present, without a problem
};

CacheContent DecodeCache(const VariableStore& store);

// What the driver would publish of the cache if tables had no end. Throws UnusableInput when there is nothing to
// publish.
Image ImageOfCache(const CacheContent& cache);

}  // namespace corvane::inspect
