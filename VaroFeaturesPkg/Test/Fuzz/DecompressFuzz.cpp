/** @file
  Fuzz target of the UEFI compression: what our decoder makes of any stream is what EDK II's makes of it, and whatever
is compressed comes back.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "FakeUefi/ReferenceCompression.hpp"
#include "Fuzz/Require.hpp"
#include "Host/database/CompressionSamples.hpp"

namespace {

void CompareDecoders(UINT16 size, const Bytes& body) {
  const Bytes stream = Join(U32(body.size()), U32(size), body);
  const auto [status, output] = DriverDecompress(stream);
  const Bytes reference = ReferenceDecompress(stream);
  Require(output.size() == size, "header");
  Require(reference.empty() || (status == EFI_SUCCESS && reference == output), "unlike EDK II");
}

void CompressAndBack(const Bytes& source) {
  const Bytes stream = DriverCompress(source);
  Require(DriverDecompress(stream) == std::pair(EFI_STATUS{EFI_SUCCESS}, source), "ours");
  Require(ReferenceDecompress(stream) == source, "EDK II's");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  static FakeUefi uefi;
  if (size < 2) {
    return 0;
  }
  const Bytes body(data + 2, data + size);
  CompareDecoders(static_cast<UINT16>(data[0] | data[1] << 8), body);
  CompressAndBack(body);
  Require(uefi.LivePoolBlocks() == 0, "a block was left");
  return 0;
}
