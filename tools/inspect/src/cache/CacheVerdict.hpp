/** @file
  `inspect cache`: the attribute cache in a variable store, and what the next boot does with it.

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
  std::string Reason;    // one sentence
  std::string NextBoot;  // what the next boot does; sentences

  // Whether the next boot works as intended: from the cache, or by gathering because there is no cache.
  bool IsFine() const { return State == CacheState::Absent || State == CacheState::Valid; }
};

struct CacheOptions {
  std::optional<std::string> Firmware;  // version that boots next; default: the version that wrote the cache
  std::optional<std::size_t> Limit;     // largest variable of the store in bytes, header and name included
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
