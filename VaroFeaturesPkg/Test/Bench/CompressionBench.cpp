/** @file
  Benchmarks of the UEFI compression beside EDK II's, on a string list like a notebook's help texts.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <benchmark/benchmark.h>

#include "FakeUefi/ReferenceCompression.hpp"
#include "Host/database/CompressionSamples.hpp"

namespace {

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
BENCHMARK_TEMPLATE(CompressHelpTexts, DriverCompress)->Arg(2000)->Arg(50000);
BENCHMARK_TEMPLATE(CompressHelpTexts, ReferenceCompress)->Arg(2000)->Arg(50000);

Bytes Decompressed(const Bytes& stream) {
  return DriverDecompress(stream).second;
}

template <Bytes (*Decoder)(const Bytes&)>
void DecompressHelpTexts(benchmark::State& state) {
  const FakeUefi uefi;
  const Bytes source = HelpTextSample(static_cast<size_t>(state.range(0)));
  const Bytes stream = DriverCompress(source);
  for (auto _ : state) {
    benchmark::DoNotOptimize(Decoder(stream).data());
  }
  Report(state, source, stream);
}
BENCHMARK_TEMPLATE(DecompressHelpTexts, Decompressed)->Arg(2000)->Arg(50000);
BENCHMARK_TEMPLATE(DecompressHelpTexts, ReferenceDecompress)->Arg(2000)->Arg(50000);

}  // namespace
