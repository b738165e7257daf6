/** @file
  Crc32: the table-driven loop.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/Crc32.hpp"

void Crc32::Prepare() {
  constexpr UINT32 kReflectedPolynomial = 0xEDB88320;
  for (UINT32 i = 0; i < table_.size(); ++i) {
    UINT32 remainder = i;
    for (int bit = 0; bit < 8; ++bit) {
      remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? kReflectedPolynomial : 0);
    }
    table_[i] = remainder;
  }
}

UINT32 Crc32::Of(std::span<const std::byte> bytes) const {
  UINT32 remainder = MAX_UINT32;
  for (const std::byte byte : bytes) {
    remainder = (remainder >> 8) ^ table_[(remainder ^ std::to_integer<UINT32>(byte)) & 0xFF];
  }
  return ~remainder;
}
