/** @file
  ByteReader: takes bytes from outside apart, never past their end.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "uefi/ByteReader.hpp"

bool SameBytes(std::span<const std::byte> left, std::span<const std::byte> right) {
  size_t same = 0;
  while (same < left.size() && same < right.size() && left[same] == right[same]) {
    ++same;
  }
  return same == left.size() && same == right.size();
}

[[gnu::noinline]] std::span<const std::byte> ByteReader::Take(size_t count) {
  if (count > rest_.size()) {
    ok_ = false;
    rest_ = {};
    return {};
  }
  const std::span<const std::byte> taken = rest_.first(count);
  rest_ = rest_.subspan(count);
  return taken;
}

[[gnu::noinline]] UINT64 ByteReader::ReadUnsigned(size_t size) {
  UINT64 value = 0;  // firmware and wire are both little-endian
  CopyTo(&value, size);
  return value;
}

[[gnu::noinline]] void ByteReader::CopyTo(void* destination, size_t size) {
  const std::span<const std::byte> bytes = Take(size);
  CopyMem(destination, bytes.data(), bytes.size());
}
