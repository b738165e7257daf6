/** @file
  Fuzz target of the UEFI compression: what our decoder makes of any stream is what EDK II's makes of it, and whatever
is compressed comes back.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "FakeUefi/ReferenceCompression.hpp"
#include "Fuzz/Require.hpp"
#include "Host/TestBytes.hpp"
#include "database/Compressor.hpp"
#include "database/Decompressor.hpp"

namespace {

std::span<std::byte> Writable(Bytes& bytes) {
  return std::as_writable_bytes(std::span(bytes));
}

void CompareDecoders(UINT16 size, const Bytes& body) {
  const Bytes stream = Join(static_cast<UINT32>(body.size()), UINT32{size}, body);
  UINT32 announced = 0;
  UINT32 scratchSize = 0;
  Require(DecompressGetInfo(Span(stream), announced, scratchSize) == EFI_SUCCESS && announced == size, "header");
  Bytes output(size);
  Bytes scratch(scratchSize, 0xA5);
  const EFI_STATUS status = Decompress(Span(stream), Writable(output), Writable(scratch));
  const Bytes reference = ReferenceDecompress(stream);
  Require(reference.empty() || (status == EFI_SUCCESS && reference == output), "unlike EDK II");
}

void CompressAndBack(const Bytes& source) {
  UINT32 size = 0;
  Require(Compress(Span(source), nullptr, size) == EFI_BUFFER_TOO_SMALL, "size query");
  Bytes stream(size);
  Require(Compress(Span(source), Writable(stream).data(), size) == EFI_SUCCESS && size == stream.size(), "compression");
  Bytes output(source.size());
  Bytes scratch(13376);
  Require(Decompress(Span(stream), Writable(output), Writable(scratch)) == EFI_SUCCESS && output == source, "ours");
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
