/** @file
  Encoder of the UEFI compression format: hash chains over the last 8 KiB, matches put off while the next byte has a
  better one, and three prefix codes for each block.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <bit>

#include "database/compression/Compressor.hpp"

#include "database/compression/CompressionFormat.hpp"
#include "database/compression/CrcTable.hpp"
#include "uefi/Pool.hpp"

namespace {

// Size of the staging buffer, which holds the codes of one block until the prefix codes are known.
constexpr size_t kStagingSize = 16384;
constexpr size_t kSmallestStagingSize = 4096;

// The texts are UCS-2, so that every second byte is zero: shorter strings than these repeat everywhere.
constexpr UINT32 kHashedBytes = 5;
constexpr UINT32 kHashSize = 4096;
constexpr UINT32 kShortHashBits = 10;  // of kMinMatch bytes, one candidate each
constexpr UINT32 kLongestChain = 56;   // candidates tried at one position
constexpr UINT32 kGoodMatch = 24;      // bytes; a match of this length is taken without a look at the next position
constexpr INT32 kLeastWorth = 11;      // a match of less worth takes as much room as its bytes
constexpr INT32 kLazyMatchBias = 6;    // the worth that a match at the next position must have more

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

struct Match {
  UINT32 Length;  // 0: none
  UINT32 Distance;

  /// Bits saved, roughly: a byte of the match would take 4 bits, and the distance takes its significant bits.
  [[nodiscard]] INT32 Worth() const {
    return static_cast<INT32>(Length * 4) - static_cast<INT32>(std::bit_width(Distance));
  }
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
  Code Codes[kSymbols];
  UINT32 Counts[kSymbols];  // of the block so far
  UINT32 Crc[256];
  // Positions modulo 64 KiB. A stale position does no harm: the bytes there are compared like any other.
  UINT16 Head[kHashSize];                           // latest position with this hash
  UINT16 Previous[kWindowSize];                     // the position before it with the same hash
  UINT16 ShortHead[1 << kShortHashBits];            // latest position with this hash of kMinMatch bytes
  UINT16 Distances[kStagingSize / sizeof(UINT16)];  // of the staged codes that are matches, each less 1
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
    pendingBits_ += count;
    if (pendingBits_ >= 32) {
      PutBytes();
    }
  }

  /// Fills the last byte.
  void Flush() {
    Put(0, -pendingBits_ & 7);
    PutBytes();
  }

 private:
  [[gnu::noinline]] void PutBytes() {
    for (; pendingBits_ >= 8; ++size_) {
      pendingBits_ -= 8;
      if (size_ < room_.size()) {
        room_[size_] = static_cast<std::byte>(pending_ >> pendingBits_);
      }
    }
  }

  std::span<std::byte> room_;
  UINT32 size_ = 0;
  UINT64 pending_ = 0;
  UINT32 pendingBits_ = 0;
};

class Encoder {
 public:
  Encoder(std::span<const std::byte> source, std::span<UINT16> staging, Workspace& work, BitWriter& output)
      : source_(source), staging_(staging), work_(work), output_(output) {
    FillCrcTable(work_.Crc, 0xA001);
  }

  void Run() {
    const auto size = static_cast<UINT32>(source_.size());
    for (UINT32 position = 0; position < size;) {
      Match match = FindMatch(position);
      while (match.Length != 0 && match.Length < kGoodMatch) {
        const Match next = FindMatch(position + 1);
        if (next.Worth() <= match.Worth() + kLazyMatchBias) {
          break;
        }
        Stage(Byte(position++), 0);
        match = next;
      }
      if (match.Length == 0) {
        Stage(Byte(position++), 0);
        continue;
      }
      Stage(static_cast<UINT16>(match.Length - kMinMatch + kFirstMatchCode), match.Distance);
      position += match.Length;
    }
    WriteBlock();
    output_.Flush();
  }

 private:
  [[nodiscard]] UINT16 Byte(UINT32 position) const { return std::to_integer<UINT16>(source_[position]); }

  /// Of five bytes: most of the bytes of a text are zero, so neighbours go through the CRC together.
  [[nodiscard]] UINT32 Hash(const std::byte* bytes) const {
    UINT32 pairs = Load<UINT32>(bytes);
    pairs ^= pairs >> 8;
    UINT32 crc = work_.Crc[pairs & 0xFF];
    crc = (crc >> 8) ^ work_.Crc[(crc ^ (pairs >> 16)) & 0xFF];
    return (crc ^ (std::to_integer<UINT32>(bytes[4]) << 4)) % kHashSize;
  }

  /// Whether the byte is the high half of a UCS-2 character. No search begins there: a match that begins at the next
  /// character nearly always extends backwards by this zero.
  [[nodiscard]] bool IsHighHalf(UINT32 position) const {
    return source_[position] == std::byte{0} && source_[position + 1] != std::byte{0};
  }

  /// Enters all positions up to this one into the hash chains. The position is followed by kHashedBytes bytes.
  void EnterUpTo(UINT32 position) {
    for (; entered_ <= position; ++entered_) {
      if (!IsHighHalf(entered_)) {
        work_.Previous[entered_ % kWindowSize] =
            std::exchange(work_.Head[Hash(&source_[entered_])], static_cast<UINT16>(entered_));
      }
    }
  }

  /// The match at a position that promises the most, or one of length 0.
  Match FindMatch(UINT32 position) {
    if (source_.size() - position <= kHashedBytes) {
      return {};
    }
    const bool extend = IsHighHalf(position);
    // The look at the next position and the step to it often search the same position.
    if (const UINT32 start = position + (extend ? 1 : 0); start != searched_) {
      searched_ = start;
      found_ = Search(start);
    }
    Match match = found_;
    if (extend && match.Length != 0) {
      if (match.Distance > position || source_[position - match.Distance] != std::byte{0}) {
        return {};
      }
      match.Length = std::min(match.Length + 1, kMaxMatch);
    }
    return match;
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

  /// The longest match at a position, and the nearest of these. Of kMinMatch bytes, only the latest place is compared.
  Match Search(UINT32 position) {
    const std::byte* const here = source_.data() + position;
    const auto limit = static_cast<UINT32>(std::min<size_t>(source_.size() - position, kMaxMatch));
    const UINT32 farthest = std::min(position, kWindowSize);
    Match best{kMinMatch - 1, 0};
    EnterUpTo(position);
    UINT32 distance = 0;
    for (UINT32 tries = kLongestChain; tries > 0; --tries) {
      const UINT32 next = static_cast<UINT16>(position - work_.Previous[(position - distance) % kWindowSize]);
      if (next <= distance || next > farthest) {
        break;
      }
      distance = next;
      // Two bytes, as every other byte of a text is zero.
      const std::byte* const there = here - distance;
      if (Load<UINT16>(there + best.Length - 1) == Load<UINT16>(here + best.Length - 1)) {
        const UINT32 length = MatchLength(here, there, limit);
        if (length > best.Length) {
          best = {length, distance};
          if (length >= limit) {
            break;
          }
        }
      }
    }
    if (best.Length < kHashedBytes) {
      constexpr UINT32 kSpread = 0x9E3779B1;
      UINT16& head = work_.ShortHead[(Load<UINT32>(here) << 8) * kSpread >> (32 - kShortHashBits)];
      distance = static_cast<UINT16>(position - std::exchange(head, static_cast<UINT16>(position)));
      if (distance != 0 && distance <= farthest) {
        const UINT32 length = MatchLength(here, here - distance, limit);
        if (length > best.Length) {
          best = {length, distance};
        }
      }
    }
    return best.Worth() < kLeastWorth ? Match{} : best;
  }

  static UINT32 BitWidth(UINT32 number) { return static_cast<UINT32>(std::bit_width(number)); }

  /// Stages a byte, or the code of a match's length with its distance.
  void Stage(UINT16 code, UINT32 distance) {
    if (staged_ == staging_.size()) {
      WriteBlock();
    }
    if (distance != 0) {
      work_.Distances[staged_] = static_cast<UINT16>(--distance);
      ++work_.Counts[kDistances.First + BitWidth(distance)];
    }
    staging_[staged_++] = code;
    ++work_.Counts[kBytes.First + code];
  }

  void StartBlock() {
    staged_ = 0;
    ZeroMem(work_.Counts, sizeof(work_.Counts));
  }

  void WriteBlock() {
    if (staged_ == 0) {
      return;
    }
    output_.Put(staged_, kBlockSizeBits);
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

    for (UINT32 next = 0; next < staged_; ++next) {
      const UINT32 code = staging_[next];
      PutSymbol(kBytes, code);
      if (code >= kFirstMatchCode) {
        const UINT32 distance = work_.Distances[next];
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
      work_.Nodes[leaves++] = {count, symbol, 0, 0};
    }
    SortByWeight({work_.Nodes, leaves});
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

  /// Shell's sort: next to nothing to carry, and good enough for a few hundred.
  static void SortByWeight(std::span<Node> leaves) {
    for (size_t gap = 364; gap > 0; gap /= 3) {
      for (size_t i = gap; i < leaves.size(); ++i) {
        const Node moved = leaves[i];
        size_t place = i;
        for (; place >= gap && leaves[place - gap].Weight > moved.Weight; place -= gap) {
          leaves[place] = leaves[place - gap];
        }
        leaves[place] = moved;
      }
    }
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
  UINT32 staged_ = 0;
  UINT32 entered_ = 0;   // first position that is not in the hash chains yet
  UINT32 searched_ = 0;  // position of the latest search, none at 0; and what it found
  Match found_{};
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
