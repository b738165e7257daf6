/** @file
  Decompress: decodes a block of the UEFI compression algorithm (UEFI specification, compression algorithm).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <vector>

#include "bytes/ByteReader.hpp"

namespace corvane::inspect {

struct Decompressed {
  std::vector<std::uint8_t> Content;  // as far as decoding went
  std::size_t Announced = 0;          // bytes
  std::string Problem;                // why decoding stopped before the end; empty if it did not
  std::string Oddity;                 // decodable, but written by no encoder; empty if there is none
};

Decompressed Decompress(Bytes block);

}  // namespace corvane::inspect
