/** @file
  ByteReader: the one place with bounds arithmetic; every byte from outside goes through it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

namespace corvane::inspect {

using Bytes = std::span<const std::uint8_t>;

static_assert(std::endian::native == std::endian::little, "packed wire structures are copied as they stand");

// Once a read has failed, every further one gives zeros or an empty span, so an entry is checked once at its end.
class ByteReader {
 public:
  explicit ByteReader(Bytes bytes) : size_(bytes.size()), rest_(bytes) {}

  Bytes Take(std::size_t count) {
    if (count > rest_.size()) {
      ok_ = false;
      rest_ = {};
      return {};
    }
    const Bytes taken = rest_.first(count);
    rest_ = rest_.subspan(count);
    return taken;
  }

  // A little-endian integer, or a packed wire structure of such; zeros after a failure.
  template <typename T>
  T Read() {
    static_assert(std::is_trivially_copyable_v<T>);
    T value{};
    if (const Bytes bytes = Take(sizeof(T)); !bytes.empty()) {
      std::memcpy(&value, bytes.data(), sizeof(T));
    }
    return value;
  }

  bool Ok() const { return ok_; }
  Bytes Rest() const { return rest_; }
  std::size_t Left() const { return rest_.size(); }
  std::size_t Offset() const { return size_ - rest_.size(); }

 private:
  std::size_t size_;
  Bytes rest_;
  bool ok_ = true;
};

}  // namespace corvane::inspect
