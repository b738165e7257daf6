/** @file
  Results of routines that can fail.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

/// Drops a status in the open; the call's comment says why that is harmless.
constexpr void IgnoreStatus(EFI_STATUS) {}

/// The status that says why there is no value.
struct Failure {
  EFI_STATUS Status;
};

/// A value, or the status that says why there is none.
template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : value_(std::move(value)) {}
  Result(Failure failure) : status_(failure.Status) {}

  [[nodiscard]] bool Ok() const { return !EFI_ERROR(status_); }
  [[nodiscard]] EFI_STATUS Status() const { return status_; }
  [[nodiscard]] T& Value() { return value_; }
  [[nodiscard]] const T& Value() const { return value_; }

 private:
  T value_{};
  EFI_STATUS status_ = EFI_SUCCESS;
};
