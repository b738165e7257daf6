/** @file
  ByteReader: the only code with bounds arithmetic. Every byte of an input file goes through ByteReader.

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

// After a failed read, every further read gives zeros or an empty span. One check at the end of an entry is enough.
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

  // Reads a little-endian integer, or a packed structure of such integers. Returns zeros after a failure.
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
