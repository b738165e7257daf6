/** @file
  Fuzz target of the encoder: whatever it compresses comes back, from our decoder and from EDK II's.

  Input: the bytes to compress; the first says how often they are repeated.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "FakeUefi/ReferenceCompression.hpp"
#include "Fuzz/FuzzInput.hpp"
#include "Host/database/CompressionSamples.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  static FakeUefi uefi;
  constexpr size_t kLongest = 100'000;
  FuzzInput input(data, size);
  const auto times = input.Take();
  const Bytes part = input.Rest();
  Bytes source = part;
  for (unsigned i = 0; i < times && source.size() + part.size() <= kLongest; ++i) {
    Append(source, part);
  }
  const Bytes stream = DriverCompress(source);
  Require(DriverDecompress(stream) == std::pair(EFI_STATUS{EFI_SUCCESS}, source), "it does not come back");
  Require(source.empty() || ReferenceDecompress(stream) == source, "EDK II does not give it back");
  // A block of the size of the stream is enough, one byte less is not.
  auto room = static_cast<UINT32>(stream.size() - 1);
  Bytes block(room);
  Require(Compress(Span(source), Writable(block).data(), room) == EFI_BUFFER_TOO_SMALL && room == stream.size(),
          "the size that it asks for");
  Require(uefi.LivePoolBlocks() == 0, "a block was left");
  return 0;
}
