/** @file
  Decoder of the UEFI compression format: blocks of prefix codes for bytes, match lengths and match distances.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <bit>

#include "database/compression/Decompressor.hpp"

#include "database/compression/CompressionFormat.hpp"
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
constexpr UINT32 kBroken = MAX_UINT16 + 1;  // no symbol

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

/// The stream from its next bit on; behind the end there are zeros without end. A plain value, so that a loop can have
/// it in registers.
class BitReader {
 public:
  static constexpr UINT32 kLeastBits = 32;

  explicit BitReader(std::span<const std::byte> bytes) : next_(bytes.data()), end_(bytes.data() + bytes.size()) {}

  /// Sees to it that the next kLeastBits bits are at hand.
  [[gnu::always_inline]] void Refill() {
    if (valid_ >= kLeastBits) {
      return;
    }
    if (end_ - next_ < static_cast<ptrdiff_t>(sizeof(UINT64))) [[unlikely]] {
      *this = RefilledFromTail(*this);
      return;
    }
    UINT64 bytes;
    __builtin_memcpy(&bytes, next_, sizeof(bytes));
    window_ |= __builtin_bswap64(bytes) >> valid_;
    next_ += (63 - valid_) / 8;
    valid_ |= 56;  // whole bytes: the bits below them are taken again
  }

  /// The next 1 to 32 bits, out of those at hand.
  [[nodiscard]] UINT32 Peek(UINT32 count) const { return static_cast<UINT32>(window_ >> (64 - count)); }

  /// Passes over bits at hand.
  void Skip(UINT32 count) {
    window_ <<= count;
    valid_ -= count;
  }

 private:
  [[gnu::noinline]] static BitReader RefilledFromTail(BitReader reader) {
    for (; reader.valid_ <= 56; reader.valid_ += 8) {
      if (reader.next_ < reader.end_) {
        reader.window_ |= UINT64{std::to_integer<UINT8>(*reader.next_++)} << (56 - reader.valid_);
      }
    }
    return reader;
  }

  const std::byte* next_;
  const std::byte* end_;
  UINT64 window_ = 0;  // left-aligned
  UINT32 valid_ = 0;   // bits at hand
};

class Decoder {
 public:
  Decoder(std::span<const std::byte> stream, DecoderTables& tables) : bits_(stream), tables_(tables) {}

  [[nodiscard]] bool Run(std::span<std::byte> output) {
    std::byte* to = output.data();
    std::byte* const end = to + output.size();
    const UINT16* const byteTable = tables_.ByteTable;
    const UINT8* const byteLengths = tables_.ByteLengths;
    BitReader bits = bits_;
    UINT16 left = 0;  // a block of size 0 has 65536 codes
    while (to < end) {
      if (left == 0) {
        bits_ = bits;
        left = static_cast<UINT16>(Take(kBlockSizeBits));
        if (!ReadBlockHeader()) {
          return false;
        }
        bits = bits_;
      }
      --left;
      bits.Refill();
      UINT32 code = byteTable[bits.Peek(kByteTableBits)];
      if (code >= kByteCodes) {
        code = FollowTree(code, bits.Peek(32) << kByteTableBits, kByteCodes);
        if (code == kBroken) {
          return false;
        }
      }
      bits.Skip(byteLengths[code]);
      if (code < kFirstMatchCode) {
        *to++ = std::byte(code);
        continue;
      }
      UINT32 width = tables_.ShortTable[bits.Peek(kShortTableBits)];
      if (width >= kShortAlphabet) {
        width = FollowTree(width, bits.Peek(32) << kShortTableBits, kShortAlphabet);
        if (width == kBroken) {
          return false;
        }
      }
      bits.Skip(tables_.ShortLengths[width]);
      size_t distance = width + 1;
      if (width >= 2) {
        bits.Refill();
        distance = (size_t{1} << (width - 1)) + bits.Peek(width - 1) + 1;
        bits.Skip(width - 1);
      }
      if (distance > static_cast<size_t>(to - output.data())) {
        return false;
      }
      std::byte* const matchEnd = to + std::min<ptrdiff_t>(code - kFirstMatchCode + kMinMatch, end - to);
      if (distance >= sizeof(UINT64) && end - matchEnd >= static_cast<ptrdiff_t>(sizeof(UINT64))) {
        // Eight bytes at a time; what is too much is overwritten later.
        for (std::byte* piece = to; piece < matchEnd; piece += sizeof(UINT64)) {
          __builtin_memcpy(piece, piece - distance, sizeof(UINT64));
        }
        to = matchEnd;
      }
      for (; to < matchEnd; ++to) {
        *to = *(to - distance);
      }
    }
    return true;
  }

 private:
  [[gnu::noinline]] bool ReadBlockHeader() {
    return ReadShortLengths(kLengthCodes, kLengthCountBits, kGapAfter) && ReadByteLengths() &&
           ReadShortLengths(kShortAlphabet, kDistanceCountBits, 0);
  }

  // Heads are read out of line, for their size; the loop over the codes has it all within.
  [[gnu::noinline]] void Refill() { bits_.Refill(); }

  /// Takes 0 to 32 bits.
  [[gnu::noinline]] UINT32 Take(UINT32 count) {
    Refill();
    const auto bits = static_cast<UINT32>(UINT64{bits_.Peek(32)} << count >> 32);
    bits_.Skip(count);
    return bits;
  }

  /// The alphabet of code lengths or of distances; `gapAfter` is the number of lengths that a 2-bit gap follows, or 0.
  [[nodiscard]] bool ReadShortLengths(UINT32 symbols, UINT32 countBits, UINT32 gapAfter) {
    const std::span<UINT8> lengths = tables_.ShortLengths;
    const UINT32 count = Take(countBits);
    if (count == 0) {
      std::ranges::fill(tables_.ShortTable, static_cast<UINT16>(Take(countBits)));
      std::ranges::fill(lengths.first(symbols), UINT8{0});
      return true;
    }
    UINT32 next = 0;
    while (next < std::min(count, kShortAlphabet)) {
      UINT32 length = Take(3);
      if (length == 7) {  // in unary from here on
        Refill();
        const auto ones = static_cast<UINT32>(std::countl_one(bits_.Peek(29) << 3));
        bits_.Skip(ones + 1);
        length += ones;
      }
      lengths[next++] = static_cast<UINT8>(length);
      if (next == gapAfter) {
        next = ClearLengths(lengths, next, Take(2));
      }
    }
    ClearLengths(lengths, next, kShortAlphabet);
    return BuildTable(lengths.first(symbols), kShortTableBits, tables_.ShortTable);
  }

  [[nodiscard]] bool ReadByteLengths() {
    const std::span<UINT8> lengths = tables_.ByteLengths;
    const UINT32 count = Take(kByteCountBits);
    if (count == 0) {
      std::ranges::fill(tables_.ByteTable, static_cast<UINT16>(Take(kByteCountBits)));
      ClearLengths(lengths, 0, kByteCodes);
      return true;
    }
    UINT32 next = 0;
    while (next < std::min(count, kByteCodes)) {
      const UINT32 symbol = ReadLengthSymbol();
      if (symbol == kBroken) {
        return false;
      }
      if (symbol > 2) {
        lengths[next++] = static_cast<UINT8>(symbol - 2);
      } else {
        const UINT32 run = symbol == 0   ? 1
                           : symbol == 1 ? Take(kShortRunBits) + kShortRunBase
                                         : Take(kByteCountBits) + kLongRunBase;
        next = ClearLengths(lengths, next, run);
      }
    }
    ClearLengths(lengths, next, kByteCodes);
    static_cast<void>(BuildTable(lengths, kByteTableBits, tables_.ByteTable));
    return true;
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

  /// The next symbol of the alphabet of code lengths, or kBroken.
  UINT32 ReadLengthSymbol() {
    Refill();
    UINT32 symbol = tables_.ShortTable[bits_.Peek(kShortTableBits)];
    if (symbol >= kLengthCodes) {
      symbol = FollowTree(symbol, bits_.Peek(32) << kShortTableBits, kLengthCodes);
      if (symbol == kBroken) {
        return symbol;
      }
    }
    bits_.Skip(tables_.ShortLengths[symbol]);
    return symbol;
  }

  /// The symbol of a code longer than its table's index: `path` has the bits behind the index on top. kBroken where
  /// what several damaged blocks left behind forms a ring.
  [[gnu::noinline]] UINT32 FollowTree(UINT32 node, UINT32 path, UINT32 symbols) const {
    for (UINT32 steps = 2 * kNodes; node >= symbols; --steps) {
      if (steps == 0) {
        return kBroken;
      }
      node = tables_.Children[node][path >> 31];
      path <<= 1;
    }
    return node;
  }

  BitReader bits_;
  DecoderTables& tables_;
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
