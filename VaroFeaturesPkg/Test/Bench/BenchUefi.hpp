/** @file
  BenchUefi: the services that the database needs, at almost no cost; and the marks of a stretch whose instructions are
  counted.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include <map>
#include <string>
#include <vector>

#include "uefi/Edk2.hpp"

using Bytes = std::vector<std::byte>;

/// Pool that is never reused, so that it costs almost nothing; variables in memory; a firmware version.
class BenchUefi {
 public:
  BenchUefi();
  static BenchUefi& Current();

  std::map<std::u16string, Bytes> Variables;
  size_t PoolInUse = 0;  ///< bytes
  size_t PoolPeak = 0;
  VOID* HiiString = nullptr;  ///< interface of gEfiHiiStringProtocolGuid

 private:
  EFI_STATUS Allocate(size_t size, void** block);

  std::byte* arena_ = nullptr;
  size_t arenaUsed_ = 0;
  EFI_BOOT_SERVICES bootServices_{};
  EFI_RUNTIME_SERVICES runtimeServices_{};
};

/// Instructions do not count while one of these lives. For services that are not part of the driver.
class CountPause {
 public:
  CountPause();
  CountPause(const CountPause&) = delete;
  CountPause& operator=(const CountPause&) = delete;
  ~CountPause();
};

/// Marks a stretch, and prints "label NUMBER WHAT": the counter gives its instructions by the number.
void BeginCount(const std::string& what);
void EndCount();

template <typename Stretch>
auto Count(const std::string& what, Stretch&& stretch) {
  struct Marks {
    explicit Marks(const std::string& label) { BeginCount(label); }
    ~Marks() { EndCount(); }
  };
  const Marks marks(what);
  return stretch();
}
