/** @file
  ByteWriter: lays bytes out one after the other, or only counts them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

/// One walker sizes a block with a counting writer and fills it with a real one. What does not fit fails the writer
/// for good and is not written, nor is anything after it.
class ByteWriter {
 public:
  /// Counts only.
  constexpr ByteWriter() = default;
  constexpr explicit ByteWriter(std::span<std::byte> room) : room_(room), counting_(false) {}

  [[nodiscard]] constexpr bool Ok() const { return ok_; }
  [[nodiscard]] constexpr size_t Used() const { return used_; }

  void Put(std::span<const std::byte> bytes) {
    const size_t place = used_;
    Skip(bytes.size());
    if (!counting_ && ok_) {
      CopyMem(room_.data() + place, bytes.data(), bytes.size());
    }
  }

  /// Goes past bytes that stay as they are.
  void Skip(size_t count) {
    if (!ok_ || (!counting_ && count > room_.size() - used_)) {
      ok_ = false;
      return;
    }
    used_ += count;
  }

  /// The bytes of a packed structure or an integer; firmware and wire are both little-endian.
  template <typename T>
  requires std::is_trivially_copyable_v<T>
  void PutValue(const T& value) { Put(std::as_bytes(std::span<const T, 1>(&value, 1))); }

 private:
  std::span<std::byte> room_;
  size_t used_ = 0;
  bool counting_ = true;
  bool ok_ = true;
};
