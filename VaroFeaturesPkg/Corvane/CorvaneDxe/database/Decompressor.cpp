/** @file
  Decoder of the UEFI compression format: blocks of prefix codes for bytes, match lengths and match distances.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <bit>

#include "database/Decompressor.hpp"

#include "database/CompressionFormat.hpp"
#include "uefi/ByteReader.hpp"

namespace {

constexpr UINT32 kScratchSize = 13376;

// Decoders of this format agree on what a damaged stream means as long as they build their tables alike: symbols up to
// 31 may be named in a distance alphabet, unused entries keep what an earlier block left, and an impossible set of C
// lengths is met only when a code needs it. This decoder keeps to that, so that it accepts what firmware accepts.
constexpr UINT32 kShortAlphabet = 31;
constexpr UINT32 kByteTableBits = 12;
constexpr UINT32 kShortTableBits = 8;
constexpr UINT32 kNodes = 2 * kByteCodes - 1;

/// All that outlives a block. A table is indexed by the next bits of the stream; an entry below the alphabet's size is
/// the symbol, any other is the node where the tree of the longer codes goes on.
struct DecoderTables {
  UINT16 ByteTable[1 << kByteTableBits];
  UINT16 ShortTable[1 << kShortTableBits];
  UINT16 Children[kNodes][2];  // first kByteCodes ones are in use by short alphabets only
  UINT8 ByteLengths[kByteCodes];
  UINT8 ShortLengths[kShortAlphabet];
};
static_assert(sizeof(DecoderTables) + alignof(DecoderTables) - 1 <= kScratchSize);

class BitReader {
 public:
  explicit BitReader(std::span<const std::byte> bytes) : rest_(bytes) { Refill(); }

  /// The next 1 to 32 bits; behind the end there are zeros without end.
  [[nodiscard]] UINT32 Peek(UINT32 count) const { return static_cast<UINT32>(window_ >> (64 - count)); }

  /// Passes over 0 to 32 bits.
  void Skip(UINT32 count) {
    window_ <<= count;
    valid_ -= count;
    if (valid_ < 32) {
      Refill();
    }
  }

  UINT32 Take(UINT32 count) {
    const UINT32 bits = Peek(count);
    Skip(count);
    return bits;
  }

 private:
  void Refill() {
    for (; valid_ <= 56; valid_ += 8) {
      if (!rest_.empty()) {
        window_ |= UINT64{std::to_integer<UINT8>(rest_.front())} << (56 - valid_);
        rest_ = rest_.subspan(1);
      }
    }
  }

  std::span<const std::byte> rest_;
  UINT64 window_ = 0;  // left-aligned
  UINT32 valid_ = 0;
};

class Decoder {
 public:
  Decoder(std::span<const std::byte> stream, DecoderTables& tables) : bits_(stream), tables_(tables) {}

  [[nodiscard]] bool Run(std::span<std::byte> output) {
    size_t done = 0;
    UINT16 left = 0;  // a block of size 0 has 65536 codes
    while (done < output.size()) {
      if (left == 0) {
        left = static_cast<UINT16>(bits_.Take(kBlockSizeBits));
        ReadBlockHeader();
      }
      --left;
      const UINT32 code = ReadSymbol(tables_.ByteTable, kByteTableBits, tables_.ByteLengths);
      if (broken_) {
        return false;
      }
      if (code < kFirstMatchCode) {
        output[done++] = std::byte(code);
        continue;
      }
      const size_t distance = ReadDistance();
      if (broken_ || distance > done) {
        return false;
      }
      const size_t end = std::min<size_t>(done + code - kFirstMatchCode + kMinMatch, output.size());
      for (; done < end; ++done) {
        output[done] = output[done - distance];
      }
    }
    return true;
  }

 private:
  void ReadBlockHeader() {
    ReadShortLengths(kLengthCodes, kLengthCountBits, kGapAfter);
    ReadByteLengths();
    ReadShortLengths(kShortAlphabet, kDistanceCountBits, 0);
  }

  /// The alphabet of code lengths or of distances; `gapAfter` is the number of lengths that a 2-bit gap follows, or 0.
  void ReadShortLengths(UINT32 symbols, UINT32 countBits, UINT32 gapAfter) {
    const std::span<UINT8> lengths = tables_.ShortLengths;
    const UINT32 count = bits_.Take(countBits);
    if (count == 0) {
      std::ranges::fill(tables_.ShortTable, static_cast<UINT16>(bits_.Take(countBits)));
      std::ranges::fill(lengths.first(symbols), UINT8{0});
      return;
    }
    UINT32 next = 0;
    while (next < std::min(count, kShortAlphabet)) {
      UINT32 length = bits_.Take(3);
      if (length == 7) {  // in unary from here on
        const auto ones = static_cast<UINT32>(std::countl_one(bits_.Peek(29) << 3));
        bits_.Skip(ones + 1);
        length += ones;
      }
      lengths[next++] = static_cast<UINT8>(length);
      if (next == gapAfter) {
        next = ClearLengths(lengths, next, bits_.Take(2));
      }
    }
    ClearLengths(lengths, next, kShortAlphabet);
    if (!BuildTable(lengths.first(symbols), kShortTableBits, tables_.ShortTable)) {
      broken_ = true;
    }
  }

  void ReadByteLengths() {
    const std::span<UINT8> lengths = tables_.ByteLengths;
    const UINT32 count = bits_.Take(kByteCountBits);
    if (count == 0) {
      std::ranges::fill(tables_.ByteTable, static_cast<UINT16>(bits_.Take(kByteCountBits)));
      ClearLengths(lengths, 0, kByteCodes);
      return;
    }
    UINT32 next = 0;
    while (next < std::min(count, kByteCodes) && !broken_) {
      const UINT32 symbol = ReadSymbol(tables_.ShortTable, kShortTableBits, {tables_.ShortLengths, kLengthCodes});
      if (symbol > 2) {
        lengths[next++] = static_cast<UINT8>(symbol - 2);
      } else {
        const UINT32 run = symbol == 0   ? 1
                           : symbol == 1 ? bits_.Take(kShortRunBits) + kShortRunBase
                                         : bits_.Take(kByteCountBits) + kLongRunBase;
        next = ClearLengths(lengths, next, run);
      }
    }
    ClearLengths(lengths, next, kByteCodes);
    BuildTable(lengths, kByteTableBits, tables_.ByteTable);
  }

  static UINT32 ClearLengths(std::span<UINT8> lengths, UINT32 next, UINT32 count) {
    for (; count > 0 && next < lengths.size(); --count) {
      lengths[next++] = 0;
    }
    return next;
  }

  /// Canonical codes: by length, and within a length by symbol. False when the lengths make no complete set.
  bool BuildTable(std::span<const UINT8> lengths, UINT32 tableBits, UINT16* table) {
    // Codes stand left-aligned in 16 bits; `first` is the next code of each length.
    UINT16 count[kMaxCodeLength + 1]{};
    for (const UINT8 length : lengths) {
      if (length > kMaxCodeLength) {
        return false;
      }
      ++count[length];
    }
    UINT32 first[kMaxCodeLength + 2];
    first[1] = 0;
    for (UINT32 length = 1; length <= kMaxCodeLength; ++length) {
      first[length + 1] = static_cast<UINT16>(first[length] + (UINT32{count[length]} << (kMaxCodeLength - length)));
    }
    if (first[kMaxCodeLength + 1] != 0) {
      return false;
    }

    const UINT32 treeBits = kMaxCodeLength - tableBits;
    if (const UINT32 longCodes = first[tableBits + 1] >> treeBits; longCodes != 0) {
      std::fill(table + longCodes, table + (1 << tableBits), UINT16{0});
    }
    const auto symbols = static_cast<UINT16>(lengths.size());  // an alphabet has 510 at most
    UINT16 freeNode = symbols;
    for (UINT16 symbol = 0; symbol < symbols; ++symbol) {
      const UINT32 length = lengths[symbol];
      if (length == 0) {
        continue;
      }
      const UINT32 code = first[length];
      const UINT32 next = code + (1 << (kMaxCodeLength - length));
      first[length] = next;
      if (length <= tableBits) {
        if (next > 1 << kMaxCodeLength) {
          return false;
        }
        std::fill(table + (code >> treeBits), table + (next >> treeBits), symbol);
        continue;
      }
      UINT16* slot = &table[static_cast<UINT16>(code) >> treeBits];
      for (UINT32 bit = treeBits; bit > kMaxCodeLength - length; --bit) {
        if (*slot == 0 && freeNode < kNodes) {
          tables_.Children[freeNode][0] = tables_.Children[freeNode][1] = 0;
          *slot = freeNode++;
        }
        slot = &tables_.Children[*slot][code >> (bit - 1) & 1];
      }
      *slot = symbol;
    }
    return true;
  }

  /// The next symbol of the alphabet that `lengths` spans.
  UINT32 ReadSymbol(const UINT16* table, UINT32 tableBits, std::span<const UINT8> lengths) {
    UINT32 symbol = table[bits_.Peek(tableBits)];
    if (symbol >= lengths.size()) {
      UINT32 path = bits_.Peek(32) << tableBits;
      // What several damaged blocks left behind can form a ring.
      for (UINT32 steps = 2 * kNodes; symbol >= lengths.size(); --steps) {
        if (steps == 0) {
          broken_ = true;
          return 0;
        }
        symbol = tables_.Children[symbol][path >> 31];
        path <<= 1;
      }
    }
    bits_.Skip(lengths[symbol]);
    return symbol;
  }

  size_t ReadDistance() {
    const UINT32 width = ReadSymbol(tables_.ShortTable, kShortTableBits, tables_.ShortLengths);
    if (width < 2) {
      return width + 1;
    }
    return (size_t{1} << (width - 1)) + bits_.Take(width - 1) + 1;
  }

  BitReader bits_;
  DecoderTables& tables_;
  bool broken_ = false;
};

}  // namespace

EFI_STATUS DecompressGetInfo(std::span<const std::byte> source, UINT32& destinationSize, UINT32& scratchSize) {
  ByteReader header(source);
  header.Read<UINT32>();  // compressed size
  destinationSize = header.Read<UINT32>();
  scratchSize = kScratchSize;
  return header.Ok() ? EFI_SUCCESS : EFI_INVALID_PARAMETER;
}

EFI_STATUS Decompress(std::span<const std::byte> source, std::span<std::byte> destination,
                      std::span<std::byte> scratch) {
  ByteReader reader(source);
  const UINT32 compressedSize = reader.Read<UINT32>();
  const UINT32 size = reader.Read<UINT32>();
  const std::span<const std::byte> stream = reader.Take(compressedSize);
  if (!reader.Ok() || size > destination.size() || scratch.size() < kScratchSize) {
    return EFI_INVALID_PARAMETER;
  }
  static_assert(alignof(DecoderTables) == 2);
  std::byte* const aligned = scratch.data() + reinterpret_cast<UINTN>(scratch.data()) % alignof(DecoderTables);
  auto* tables = reinterpret_cast<DecoderTables*>(aligned);
  ZeroMem(tables, sizeof(DecoderTables));
  return Decoder(stream, *tables).Run(destination.first(size)) ? EFI_SUCCESS : EFI_INVALID_PARAMETER;
}
