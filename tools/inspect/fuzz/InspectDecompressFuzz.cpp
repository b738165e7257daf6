/** @file
  Any bytes as a compressed block, and as the variables' content behind it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "Require.hpp"
#include "cache/Decompress.hpp"

using namespace corvane::inspect;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Decompressed result = Decompress({data, size});
  Require(result.Content.size() <= result.Announced);
  Require(!result.Problem.empty() || result.Content.size() == result.Announced);
  return 0;
}
