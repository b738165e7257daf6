/** @file
  Benchmarks of the UEFI compression beside EDK II's, on a string list like a notebook's help texts.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <benchmark/benchmark.h>

#include "FakeUefi/ReferenceCompression.hpp"
#include "Host/database/CompressionSamples.hpp"
#include "database/Compressor.hpp"
#include "database/Decompressor.hpp"

namespace {

// In two calls, the first for the size, as the cache does it.
Bytes Compressed(const Bytes& source) {
  UINT32 size = 0;
  if (Compress(Span(source), nullptr, size) != EFI_BUFFER_TOO_SMALL) {
    std::abort();
  }
  Bytes stream(size);
  if (Compress(Span(source), std::as_writable_bytes(std::span(stream)).data(), size) != EFI_SUCCESS) {
    std::abort();
  }
  return stream;
}

void Report(benchmark::State& state, const Bytes& source, const Bytes& stream) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * source.size()));
  state.counters["size"] = static_cast<double>(stream.size());
  state.counters["ratio"] = static_cast<double>(stream.size()) / static_cast<double>(source.size());
}

template <Bytes (*Encoder)(const Bytes&)>
void CompressHelpTexts(benchmark::State& state) {
  const FakeUefi uefi;
  const Bytes source = HelpTextSample(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(Encoder(source).data());
  }
  Report(state, source, Encoder(source));
}
BENCHMARK_TEMPLATE(CompressHelpTexts, Compressed)->Arg(2000)->Arg(50000);
BENCHMARK_TEMPLATE(CompressHelpTexts, ReferenceCompress)->Arg(2000)->Arg(50000);

Bytes Decompressed(const Bytes& stream) {
  UINT32 size = 0;
  UINT32 scratchSize = 0;
  if (DecompressGetInfo(Span(stream), size, scratchSize) != EFI_SUCCESS) {
    std::abort();
  }
  Bytes output(size);
  Bytes scratch(scratchSize);
  if (Decompress(Span(stream), std::as_writable_bytes(std::span(output)), std::as_writable_bytes(std::span(scratch))) !=
      EFI_SUCCESS) {
    std::abort();
  }
  return output;
}

template <Bytes (*Decoder)(const Bytes&)>
void DecompressHelpTexts(benchmark::State& state) {
  const FakeUefi uefi;
  const Bytes source = HelpTextSample(static_cast<size_t>(state.range(0)));
  const Bytes stream = Compressed(source);
  for (auto _ : state) {
    benchmark::DoNotOptimize(Decoder(stream).data());
  }
  Report(state, source, stream);
}
BENCHMARK_TEMPLATE(DecompressHelpTexts, Decompressed)->Arg(2000)->Arg(50000);
BENCHMARK_TEMPLATE(DecompressHelpTexts, ReferenceDecompress)->Arg(2000)->Arg(50000);

}  // namespace
