/** @file
  PerformancePhase: measures a scope with EDK II's performance library, where that is enabled.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

class PerformancePhase {
 public:
  explicit PerformancePhase(const CHAR8* token) : token_(token) { PERF_START(nullptr, token_, "CRV2", 0); }
  PerformancePhase(const PerformancePhase&) = delete;
  PerformancePhase& operator=(const PerformancePhase&) = delete;
  ~PerformancePhase() { PERF_END(nullptr, token_, "CRV2", 0); }

 private:
  const CHAR8* token_;
};
