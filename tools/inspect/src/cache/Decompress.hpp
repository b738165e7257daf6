/** @file
  Decompress: what a block of the UEFI compression algorithm stands for (UEFI specification, compression algorithm).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <vector>

#include "bytes/ByteReader.hpp"

namespace corvane::inspect {

struct Decompressed {
  std::vector<std::uint8_t> Content;  // as far as it could be decoded
  std::size_t Announced = 0;          // bytes
  std::string Problem;                // why the stream cannot be decoded to its end; empty when it can
  std::string Oddity;                 // what no encoder writes, though it decodes
};

Decompressed Decompress(Bytes block);

}  // namespace corvane::inspect
