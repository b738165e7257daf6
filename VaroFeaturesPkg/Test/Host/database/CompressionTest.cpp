/** @file
  Tests of encoder and decoder against each other and against EDK II's, because other firmware reads the cache with EDK
II's decoder.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeUefi/ReferenceCompression.hpp"
#include "Host/database/CompressionSamples.hpp"

namespace {

constexpr UINT32 kScratchSize = 13376;

/// After a block without order, one of repeats. The counts of their lengths grow like Fibonacci's numbers, so that the
/// rarest length would have a code of more than 16 bits.
Bytes SteepSample() {
  std::mt19937 random{325};
  std::vector<size_t> lengths;
  double count = 3000;
  for (size_t length = 8; count >= 1; ++length, count /= 1.62) {
    lengths.insert(lengths.end(), static_cast<size_t>(count + 0.5), length);
  }
  std::shuffle(lengths.begin(), lengths.end(), random);
  Bytes sample(8192);
  std::ranges::generate(sample, [&random] { return U8(1 + random() % 255); });
  size_t end = 0;  // of the repeat before, where it was taken from
  for (const size_t length : lengths) {
    size_t place = 0;
    do {
      place = sample.size() - 8100 + random() % 7000;
    } while (sample[place] == sample[end]);  // a repeat ends where it was meant to
    end = place + length;
    for (; place < end; ++place) {
      sample.push_back(sample[place]);
    }
  }
  return sample;
}

class CompressionTest : public testing::Test {
 protected:
  ~CompressionTest() override { EXPECT_EQ(uefi.LivePoolBlocks(), 0U); }

  static void ExpectRoundTrip(const Bytes& source) {
    const Bytes stream = DriverCompress(source);
    EXPECT_EQ(BytesAt(stream.data(), 8), Join(static_cast<UINT32>(stream.size() - 8), U32(UINT32(source.size()))));
    const std::pair whole(EFI_STATUS{EFI_SUCCESS}, source);
    EXPECT_TRUE(DriverDecompress(stream) == whole);
    if (!source.empty()) {
      EXPECT_TRUE(ReferenceDecompress(stream) == source);
      EXPECT_TRUE(DriverDecompress(ReferenceCompress(source)) == whole);
    }
  }

  FakeUefi uefi;
};

TEST_F(CompressionTest, Compress_OfEveryKindOfData_DecodesWithBothDecoders) {
  // The size is at most a part or multiple of that of EDK II's encoder.
  const std::tuple<const char*, Bytes, double> rows[] = {
      {"help texts", HelpTextSample(50000), 0.9935},
      {"few help texts", HelpTextSample(700), 0.975},
      {"beyond 64 KiB, where positions repeat", HelpTextSample(150000), 0.998},
      {"one run", Bytes(70000, 0x20), 1.05},
      {"a run between other blocks", Join(RandomSample(20000, 256), Bytes(2200000, 0), RandomSample(20000, 256)), 1.02},
      {"a period of the window", Join(RandomSample(8192, 256), RandomSample(8192, 256)), 1.01},
      {"a period beyond it", Join(RandomSample(8193, 256), RandomSample(8193, 256)), 1.01},
      {"a period of 64 KiB", Join(RandomSample(65536, 256), RandomSample(65536, 256)), 1.01},
      {"no order", RandomSample(40000, 256), 1.01},
      {"two symbols", RandomSample(40000, 2), 1.08},
      {"two symbols that are far apart", Join(Bytes(20, 0), RandomSample(1, 256), Bytes{0xFF}), 1},
      {"codes of very different lengths", SteepSample(), 1},
  };
  for (const auto& [name, source, most] : rows) {
    SCOPED_TRACE(name);
    ExpectRoundTrip(source);
    EXPECT_LE(static_cast<double>(DriverCompress(source).size()),
              most * static_cast<double>(ReferenceCompress(source).size()));
  }
  ExpectRoundTrip({});
  EXPECT_EQ(DriverCompress({}), Bytes(8));  // the header alone
}

TEST_F(CompressionTest, Compress_OfEverySmallSize_Decodes) {
  for (size_t size = 1; size <= 300; ++size) {
    SCOPED_TRACE(size);
    ExpectRoundTrip(RandomSample(size, 1U + static_cast<unsigned>(size * 7 % 256), static_cast<unsigned>(size)));
  }
}

TEST_F(CompressionTest, Compress_WithAnyRoom_ReturnsTheSizeNeeded) {
  const Bytes source = HelpTextSample(2000);
  const Bytes stream = DriverCompress(source);
  const auto needed = static_cast<UINT32>(stream.size());
  for (const UINT32 room : {0U, 7U, 8U, needed - 1, needed, needed + 9}) {
    SCOPED_TRACE(room);
    Bytes destination(needed + 9, 0xEE);
    UINT32 size = room;
    const bool fits = room >= needed;
    EXPECT_EQ(Compress(Span(source), Writable(destination).data(), size), fits ? EFI_SUCCESS : EFI_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, needed);
    const size_t used = std::min(room, needed);
    EXPECT_EQ(Middle(destination, used, 0), Bytes(destination.size() - used, 0xEE));
    EXPECT_TRUE(!fits || Middle(destination, 0, destination.size() - used) == stream);
    size = room;
    EXPECT_EQ(Compress(Span(source), nullptr, size), EFI_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, needed);
  }
}

TEST_F(CompressionTest, Compress_WithLittleMemory_ShortensTheStagingBuffer) {
  const Bytes source = HelpTextSample(50000);
  Bytes stream(source.size());
  const auto compress = [&] {
    auto size = static_cast<UINT32>(stream.size());
    const EFI_STATUS status = Compress(Span(source), Writable(stream).data(), size);
    EXPECT_EQ(uefi.LivePoolBlocks(), 0U);
    return status;
  };
  uefi.Fail(Service::Allocation, 1, EFI_OUT_OF_RESOURCES);
  EXPECT_EQ(compress(), EFI_OUT_OF_RESOURCES);

  uefi.Fail(Service::Allocation, 2, EFI_OUT_OF_RESOURCES);
  EXPECT_EQ(compress(), EFI_SUCCESS);
  EXPECT_TRUE(DriverDecompress(stream).second == source);
  EXPECT_TRUE(ReferenceDecompress(stream) == source);

  // 16384, 14742, 13266, 11934, 10737, 9657, 8685, 7812, 7029, 6318, 5679, 5103, 4590, 4131; 3717 is not asked for.
  uefi.Fail(Service::Allocation, 2, EFI_OUT_OF_RESOURCES, FakeUefi::Later::Fail);
  const size_t before = uefi.Calls(Service::Allocation);
  EXPECT_EQ(compress(), EFI_OUT_OF_RESOURCES);
  EXPECT_EQ(uefi.Calls(Service::Allocation) - before, 1 + 14U);
}

TEST_F(CompressionTest, Decompress_WithoutAWholeStreamOrRoom_IsRejected) {
  const Bytes source = HelpTextSample(500);
  const Bytes stream = DriverCompress(source);
  UINT32 size = 0;
  UINT32 scratchSize = 0;
  EXPECT_EQ(DecompressGetInfo(Span(stream).first(7), size, scratchSize), EFI_INVALID_PARAMETER);
  EXPECT_EQ(DecompressGetInfo(Span(stream).first(8), size, scratchSize), EFI_SUCCESS);
  EXPECT_EQ(size, source.size());
  EXPECT_EQ(scratchSize, kScratchSize);

  // Bytes of the stream, the destination and the scratch, whose address may be odd.
  const std::tuple<size_t, size_t, size_t, EFI_STATUS> rows[] = {
      {stream.size() - 1, size, kScratchSize, EFI_INVALID_PARAMETER},
      {7, size, kScratchSize, EFI_INVALID_PARAMETER},
      {stream.size(), size - 1, kScratchSize, EFI_INVALID_PARAMETER},
      {stream.size(), size, kScratchSize - 1, EFI_INVALID_PARAMETER},
      {stream.size(), size, kScratchSize, EFI_SUCCESS},
      {stream.size(), size + 1, kScratchSize + 1, EFI_SUCCESS},
  };
  for (const auto& [given, room, scratchRoom, status] : rows) {
    Bytes destination(room, 0xEE);
    Bytes scratch(scratchRoom + 1);
    EXPECT_EQ(Decompress(Span(stream).first(given), Writable(destination), Writable(scratch).subspan(1)), status);
    EXPECT_TRUE(EFI_ERROR(status) || destination == Join(source, Bytes(room - size, 0xEE)));
  }
}

TEST_F(CompressionTest, Decompress_OfADamagedStream_AgreesWithEdk2) {
  std::mt19937 random{11};
  size_t accepted = 0;
  size_t refused = 0;
  const std::pair<Bytes, int> rows[] = {
      {HelpTextSample(900), 5000}, {RandomSample(900, 20), 5000}, {SteepSample(), 400}};
  for (const auto& [source, rounds] : rows) {
    for (const Bytes& stream : {DriverCompress(source), ReferenceCompress(source)}) {
      // Damage to the alphabets finds more faults than damage to the codes.
      const size_t heads = std::min<size_t>(stream.size(), 90);
      for (int round = 0; round < rounds; ++round) {
        Bytes damaged = stream;
        for (auto places = 1 + random() % 3; places > 0; --places) {
          const size_t place = 8 + random() % ((random() % 2 == 0 ? heads : stream.size()) - 8);
          damaged[place] = random() % 4 == 0 ? U8(random() & 0xFF) : U8(damaged[place] ^ 1U << random() % 8);
        }
        if (random() % 8 == 0) {
          damaged.resize(8 + random() % (stream.size() - 8));
          const Bytes size = Join(static_cast<UINT32>(damaged.size() - 8));
          std::ranges::copy(size, damaged.begin());
        }
        const Bytes theirs = ReferenceDecompress(damaged);
        const auto [status, data] = DriverDecompress(damaged);
        ++(theirs.empty() ? refused : accepted);
        ASSERT_TRUE(theirs.empty() || (status == EFI_SUCCESS && data == theirs)) << "round " << round;
      }
    }
  }
  // The rounds reach both outcomes often.
  EXPECT_GT(accepted, 1000U);
  EXPECT_GT(refused, 1000U);
}

}  // namespace
