/** @file
  Encoder of the UEFI compression format: hash chains over the last 8 KiB, a parse that looks one byte ahead, and three
  prefix codes for each block.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <bit>

#include "database/Compressor.hpp"

#include "database/CompressionFormat.hpp"
#include "uefi/Pool.hpp"

namespace {

constexpr size_t kStagingSize = 16384;
constexpr size_t kSmallestStagingSize = 4096;
#ifndef CHAIN
#define CHAIN 24
#define NICE 64
#define LAZY 1
#define HASHN 4
#endif

constexpr UINT32 kHashSize = 4096;
constexpr UINT32 kHashedBytes = HASHN;  // UCS-2 text: two characters
constexpr UINT32 kLongestChain = CHAIN;
constexpr UINT32 kGoodMatch = NICE;

/// The three alphabets lie one behind the other in every array over symbols.
struct Alphabet {
  UINT32 First;
  UINT32 Size;
  UINT32 CountBits;
};
constexpr Alphabet kBytes{0, kByteCodes, kByteCountBits};
constexpr Alphabet kDistances{kBytes.First + kBytes.Size, kDistanceCodes, kDistanceCountBits};
constexpr Alphabet kLengths{kDistances.First + kDistances.Size, kLengthCodes, kLengthCountBits};
constexpr UINT32 kSymbols = kLengths.First + kLengths.Size;

struct Workspace {
  UINT16 Crc[256];
  UINT16 Head[kHashSize];        // latest position with this hash, modulo 65536
  UINT16 Previous[kWindowSize];  // the one before it
  UINT32 Counts[kSymbols];
  UINT16 Codes[kSymbols];
  UINT8 CodeLengths[kSymbols];
  // Huffman's algorithm: the leaves by count, then the inner nodes.
  UINT32 Weight[2 * kByteCodes];
  UINT16 Symbol[kByteCodes];
  UINT16 Parent[2 * kByteCodes];
  UINT8 Depth[2 * kByteCodes];
};

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

struct Match {
  UINT32 Length;
  UINT32 Distance;
};

class Encoder {
 public:
  Encoder(std::span<const std::byte> source, std::span<UINT16> staging, Workspace& work, BitWriter& output)
      : source_(source), staging_(staging), work_(work), output_(output) {
    BuildCrcTable();
  }

  void Run() {
    const UINT32 end = static_cast<UINT32>(source_.size());
    UINT32 position = 0;
    Match held{};
    while (position < end) {
      const Match match = FindMatch(position);
      if (held.Length != 0 && Gain(held) + 4 >= Gain(match)) {
        StageMatch(held);
        for (UINT32 skip = held.Length - 2; skip > 0; --skip) {
          Insert(++position);
        }
        ++position;
        held = {};
        continue;
      }
      if (held.Length != 0) {
        StageByte(position - 1);
      }
      held = {};
      if (match.Length >= kGoodMatch) {
        StageMatch(match);
        for (UINT32 skip = match.Length - 1; skip > 0; --skip) {
          Insert(++position);
        }
        ++position;
      } else if (match.Length == 0) {
        StageByte(position++);
      } else {
        held = match;
        ++position;
      }
    }
    if (held.Length != 0) {
      StageMatch(held);
    }
    WriteBlock();
    output_.Flush();
  }

 private:
  static INT32 Gain(const Match& match) {
    return match.Length == 0 ? -1000 : static_cast<INT32>(4 * match.Length - std::bit_width(match.Distance));
  }

  /// CRC-16, reflected polynomial 0xA001: entry i + j is the sum of entries i and j when i is a power of two above j.
  void BuildCrcTable() {
    UINT32 crc = 1;
    for (UINT32 bit = 128; bit > 0; bit >>= 1) {
      crc = (crc >> 1) ^ ((crc & 1) * 0xA001);
      for (UINT32 other = 0; other < 256; other += 2 * bit) {
        work_.Crc[bit + other] = static_cast<UINT16>(crc ^ work_.Crc[other]);
      }
    }
  }

  UINT32 Hash(const std::byte* bytes) const {
    UINT32 crc = 0;
    for (UINT32 i = 0; i < kHashedBytes; ++i) {
      crc = (crc >> 8) ^ work_.Crc[(crc ^ std::to_integer<UINT32>(bytes[i])) & 0xFF];
    }
    return crc % kHashSize;
  }

  /// Enters a position, and gives the one before it with the same hash, or itself.
  UINT16 Insert(UINT32 position) {
    if (source_.size() - position < kHashedBytes) {
      return static_cast<UINT16>(position);
    }
    UINT16& head = work_.Head[Hash(&source_[position])];
    const UINT16 before = head;
    work_.Previous[position % kWindowSize] = before;
    head = static_cast<UINT16>(position);
    return before;
  }

  Match FindMatch(UINT32 position) {
    const UINT32 limit = std::min<UINT32>(kMaxMatch, static_cast<UINT32>(source_.size()) - position);
    const std::byte* here = source_.data() + position;
    Match best{kMinMatch - 1, 0};
    UINT32 farthest = 0;
    UINT16 candidate = Insert(position);
    // A stale entry is as good as a fresh one: only its bytes count.
    for (UINT32 tries = kLongestChain; tries > 0; --tries) {
      const UINT32 distance = static_cast<UINT16>(position - candidate);
      if (distance <= farthest || distance > kWindowSize || distance > position) {
        break;
      }
      farthest = distance;
      const std::byte* there = here - distance;
      if (there[best.Length] == here[best.Length]) {
        UINT32 length = 0;
        while (length < limit && there[length] == here[length]) {
          ++length;
        }
        if (length > best.Length) {
          const Match match{length, distance};
          if (best.Distance == 0 || Gain(match) > Gain(best)) best = match;
          if (length >= limit) {
            break;
          }
        }
      }
      candidate = work_.Previous[candidate % kWindowSize];
    }
    if (best.Distance == 0 || (best.Length == 3 && best.Distance > 256)) return {};
    return best;
  }

  void StageByte(UINT32 position) { Stage(std::to_integer<UINT16>(source_[position])); }

  void StageMatch(const Match& match) {
    Stage(static_cast<UINT16>(match.Length - kMinMatch + kFirstMatchCode));
    staging_[staged_++] = static_cast<UINT16>(match.Distance - 1);
    ++work_.Counts[kDistances.First + std::bit_width(match.Distance - 1)];
  }

  void Stage(UINT16 code) {
    if (staging_.size() - staged_ < 2) {
      WriteBlock();
    }
    staging_[staged_++] = code;
    ++blockSize_;
    ++work_.Counts[kBytes.First + code];
  }

  void WriteBlock() {
    if (blockSize_ == 0) {
      return;
    }
    output_.Put(blockSize_, kBlockSizeBits);
    const UINT32 used = BuildCode(kBytes);
    ForEachLengthCode(used, [this](UINT32 code, UINT32, UINT32) { ++work_.Counts[kLengths.First + code]; });
    WriteLengths(kLengths, BuildCode(kLengths));
    if (used > 0) {
      output_.Put(used, kBytes.CountBits);
      ForEachLengthCode(used, [this](UINT32 code, UINT32 extra, UINT32 extraBits) {
        PutSymbol(kLengths, code);
        output_.Put(extra, extraBits);
      });
    } else {
      WriteOnlySymbol(kBytes);
    }
    WriteLengths(kDistances, BuildCode(kDistances));

    for (size_t next = 0; next < staged_;) {
      const UINT32 code = staging_[next++];
      PutSymbol(kBytes, code);
      if (code >= kFirstMatchCode) {
        const UINT32 distance = staging_[next++];
        const UINT32 width = std::bit_width(distance);
        PutSymbol(kDistances, width);
        if (width > 1) {
          output_.Put(distance - (1 << (width - 1)), width - 1);
        }
      }
    }
    staged_ = 0;
    blockSize_ = 0;
    gBS->SetMem(work_.Counts, sizeof(work_.Counts), 0);
  }

  void PutSymbol(const Alphabet& alphabet, UINT32 symbol) {
    output_.Put(work_.Codes[alphabet.First + symbol], work_.CodeLengths[alphabet.First + symbol]);
  }

  /// The lengths of the C code as codes of T.
  template <typename Function>
  void ForEachLengthCode(UINT32 used, Function&& function) {
    const UINT8* lengths = &work_.CodeLengths[kBytes.First];
    for (UINT32 next = 0; next < used;) {
      UINT32 run = 0;
      while (lengths[next + run] == 0) {
        ++run;  // ends: the last length in use is not 0
      }
      next += run;
      if (run == 0) {
        function(lengths[next++] + 2U, 0U, 0U);
        continue;
      }
      if (run == kLongRunBase - 1) {
        function(0U, 0U, 0U);  // neither kind of run has 19
        --run;
      }
      if (run >= kLongRunBase) {
        function(2U, run - kLongRunBase, kByteCountBits);
      } else if (run >= kShortRunBase) {
        function(1U, run - kShortRunBase, kShortRunBits);
      } else {
        for (; run > 0; --run) {
          function(0U, 0U, 0U);
        }
      }
    }
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
    const UINT8* lengths = &work_.CodeLengths[alphabet.First];
    output_.Put(used, alphabet.CountBits);
    for (UINT32 next = 0; next < used;) {
      const UINT32 length = lengths[next++];
      if (length < 7) {
        output_.Put(length, 3);
      } else {
        output_.Put((1 << (length - 3)) - 2, length - 3);
      }
      if (alphabet.First == kLengths.First && next == kGapAfter) {
        while (next < kGapAfter + 3 && lengths[next] == 0) {
          ++next;
        }
        output_.Put(next - kGapAfter, 2);
      }
    }
  }

  /// Gives every counted symbol a code. Returns the number of symbols up to the last one in use, or 0 when fewer than two
  /// are: such an alphabet takes no bits.
  UINT32 BuildCode(const Alphabet& alphabet) {
    UINT8* lengths = &work_.CodeLengths[alphabet.First];
    gBS->SetMem(lengths, alphabet.Size, 0);
    UINT32 leaves = 0;
    UINT32 used = 0;
    for (UINT32 symbol = 0; symbol < alphabet.Size; ++symbol) {
      const UINT32 count = work_.Counts[alphabet.First + symbol];
      if (count == 0) {
        continue;
      }
      used = symbol + 1;
      // sorted insertion
      UINT32 slot = leaves++;
      for (; slot > 0 && work_.Weight[slot - 1] > count; --slot) {
        work_.Weight[slot] = work_.Weight[slot - 1];
        work_.Symbol[slot] = work_.Symbol[slot - 1];
      }
      work_.Weight[slot] = count;
      work_.Symbol[slot] = static_cast<UINT16>(symbol);
    }
    if (leaves < 2) {
      return 0;
    }
    while (!FindDepths(leaves)) {
      for (UINT32 leaf = 0; leaf < leaves; ++leaf) {
        work_.Weight[leaf] = (work_.Weight[leaf] >> 1) | 1;
      }
    }
    UINT32 first[kMaxCodeLength + 1]{};
    for (UINT32 leaf = 0; leaf < leaves; ++leaf) {
      lengths[work_.Symbol[leaf]] = work_.Depth[leaf];
      ++first[work_.Depth[leaf]];
    }
    UINT32 code = 0;
    for (UINT32& count : first) {
      code <<= 1;
      code += std::exchange(count, code);
    }
    for (UINT32 symbol = 0; symbol < used; ++symbol) {
      work_.Codes[alphabet.First + symbol] = static_cast<UINT16>(first[lengths[symbol]]++);
    }
    return used;
  }

  /// The depth of each leaf in Huffman's tree; false when one is deeper than the format allows.
  bool FindDepths(UINT32 leaves) {
    UINT32 leaf = 0;
    UINT32 inner = leaves;
    const UINT32 root = 2 * leaves - 2;
    for (UINT32 node = leaves; node <= root; ++node) {
      work_.Weight[node] = 0;
      for (int child = 0; child < 2; ++child) {
        const UINT32 lightest =
            leaf < leaves && (inner == node || work_.Weight[leaf] <= work_.Weight[inner]) ? leaf++ : inner++;
        work_.Weight[node] += work_.Weight[lightest];
        work_.Parent[lightest] = static_cast<UINT16>(node);
      }
    }
    work_.Depth[root] = 0;
    bool fits = true;
    for (UINT32 node = root; node-- > 0;) {
      work_.Depth[node] = work_.Depth[work_.Parent[node]] + 1;
      fits = fits && (node >= leaves || work_.Depth[node] <= kMaxCodeLength);
    }
    return fits;
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
  PoolPtr<UINT16[]> staging;
  size_t stagingSize = kStagingSize;
  while (work != nullptr && stagingSize >= kSmallestStagingSize) {
    staging = AllocateZeroedArray<UINT16>(stagingSize / sizeof(UINT16));
    if (staging != nullptr) {
      break;
    }
    stagingSize = stagingSize / 10 * 9;
  }
  if (staging == nullptr) {
    return EFI_OUT_OF_RESOURCES;
  }

  const UINT32 room = destination == nullptr ? 0 : destinationSize;
  BitWriter output({destination, room});
  output.Put(0, 32);
  output.Put(static_cast<UINT32>(source.size()), 32);
  Encoder(source, {staging.get(), stagingSize / sizeof(UINT16)}, *work, output).Run();
  destinationSize = output.Size();
  if (destinationSize > room) {
    return EFI_BUFFER_TOO_SMALL;
  }
  const UINT32 payload = destinationSize - kCompressionHeaderSize;
  for (UINT32 i = 0; i < 4; ++i) {
    destination[i] = std::byte(payload >> (8 * i));
    destination[i + 4] = std::byte(source.size() >> (8 * i));
  }
  return EFI_SUCCESS;
}
