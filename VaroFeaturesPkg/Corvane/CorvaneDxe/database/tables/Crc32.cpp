/** @file
  Crc32: by the instruction that every processor since Armv8.1 has, or by table.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/tables/Crc32.hpp"

#include "database/compression/CrcTable.hpp"

namespace {

#if defined(__aarch64__)
bool ProcessorHasCrc32() {
  UINT64 features;
  asm("mrs %0, id_aa64isar0_el1" : "=r"(features));
  return (features >> 16 & 0xF) != 0;
}

/// The remainder after eight more bytes, the first one lowest.
[[gnu::always_inline]] inline UINT32 Crc32OfEight(UINT32 remainder, UINT64 bytes) {
  asm(".arch_extension crc\n\tcrc32x %w0, %w0, %1" : "+r"(remainder) : "r"(bytes));
  return remainder;
}
#else
constexpr bool ProcessorHasCrc32() {
  return false;
}
constexpr UINT32 Crc32OfEight(UINT32 remainder, UINT64) {
  return remainder;
}
#endif

[[gnu::always_inline]] inline UINT64 EightAt(const std::byte* bytes) {
  UINT64 value;
  __builtin_memcpy(&value, bytes, sizeof(value));
  return value;
}

}  // namespace

void FillCrcTable(std::span<UINT32, 256> table, UINT32 reflectedPolynomial) {
  // A CRC is linear: the entry of i + j is the sum of those of i and j where they share no bit.
  table[0] = 0;
  UINT32 crc = 1;
  for (UINT32 bit = 128; bit > 0; bit >>= 1) {
    crc = (crc >> 1) ^ ((crc & 1) * reflectedPolynomial);
    for (UINT32 other = 0; other < table.size(); other += 2 * bit) {
      table[bit + other] = crc ^ table[other];
    }
  }
}

void Crc32::Prepare() {
  hasInstruction_ = ProcessorHasCrc32();
  FillCrcTable(table_, 0xEDB88320);
}

UINT32 Crc32::Of(std::span<const std::byte> bytes, UINT32 before) const {
  UINT32 remainder = ~before;
  const std::byte* next = bytes.data();
  const std::byte* const end = next + bytes.size();
  if (hasInstruction_) {
    for (; end - next >= 32; next += 32) {
      remainder = Crc32OfEight(remainder, EightAt(next));
      remainder = Crc32OfEight(remainder, EightAt(next + 8));
      remainder = Crc32OfEight(remainder, EightAt(next + 16));
      remainder = Crc32OfEight(remainder, EightAt(next + 24));
    }
    for (; end - next >= 8; next += 8) {
      remainder = Crc32OfEight(remainder, EightAt(next));
    }
  }
  for (; next < end; ++next) {
    remainder = (remainder >> 8) ^ table_[(remainder ^ std::to_integer<UINT32>(*next)) & 0xFF];
  }
  return ~remainder;
}
