/** @file
  ByteReader: takes bytes from outside apart, never past their end.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

[[nodiscard]] bool SameBytes(std::span<const std::byte> left, std::span<const std::byte> right);

/// The one place with bounds arithmetic on input. Once failed, every read gives 0 or an empty span. Out of line: there
/// are many readers, and none is read in a hot loop.
class ByteReader {
 public:
  explicit ByteReader(std::span<const std::byte> bytes) : rest_(bytes) {}

  [[nodiscard]] bool Ok() const { return ok_; }
  [[nodiscard]] std::span<const std::byte> Rest() const { return rest_; }
  [[nodiscard]] bool AtEnd() const { return rest_.empty(); }

  std::span<const std::byte> Take(size_t count);

  /// A little-endian integer, copied byte by byte so that alignment plays no part.
  template <std::unsigned_integral T>
  T Read() {
    return static_cast<T>(ReadUnsigned(sizeof(T)));
  }
  /// The same of `size` bytes, at most 8.
  UINT64 ReadUnsigned(size_t size);

  /// A packed structure, byte for byte; zero-filled when the bytes run out.
  template <typename T>
  requires std::is_trivially_copyable_v<T> T ReadStruct() {
    T value{};
    CopyTo(&value, sizeof(value));
    return value;
  }

 private:
  void CopyTo(void* destination, size_t size);

  std::span<const std::byte> rest_;
  bool ok_ = true;
};
