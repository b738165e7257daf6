/** @file
  Fuzz target of the decoder: for any stream, it gives the same result as EDK II's decoder.

  Input: the uncompressed size in two bytes, then the stream without its header.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "FakeUefi/ReferenceCompression.hpp"
#include "Fuzz/FuzzInput.hpp"
#include "Host/database/CompressionSamples.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  static FakeUefi uefi;
  FuzzInput input(data, size);
  const auto length = input.Take<std::uint16_t>();
  const Bytes body = input.Rest();
  const Bytes stream = Join(U32(body.size()), U32(length), body);
  const auto [status, output] = DriverDecompress(stream);
  const Bytes reference = ReferenceDecompress(stream);
  Require(output.size() == length, "the announced size");
  Require(reference.empty() || (status == EFI_SUCCESS && reference == output), "unlike EDK II");
  Require(uefi.LivePoolBlocks() == 0, "a block was left");
  return 0;
}
