/** @file
  `inspect cache`: what a variable store holds of the attribute cache, and what the next boot makes of it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <optional>
#include <string>

#include "bytes/Style.hpp"
#include "cache/CacheContent.hpp"

namespace corvane::inspect {

enum class CacheState { Absent, Valid, Stale, MarkedBad, Partial, Corrupt };

struct CacheVerdict {
  CacheState State = CacheState::Absent;
  std::string Reason;    // why; a sentence
  std::string NextBoot;  // what it does; sentences

  // Whether the next boot works as it is meant to: from the cache, or for want of one.
  bool IsFine() const { return State == CacheState::Absent || State == CacheState::Valid; }
};

struct CacheOptions {
  std::optional<std::string> Firmware;  // version that runs next; the one that wrote the cache if left out
  std::optional<std::size_t> Limit;     // bytes that the store takes for one variable, header and name included
};

const char* NameOf(CacheState state);
const char* NameOf(Seal seal);
CacheVerdict JudgeCache(const CacheContent& cache, const CacheOptions& options);

// A store with its cache and the verdict on it.
struct CacheReport {
  VariableStore Store;
  CacheContent Content;
  CacheVerdict Verdict;
  inspect::Findings Findings;  // of the flash image
};

CacheReport ReportCache(Bytes flash, const CacheOptions& options);  // throws UnusableInput
std::string CacheAsText(const CacheReport& report, const CacheOptions& options, const Style& style);
std::string CacheAsJson(const CacheReport& report, const CacheOptions& options);

}  // namespace corvane::inspect
