/** @file
  Dependencies: the questions that other questions' annotations name, collected into the variable "PidDepList".

  A keyword may carry annotations such as "[ForceIf:SecureBoot=Enabled]"; the name between ":" and "=" is that of a
  question which the annotated one depends on.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Pool.hpp"

class Dependencies {
 public:
  Dependencies() = default;
  Dependencies(const Dependencies&) = delete;
  Dependencies& operator=(const Dependencies&) = delete;
  ~Dependencies();

  /// Keeps a question and its keyword, which may be null. There is room for 257; more are dropped.
  void RecordDependencyCandidate(UINT32 identifier, PoolPtr<CHAR16[]>&& keyword);

  /// Writes the identifiers of all questions that an annotation names, at most 50. Without any, nothing is written and
  /// an earlier list stays. An overlong name abandons the evaluation without writing: EFI_ABORTED. Releases the
  /// candidates.
  [[nodiscard]] EFI_STATUS BuildPidDepList();

 private:
  struct Candidate {
    UINT32 Identifier;
    CHAR16* Keyword;  // owned, or null
  };

  [[nodiscard]] EFI_STATUS Evaluate();
  void Release();

  static constexpr size_t kCapacity = 257;  // readers know the list of a setup with exactly one more than 256 questions

  PoolPtr<Candidate[]> candidates_;
  size_t count_ = 0;
  bool candidateDropped_ = false;
};
