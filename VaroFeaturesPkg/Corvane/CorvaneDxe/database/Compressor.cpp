/** @file
  Encoder of the UEFI compression format: hash chains over the last 8 KiB, the cheapest parse of each stretch by the
  prices of the codes so far, and three prefix codes for each block.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <bit>

#include "database/Compressor.hpp"

#include "database/CompressionFormat.hpp"
#include "uefi/Pool.hpp"

namespace {

// The codes of one block wait here until its alphabets are known.
constexpr size_t kStagingSize = 16384;
constexpr size_t kSmallestStagingSize = 4096;

// The texts are UCS-2: shorter strings than these repeat everywhere, and are hardly worth a match.
constexpr UINT32 kHashedBytes = 5;
constexpr UINT32 kHashSize = 4096;
constexpr UINT32 kLongestChain = 16;  // candidates tried at one position
constexpr UINT32 kGoodMatch = 24;     // bytes; what lies inside such a match is not searched

constexpr UINT32 kStretch = 2048;  // bytes parsed at once
constexpr UINT32 kRehearsal = 1024;
constexpr UINT32 kEnoughCodes = 128;  // in a block, before its counts are worth more than the prices of the last one

// Prices are in sixteenths of a bit.
constexpr UINT32 kPricePerBit = 16;
constexpr UINT8 kFirstPrice = 90;
static_assert(kRehearsal < kSmallestStagingSize / sizeof(UINT16) - 1, "a rehearsal writes no block");
static_assert(std::bit_width(kStagingSize) * kPricePerBit < 256, "a price fits a byte");

/// The three alphabets lie one behind the other in every array over symbols.
struct Alphabet {
  UINT32 First;
  UINT32 Size;
  UINT32 CountBits;
  UINT32 GapAfter;  // lengths before the 2-bit gap; 0 = there is none
};
constexpr Alphabet kBytes{0, kByteCodes, kByteCountBits, 0};
constexpr Alphabet kDistances{kBytes.First + kBytes.Size, kDistanceCodes, kDistanceCountBits, 0};
constexpr Alphabet kLengths{kDistances.First + kDistances.Size, kLengthCodes, kLengthCountBits, kGapAfter};
constexpr UINT32 kSymbols = kLengths.First + kLengths.Size;

/// The last code on the cheapest way to a position: a byte, or a match when the length is above 1.
struct Step {
  UINT32 Price;  // of the whole way
  UINT16 Length;
  UINT16 Distance;
};

struct Code {
  UINT16 Bits;
  UINT16 Length;
};

/// Of Huffman's tree.
struct Node {
  UINT32 Weight;
  UINT32 Symbol;
  UINT32 Parent;
  UINT32 Depth;
};

/// A symbol of the code in which the lengths of the byte code are written, and what follows it.
struct LengthCode {
  UINT8 Symbol;
  UINT8 ExtraBits;
  UINT16 Extra;
};

struct Workspace {
  UINT8 Prices[kSymbols];
  Code Codes[kSymbols];
  UINT32 Counts[kSymbols];  // of the block so far
  UINT16 Crc[256];
  UINT16 Head[kHashSize];        // latest position with this hash, modulo 65536
  UINT16 Previous[kWindowSize];  // the one before it
  Step Steps[kStretch + 1];
  LengthCode Lengths[kByteCodes];
  Node Nodes[2 * kByteCodes];  // the leaves by weight, then the inner nodes in the order of their making
};

template <typename T>
T Load(const std::byte* bytes) {
  T value;
  __builtin_memcpy(&value, bytes, sizeof(value));
  return value;
}

/// Counts what does not fit, so that one pass gives both the stream and the size it needs.
class BitWriter {
 public:
  explicit BitWriter(std::span<std::byte> room) : room_(room) {}

  [[nodiscard]] UINT32 Size() const { return size_; }

  /// The low `count` bits, up to 32.
  void Put(UINT32 bits, UINT32 count) {
    pending_ = (pending_ << count) | bits;
    for (pendingBits_ += count; pendingBits_ >= 8; pendingBits_ -= 8) {
      PutByte(static_cast<UINT8>(pending_ >> (pendingBits_ - 8)));
    }
  }

  void PutByte(UINT8 byte) {
    if (size_ < room_.size()) {
      room_[size_] = std::byte{byte};
    }
    ++size_;
  }

  void Flush() { Put(0, -pendingBits_ & 7); }

 private:
  std::span<std::byte> room_;
  UINT32 size_ = 0;
  UINT64 pending_ = 0;
  UINT32 pendingBits_ = 0;
};

class Encoder {
 public:
  Encoder(std::span<const std::byte> source, std::span<UINT16> staging, Workspace& work, BitWriter& output)
      : source_(source), staging_(staging), work_(work), output_(output) {
    BuildCrcTable();
  }

  void Run() {
    // The beginning is parsed twice, the first time only to learn its prices.
    SetMem(work_.Prices, sizeof(work_.Prices), kFirstPrice);
    Parse(source_.first(std::min<size_t>(source_.size(), kRehearsal)), 0);
    UpdatePrices(kBytes);
    UpdatePrices(kDistances);
    StartBlock();
    ZeroMem(work_.Head, sizeof(work_.Head));

    for (size_t start = 0; start < source_.size(); start += kStretch) {
      Parse(source_.first(std::min<size_t>(source_.size(), start + kStretch)), start);
      if (blockSize_ >= kEnoughCodes) {
        UpdatePrices(kBytes);
        UpdatePrices(kDistances);
      }
    }
    WriteBlock();
    output_.Flush();
  }

 private:
  /// CRC-16, reflected polynomial 0xA001. It is linear: entry i + j is the sum of entries i and j if they share no bit.
  void BuildCrcTable() {
    UINT32 crc = 1;
    for (UINT32 bit = 128; bit > 0; bit >>= 1) {
      crc = (crc >> 1) ^ ((crc & 1) * 0xA001);
      for (UINT32 other = 0; other < 256; other += 2 * bit) {
        work_.Crc[bit + other] = static_cast<UINT16>(crc ^ work_.Crc[other]);
      }
    }
  }

  /// Of five bytes, in three steps: most of the bytes of a text are zero, so neighbours go in together.
  [[nodiscard]] UINT32 Hash(const std::byte* bytes) const {
    UINT32 pairs = Load<UINT32>(bytes);
    pairs ^= pairs >> 8;
    UINT32 crc = work_.Crc[pairs & 0xFF];
    crc = (crc >> 8) ^ work_.Crc[(crc ^ (pairs >> 16)) & 0xFF];
    crc = (crc >> 8) ^ work_.Crc[(crc ^ std::to_integer<UINT32>(bytes[4])) & 0xFF];
    return crc % kHashSize;
  }

  /// Enters a position, and gives the one before it with the same hash. Positions are modulo 65536.
  UINT16 Insert(size_t position) {
    const UINT16 entry = static_cast<UINT16>(position);
    if (source_.size() - position < kHashedBytes) {
      return entry;  // no match begins here
    }
    const UINT16 before = std::exchange(work_.Head[Hash(&source_[position])], entry);
    work_.Previous[entry % kWindowSize] = before;
    return before;
  }

  [[nodiscard]] static UINT32 MatchLength(const std::byte* here, const std::byte* there, UINT32 limit) {
    UINT32 length = 0;
    for (; limit - length >= sizeof(UINT64); length += sizeof(UINT64)) {
      const UINT64 difference = Load<UINT64>(here + length) ^ Load<UINT64>(there + length);
      if (difference != 0) {
        return length + static_cast<UINT32>(std::countr_zero(difference)) / 8;
      }
    }
    while (length < limit && here[length] == there[length]) {
      ++length;
    }
    return length;
  }

  /// Finds the cheapest codes from `start` to the end of `text`, and stages them.
  void Parse(std::span<const std::byte> text, size_t start) {
    const std::span<Step> steps{work_.Steps, text.size() - start + 1};
    for (Step& step : steps) {
      step.Price = MAX_UINT32;
    }
    steps[0].Price = 0;
    for (size_t at = 0; at < steps.size() - 1; ++at) {
      const UINT32 price = steps[at].Price + work_.Prices[kBytes.First + std::to_integer<UINT32>(text[start + at])];
      Offer(steps[at + 1], {price, 1, 0});
      const UINT32 longest = OfferMatches(text, start + at, &steps[at]);
      // Whatever starts inside a good match seldom does better.
      for (UINT32 inside = 1; longest >= kGoodMatch && inside < longest; ++inside) {
        Insert(start + ++at);
      }
    }

    // Turn the steps of the best way round, so that each stands where it leaves.
    Step leaving = steps.back();
    for (size_t at = steps.size() - 1; at > 0;) {
      at -= leaving.Length;
      std::swap(leaving, steps[at]);
    }
    for (size_t at = 0; at < steps.size() - 1; at += steps[at].Length) {
      if (steps[at].Length == 1) {
        Stage(std::to_integer<UINT16>(text[start + at]));
      } else {
        StageMatch(steps[at]);
      }
    }
  }

  static void Offer(Step& best, const Step& step) {
    if (step.Price < best.Price) {
      best = step;
    }
  }

  /// Offers the matches at `position` to the steps behind `from`; gives the longest one's length.
  UINT32 OfferMatches(std::span<const std::byte> text, size_t position, Step* from) {
    const std::byte* here = text.data() + position;
    const UINT32 limit = static_cast<UINT32>(std::min<size_t>(text.size() - position, kMaxMatch));
    const UINT32 reach = static_cast<UINT32>(std::min<size_t>(position, kWindowSize));
    UINT32 longest = kMinMatch - 1;
    UINT32 farthest = 0;
    UINT16 candidate = Insert(position);
    for (UINT32 tries = kLongestChain; tries > 0; --tries) {
      // Stale entries are told from others by their bytes alone; a chain that turns back has come to its end.
      const UINT32 distance = static_cast<UINT16>(position - candidate);
      if (distance <= farthest || distance > reach) {
        break;
      }
      farthest = distance;
      // Two bytes, as every other byte of a text is zero.
      const std::byte* there = here - distance;
      if (Load<UINT16>(there + longest - 1) == Load<UINT16>(here + longest - 1)) {
        const UINT32 length = MatchLength(here, there, limit);
        const UINT32 width = BitWidth(distance - 1);
        const UINT32 price =
            from->Price + work_.Prices[kDistances.First + width] + kPricePerBit * (width - std::min(width, 1U));
        while (longest < length) {
          ++longest;
          Offer(from[longest], {price + work_.Prices[kBytes.First + MatchCode(longest)], static_cast<UINT16>(longest),
                                static_cast<UINT16>(distance)});
        }
        if (longest == limit) {
          break;
        }
      }
      candidate = work_.Previous[candidate % kWindowSize];
    }
    return longest;
  }

  /// Prices from the counts of the block so far, as if each symbol had come half a time more.
  void UpdatePrices(const Alphabet& alphabet) {
    const std::span<const UINT32> counts{&work_.Counts[alphabet.First], alphabet.Size};
    UINT32 total = 0;
    for (const UINT32 count : counts) {
      total += count;
    }
    const UINT32 whole = Log2(2 * total + 1);
    UINT8* price = &work_.Prices[alphabet.First];
    for (const UINT32 count : counts) {
      *price++ = static_cast<UINT8>(whole - Log2(2 * count + 1));
    }
  }

  /// In units of the prices, straight between powers of two.
  static UINT32 Log2(UINT32 number) {
    const UINT32 whole = BitWidth(number) - 1;
    return (whole - 1) * kPricePerBit + (number * kPricePerBit >> whole);
  }

  static UINT32 BitWidth(UINT32 number) { return static_cast<UINT32>(std::bit_width(number)); }

  static UINT32 MatchCode(UINT32 length) { return length - kMinMatch + kFirstMatchCode; }

  void StageMatch(const Step& match) {
    Stage(static_cast<UINT16>(MatchCode(match.Length)));
    const auto distance = static_cast<UINT16>(match.Distance - 1);
    staging_[staged_++] = distance;
    ++work_.Counts[kDistances.First + BitWidth(distance)];
  }

  void Stage(UINT16 code) {
    if (staging_.size() - staged_ < 2) {
      WriteBlock();
    }
    staging_[staged_++] = code;
    ++blockSize_;
    ++work_.Counts[kBytes.First + code];
  }

  void StartBlock() {
    staged_ = 0;
    blockSize_ = 0;
    ZeroMem(work_.Counts, sizeof(work_.Counts));
  }

  void WriteBlock() {
    if (blockSize_ == 0) {
      return;
    }
    output_.Put(blockSize_, kBlockSizeBits);
    const UINT32 used = BuildCode(kBytes);
    const std::span<const LengthCode> lengths = EncodeLengths(used);
    for (const LengthCode& length : lengths) {
      ++work_.Counts[kLengths.First + length.Symbol];
    }
    WriteLengths(kLengths, BuildCode(kLengths));
    if (used > 0) {
      output_.Put(used, kBytes.CountBits);
      for (const LengthCode& length : lengths) {
        PutSymbol(kLengths, length.Symbol);
        output_.Put(length.Extra, length.ExtraBits);
      }
    } else {
      WriteOnlySymbol(kBytes);
    }
    WriteLengths(kDistances, BuildCode(kDistances));

    for (size_t next = 0; next < staged_;) {
      const UINT32 code = staging_[next++];
      PutSymbol(kBytes, code);
      if (code >= kFirstMatchCode) {
        const UINT32 distance = staging_[next++];
        const UINT32 width = BitWidth(distance);
        PutSymbol(kDistances, width);
        if (width > 1) {
          output_.Put(distance - (1 << (width - 1)), width - 1);
        }
      }
    }
    StartBlock();
  }

  void PutSymbol(const Alphabet& alphabet, UINT32 symbol) {
    const Code code = work_.Codes[alphabet.First + symbol];
    output_.Put(code.Bits, code.Length);
  }

  /// The lengths of the byte code's first `used` symbols, runs of zeros in one.
  std::span<const LengthCode> EncodeLengths(UINT32 used) {
    const Code* codes = &work_.Codes[kBytes.First];
    LengthCode* end = work_.Lengths;
    for (UINT32 next = 0; next < used;) {
      UINT32 run = 0;
      while (codes[next + run].Length == 0) {
        ++run;  // ends: the last length in use is not 0
      }
      next += run;
      if (run == 0) {
        *end++ = {static_cast<UINT8>(codes[next++].Length + 2), 0, 0};
      }
      if (run == kLongRunBase - 1) {
        *end++ = {};  // neither kind of run has 19
        --run;
      }
      if (run >= kLongRunBase) {
        *end++ = {2, kByteCountBits, static_cast<UINT16>(run - kLongRunBase)};
        run = 0;
      } else if (run >= kShortRunBase) {
        *end++ = {1, kShortRunBits, static_cast<UINT16>(run - kShortRunBase)};
        run = 0;
      }
      for (; run > 0; --run) {
        *end++ = {};
      }
    }
    return {work_.Lengths, end};
  }

  void WriteOnlySymbol(const Alphabet& alphabet) {
    UINT32 symbol = 0;
    while (symbol < alphabet.Size - 1 && work_.Counts[alphabet.First + symbol] == 0) {
      ++symbol;
    }
    output_.Put(0, alphabet.CountBits);
    output_.Put(work_.Counts[alphabet.First + symbol] == 0 ? 0 : symbol, alphabet.CountBits);
  }

  void WriteLengths(const Alphabet& alphabet, UINT32 used) {
    if (used == 0) {
      WriteOnlySymbol(alphabet);
      return;
    }
    const Code* codes = &work_.Codes[alphabet.First];
    output_.Put(used, alphabet.CountBits);
    for (UINT32 next = 0; next < used;) {
      const UINT32 length = codes[next++].Length;
      if (length < 7) {
        output_.Put(length, 3);
      } else {
        output_.Put((1 << (length - 3)) - 2, length - 3);
      }
      if (next == alphabet.GapAfter) {
        while (next < alphabet.GapAfter + 3 && codes[next].Length == 0) {
          ++next;
        }
        output_.Put(next - alphabet.GapAfter, 2);
      }
    }
  }

  /// Gives every counted symbol a code. Returns the number of symbols up to the last one in use, or 0 when fewer than
  /// two are: such an alphabet takes no bits.
  UINT32 BuildCode(const Alphabet& alphabet) {
    const std::span<Code> codes{&work_.Codes[alphabet.First], alphabet.Size};
    ZeroMem(codes.data(), codes.size_bytes());
    UINT32 leaves = 0;
    UINT32 used = 0;
    for (UINT32 symbol = 0; symbol < alphabet.Size; ++symbol) {
      const UINT32 count = work_.Counts[alphabet.First + symbol];
      if (count == 0) {
        continue;
      }
      used = symbol + 1;
      Node* node = &work_.Nodes[leaves++];
      for (; node > work_.Nodes && node[-1].Weight > count; --node) {
        *node = node[-1];
      }
      *node = {count, symbol, 0, 0};
    }
    if (leaves < 2) {
      return 0;
    }
    const std::span<Node> tree{work_.Nodes, 2 * leaves - 1};
    while (!BuildTree(tree, leaves)) {
      for (Node& leaf : tree.first(leaves)) {
        leaf.Weight = leaf.Weight / 2 + 1;  // keeps the order
      }
    }

    UINT32 next[kMaxCodeLength + 1]{};
    for (const Node& leaf : tree.first(leaves)) {
      codes[leaf.Symbol].Length = static_cast<UINT16>(leaf.Depth);
      ++next[leaf.Depth];
    }
    UINT32 first = 0;
    for (UINT32& count : next) {
      first = first * 2 + std::exchange(count, first * 2);
    }
    for (Code& code : codes) {
      if (code.Length != 0) {
        code.Bits = static_cast<UINT16>(next[code.Length]++);
      }
    }
    return used;
  }

  /// Huffman's tree over leaves in the order of their weights; false when one is deeper than the format allows.
  static bool BuildTree(std::span<Node> tree, UINT32 leaves) {
    UINT32 leaf = 0;
    UINT32 inner = leaves;
    for (UINT32 made = leaves; made < tree.size(); ++made) {
      tree[made].Weight = 0;
      for (int child = 0; child < 2; ++child) {
        const bool leafIsNext = leaf < leaves && (inner == made || tree[leaf].Weight <= tree[inner].Weight);
        Node& lightest = tree[leafIsNext ? leaf++ : inner++];
        tree[made].Weight += lightest.Weight;
        lightest.Parent = made;
      }
    }
    tree.back().Depth = 0;
    UINT32 deepest = 0;
    for (size_t node = tree.size() - 1; node-- > 0;) {
      tree[node].Depth = tree[tree[node].Parent].Depth + 1;
      deepest = std::max(deepest, tree[node].Depth);
    }
    return deepest <= kMaxCodeLength;
  }

  std::span<const std::byte> source_;
  std::span<UINT16> staging_;
  Workspace& work_;
  BitWriter& output_;
  size_t staged_ = 0;
  UINT32 blockSize_ = 0;
};

}  // namespace

EFI_STATUS Compress(std::span<const std::byte> source, std::byte* destination, UINT32& destinationSize) {
  if (source.size() > kLargestBlock) {
    return EFI_INVALID_PARAMETER;
  }
  const PoolPtr<Workspace> work = AllocateZeroed<Workspace>();
  if (work == nullptr) {
    return EFI_OUT_OF_RESOURCES;
  }
  // A smaller staging buffer makes shorter blocks, and nothing worse.
  size_t stagingSize = kStagingSize;
  PoolPtr<UINT16[]> staging{static_cast<UINT16*>(AllocateZeroedBytes(stagingSize))};
  while (staging == nullptr) {
    stagingSize = stagingSize / 10 * 9;
    if (stagingSize < kSmallestStagingSize) {
      return EFI_OUT_OF_RESOURCES;
    }
    staging.reset(static_cast<UINT16*>(AllocateZeroedBytes(stagingSize)));
  }

  const UINT32 room = destination == nullptr ? 0 : destinationSize;
  BitWriter output({destination, room});
  output.Put(0, 32);  // the compressed size comes last
  output.Put(__builtin_bswap32(static_cast<UINT32>(source.size())), 32);
  Encoder(source, {staging.get(), stagingSize / sizeof(UINT16)}, *work, output).Run();
  destinationSize = output.Size();
  if (destinationSize > room) {
    return EFI_BUFFER_TOO_SMALL;
  }
  const UINT32 compressedSize = destinationSize - kCompressionHeaderSize;
  __builtin_memcpy(destination, &compressedSize, sizeof(compressedSize));
  return EFI_SUCCESS;
}
