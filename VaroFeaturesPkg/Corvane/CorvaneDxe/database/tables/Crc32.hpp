/** @file
  Crc32: the checksum that closes every table, CRC-32 as zlib computes it (DSP0247).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

class Crc32 {
 public:
  /// Fills the lookup table, and looks for the processor's own instruction. The table lives with the writer of
  /// the tables, not in the image: 1 KiB there would be carried in flash for five uses a boot.
  void Prepare();

  /// Returns the CRC-32 of the bytes. `before` is the CRC-32 of the bytes that precede them.
  [[nodiscard]] UINT32 Of(std::span<const std::byte> bytes, UINT32 before = 0) const;

 private:
  bool hasInstruction_ = false;
  std::array<UINT32, 256> table_{};
};
