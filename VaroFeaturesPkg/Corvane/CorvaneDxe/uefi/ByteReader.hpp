/** @file
  ByteReader: takes bytes from outside apart, never past their end.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

/// The one place with bounds arithmetic on input. Once failed, every read gives 0 or an empty span.
class ByteReader {
 public:
  constexpr explicit ByteReader(std::span<const std::byte> bytes) : rest_(bytes) {}

  [[nodiscard]] constexpr bool Ok() const { return ok_; }
  [[nodiscard]] constexpr std::span<const std::byte> Rest() const { return rest_; }
  [[nodiscard]] constexpr bool AtEnd() const { return rest_.empty(); }

  constexpr std::span<const std::byte> Take(size_t count) {
    if (count > rest_.size()) {
      ok_ = false;
      rest_ = {};
      return {};
    }
    const std::span<const std::byte> taken = rest_.first(count);
    rest_ = rest_.subspan(count);
    return taken;
  }

  /// A little-endian integer, put together from bytes so that alignment plays no part.
  template <std::unsigned_integral T>
  constexpr T Read() {
    const std::span<const std::byte> bytes = Take(sizeof(T));
    T value = 0;
    for (size_t i = bytes.size(); i > 0; --i) {
      value = static_cast<T>((static_cast<UINT64>(value) << 8) | std::to_integer<UINT8>(bytes[i - 1]));
    }
    return value;
  }

  /// A packed structure, byte for byte; zero-filled when the bytes run out.
  template <typename T>
  requires std::is_trivially_copyable_v<T> T ReadStruct() {
    const std::span<const std::byte> bytes = Take(sizeof(T));
    T value{};
    CopyMem(&value, bytes.data(), bytes.size());
    return value;
  }

 private:
  std::span<const std::byte> rest_;
  bool ok_ = true;
};
